// SPDX-License-Identifier: MIT
#include "desktop/QtUser.hpp"
#include "platform/toolkit/qt/QtButton.hpp"
#include "platform/toolkit/qt/QtDatePicker.hpp"
#include "platform/toolkit/qt/QtToolkit.hpp"
#include "platform/toolkit/qt/QtWindow.hpp"
#include "platform/toolkit/qt/WallTime.hpp"
#include "support/ToolkitBench.hpp"

namespace estatebook::test {
namespace {

class QtBench final : public ToolkitBench {
public:
    platform::Toolkit& toolkit() override { return toolkit_; }

    void click(platform::Window&, platform::Button& button) override {
        if (QWidget* widget = dynamic_cast<platform::QtButton&>(button).widget()) test::click(*widget);
    }

    /// Types all of it, from the first part to the last, and the return key.
    void pick(platform::Window& window, platform::DatePicker& picker, platform::Date date) override {
        QDateTimeEdit* widget = dynamic_cast<platform::QtDatePicker&>(picker).widget();
        QWindow* handle = dynamic_cast<platform::QtWindow&>(window).widget()->windowHandle();
        if (!widget || !handle || !widget->isVisible()) return;
        if (widget->isEnabled()) test::giveFocus(*widget);
        if (!widget->hasFocus()) return;
        widget->setSelectedSection(widget->sectionAt(0));
        const QString digits = platform::wallTimeOf(date).toString(QStringLiteral("yyyyMMddhhmm"));
        for (const QChar digit : digits) QTest::keyClick(handle, digit.toLatin1());
        QTest::keyClick(handle, Qt::Key_Tab);
        settle();
    }

    void pressEscape(platform::Window& window) override {
        QWidget* widget = dynamic_cast<platform::QtWindow&>(window).widget();
        if (widget) test::press(*widget, Qt::Key_Escape);
    }
    void clickCloseBox(platform::Window& window) override {
        QWidget* widget = dynamic_cast<platform::QtWindow&>(window).widget();
        if (widget) test::clickCloseBox(*widget);
    }
    void settle() override { test::settle(); }

private:
    platform::QtToolkit toolkit_;
};

} // namespace

std::unique_ptr<ToolkitBench> makeToolkitBench() {
    return std::make_unique<QtBench>();
}

} // namespace estatebook::test
