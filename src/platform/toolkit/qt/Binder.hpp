// SPDX-License-Identifier: MIT
#pragma once

/// Binder: keeps the widgets of a window and the objects that they show in step.
///
///     Binder binder;
///     binder.bind(*nameEdit, "text", {.object = tenant, .keyPath = "name"});
///     binder.bind(*rentEdit, "text", {.object = tenure, .keyPath = "rentalAmount", .formatter = amounts});
///     binder.bind(*activeBox, "checked", {.object = tenure, .keyPath = "active"}, Binder::Direction::Show);
///     …
///     if (!binder.commit()) return;               // before the window is confirmed
///
/// An object that announces a change only marks what shows it; what is marked is shown anew once for each turn of Qt's event
/// loop, however often it was announced.
///
/// What the user does to a box, a list or a number is written at once. What the user types is written when the field is left, on
/// Return, or by `commit`. Until then nothing overwrites it: a change of the object meanwhile shows once the text is written or
/// given up (`revert`). A text that is left as it was shown writes nothing, so that no digit of a value is lost that the text
/// does not show.
///
/// A value that cannot be reckoned (its getter raises) is logged and shown as nothing.
///
/// The trap: a text that cannot be read, and a value that the object refuses, stay in the field. `whenRefused` says why.
/// Objects are held as long as they are bound, widgets are not.

#include "platform/observation/ObservableObject.hpp"
#include "platform/toolkit/FieldFormatter.hpp"
#include "platform/values/Error.hpp"
#include "platform/values/ValueTransformer.hpp"

#include <QObject>
#include <QVariant>
#include <QWidget>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace estatebook::platform {

/// What a widget shows.
struct BoundPath {
    Ref<ObservableObject> object;
    std::string keyPath;
    /// Between the object's value and what is shown; may be null.
    Ref<ValueTransformer> transformer{};
    /// Between that and a text; null for the text itself.
    Ref<FieldFormatter> formatter{};
};

class Binder {
public:
    enum class Direction : bool {
        /// The widget shows the value.
        Show,
        /// And what the user makes of it is written.
        Edit,
    };

    Binder();
    ~Binder();
    Binder(const Binder&) = delete;
    Binder& operator=(const Binder&) = delete;

    /// Shows the value now and after each change, in a property of the widget ("text", "plainText", "checked", "value",
    /// "date", "currentIndex", "enabled", …). A widget may be bound by several properties, each once; a later binding replaces one
    /// before it. Raises InvalidArgumentException for a property that the widget does not have, or that tells nobody when it changes
    /// and is to be edited, and UndefinedKeyException for a path that the object does not have.
    void bind(QWidget& widget, const char* property, BoundPath path, Direction direction = Direction::Edit);
    /// Texts that were not written are given up.
    void unbind(QWidget& widget);
    void unbindAll();

    /// Writes all that was typed and not written. False when something of it cannot be: the first such widget has the focus.
    bool commit();
    /// Gives up all that was typed and not written.
    void revert();
    /// Whether something was typed and not written.
    [[nodiscard]] bool hasUnwrittenText() const;

    /// Shows anew what is marked, without waiting for the event loop.
    void refresh();
    /// How often something was shown anew, the first showing of a binding aside.
    [[nodiscard]] std::size_t refreshes() const noexcept { return refreshes_; }

    /// Told of what could not be read or was refused.
    std::function<void(QWidget& widget, const Ref<Error>& why)> whenRefused;
    /// Told after each value that the user has written.
    std::function<void(QWidget& widget)> whenWritten;

private:
    class Bound;
    class Turn;

    void scheduleRefresh();
    void removeDead();

    std::unique_ptr<Turn> turn_;
    std::vector<std::shared_ptr<Bound>> bindings_;
    std::size_t refreshes_ = 0;
};

} // namespace estatebook::platform
