// SPDX-License-Identifier: MIT
#pragma once

/// Toolkit: who makes windows and controls. A program installs one before its first window; the library knows none by itself.
///
///     HeadlessToolkit toolkit;
///     Toolkit::setCurrent(&toolkit);
///
/// Interface files are known by name. What stands in one, and where they are kept, is the toolkit's affair; each
/// gives one window with named controls, some of which name an operation of the window's controller as their action.

#include "EstateBook_ModelExport.hpp"

#include "platform/toolkit/Button.hpp"
#include "platform/toolkit/DatePicker.hpp"
#include "platform/toolkit/Window.hpp"
#include "platform/values/Error.hpp"
#include "platform/values/Ref.hpp"

#include <cstdint>
#include <string_view>

namespace estatebook::platform {

/// The domain of what is wrong with an interface file.
inline constexpr std::string_view InterfaceFileErrorDomain = "InterfaceFile";
enum class InterfaceFileError : std::int64_t {
    /// There is no file of that name.
    Missing = 1,
    /// The file is not of the form that it should have.
    Broken = 2,
    /// It holds something of a class that no interface file may hold.
    ForeignClass = 3,
    /// Its outermost part is no window.
    NoWindow = 4,
    /// A control names an action that the controller does not have.
    UnknownAction = 5,
    /// No toolkit is installed.
    NoToolkit = 6,
};

class ESTATEBOOK_API Toolkit {
public:
    virtual ~Toolkit();
    Toolkit(const Toolkit&) = delete;
    Toolkit& operator=(const Toolkit&) = delete;

    /// A window made from an interface file, not shown. The controls' actions lead to the controller that the window has
    /// when they are used; `owner` is asked now whether it knows them. Null when the file is not in order; `error`, unless it is
    /// null, then says what is wrong, with the file's name in the sentence.
    [[nodiscard]] virtual Ref<Window> loadInterfaceFile(std::string_view name, WindowController& owner,
                                                        Ref<Error>* error) = 0;

    /// An empty window, not shown.
    [[nodiscard]] virtual Ref<Window> makeWindow() = 0;
    [[nodiscard]] virtual Ref<Button> makeButton(ButtonKind kind) = 0;
    /// Its date is that of `Clock::now` at first.
    [[nodiscard]] virtual Ref<DatePicker> makeDatePicker() = 0;

    /// The toolkit of the process; null until one is installed.
    [[nodiscard]] static Toolkit* current() noexcept;
    /// REQUIRES: the toolkit lives until another, or null, takes its place.
    static void setCurrent(Toolkit* toolkit) noexcept;

protected:
    Toolkit() = default;
};

} // namespace estatebook::platform
