// SPDX-License-Identifier: MIT
#pragma once

/// Interface files: windows drawn in Qt's designer (.ui) and made at run time.
///
/// A file is looked through before anything of it is made: it may hold only the widgets and layouts of a fixed list, so that
/// neither a file that is damaged nor one that was tampered with brings in code of its own, and its outermost widget is a
/// QDialog. A push button or check box asks for an operation of its window's controller with a dynamic property "action",
/// whose text is the operation's name: "processSheet:".

#include "platform/toolkit/Toolkit.hpp"
#include "platform/values/Error.hpp"
#include "platform/values/Ref.hpp"

#include <QByteArray>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace estatebook::platform {

class SheetDialog;

/// The name of the dynamic property.
inline constexpr const char* ActionProperty = "action";

/// What is wrong with an interface file.
struct InterfaceFileFault {
    InterfaceFileError code;
    /// Continues a sentence that begins with the file's name: ", line 12: there is no end of …".
    std::string what;
};

/// Looks through the text of a file; nothing when it may be made.
[[nodiscard]] std::optional<InterfaceFileFault> faultInInterfaceFile(const QByteArray& text);

/// Makes the dialog of a file; null, with the fault told, when it is not in order. Never raises.
[[nodiscard]] std::unique_ptr<SheetDialog> makeFromInterfaceFile(const QByteArray& text,
                                                                 std::optional<InterfaceFileFault>& fault);

} // namespace estatebook::platform
