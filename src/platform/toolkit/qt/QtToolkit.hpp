// SPDX-License-Identifier: MIT
#pragma once

/// QtToolkit: windows and controls on the screen. The interface file "PaymentSheet" is ":/interface/PaymentSheet.ui" among the
/// program's resources.
///
///     QApplication application(argc, argv);
///     QtToolkit toolkit;
///     Toolkit::setCurrent(&toolkit);

#include "platform/toolkit/Toolkit.hpp"

#include <QString>

#include <string_view>

namespace estatebook::platform {

class QtToolkit final : public Toolkit {
public:
    /// The folder of the interface files, among the program's resources.
    explicit QtToolkit(QString folder = QStringLiteral(":/interface"));
    ~QtToolkit() override;

    [[nodiscard]] Ref<Window> loadInterfaceFile(std::string_view name, WindowController& owner,
                                                Ref<Error>* error) override;
    [[nodiscard]] Ref<Window> makeWindow() override;
    [[nodiscard]] Ref<Button> makeButton(ButtonKind kind) override;
    [[nodiscard]] Ref<DatePicker> makeDatePicker() override;

private:
    QString folder_;
};

} // namespace estatebook::platform
