// SPDX-License-Identifier: MIT
#include "platform/toolkit/qt/Binder.hpp"

#include "platform/toolkit/qt/Living.hpp"
#include "platform/toolkit/qt/QtText.hpp"
#include "platform/toolkit/qt/ShownValue.hpp"
#include "platform/toolkit/qt/Unraised.hpp"
#include "platform/values/Exception.hpp"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QEvent>
#include <QLineEdit>
#include <QMetaProperty>
#include <QPlainTextEdit>
#include <QSignalMapper>
#include <QTextDocument>
#include <QTextEdit>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace estatebook::platform {

/// Comes round in the next turn of the event loop.
class Binder::Turn final : public QTimer {
public:
    explicit Turn(Binder& binder) {
        setSingleShot(true);
        connect(this, &QTimer::timeout, this, [&binder] { binder.refresh(); });
    }
};

namespace {

/// The part of a widget that the user types into, and that remembers whether it did.
class TypedText {
public:
    explicit TypedText(QWidget& widget) {
        line_.set(qobject_cast<QLineEdit*>(&widget));
        if (auto* plain = qobject_cast<QPlainTextEdit*>(&widget)) document_.set(plain->document());
        if (auto* rich = qobject_cast<QTextEdit*>(&widget)) document_.set(rich->document());
        isWhole_ = line_.get() || document_.get();
        if (auto* spin = qobject_cast<QAbstractSpinBox*>(&widget)) line_.set(spin->findChild<QLineEdit*>());
        isPart_ = line_.get() && !isWhole_;
        if (auto* box = qobject_cast<QComboBox*>(&widget)) line_.set(box->lineEdit());
    }

    [[nodiscard]] bool isModified() const {
        return (line_ && line_->isModified()) || (document_ && document_->isModified());
    }
    void setUnmodified() const {
        if (line_) line_->setModified(false);
        if (document_) document_->setModified(false);
    }
    /// Whether the widget is nothing but this text.
    [[nodiscard]] bool isWhole() const noexcept { return isWhole_; }
    /// Whether the widget makes of the text what it has for a value, when it is left.
    [[nodiscard]] bool isPart() const noexcept { return isPart_; }
    [[nodiscard]] bool isDocument() const noexcept { return document_.get() != nullptr; }
    [[nodiscard]] QLineEdit* line() const noexcept { return line_.get(); }

private:
    Living<QLineEdit> line_;
    Living<QTextDocument> document_;
    bool isWhole_ = false;
    bool isPart_ = false;
};

Ref<Error> refusal(const QWidget& widget, std::string_view why) {
    return Error::make(FormattingErrorDomain, FormattingError,
                       textOf(widget.objectName()) + ": " + std::string(why));
}

} // namespace

/// One property of one widget. It hears what the user does, and filters the widget's events for when it is left.
class Binder::Bound final : public QObject, public std::enable_shared_from_this<Bound> {
public:
    Bound(Binder& binder, QWidget& widget, QMetaProperty property, BoundPath path, Direction direction)
        : binder_(&binder), widget_(&widget), property_(property), path_(std::move(path)),
          direction_(direction), typed_(widget) {}

    void start() {
        observation_ = path_.object->observe(path_.keyPath, [this] { markStale(); });
        show();
        if (direction_ == Direction::Show) return;
        if (auto* spin = qobject_cast<QAbstractSpinBox*>(widget_.get())) spin->setKeyboardTracking(false);
        if (typed_.isDocument()) widget_->installEventFilter(this);
        // A text is written when it is left, and not with each letter.
        if (typed_.line()) connect(typed_.line(), &QLineEdit::editingFinished, this, [this] { write(); });
        if (auto* box = qobject_cast<QComboBox*>(widget_.get()); box && typed_.line())
            connect(box, &QComboBox::activated, this, [this] { write(); });
        else if (!typed_.isWhole())
            hearOfProperty();
    }

    /// Nothing of the binder is called any more.
    void stop() {
        binder_ = nullptr;
        observation_.end();
        disconnect();
        if (widget_) {
            widget_->disconnect(this);
            widget_->removeEventFilter(this);
        }
        if (typed_.line()) typed_.line()->disconnect(this);
    }

    [[nodiscard]] QWidget* widget() const noexcept { return widget_.get(); }
    [[nodiscard]] bool isOf(const QWidget& widget, int property) const {
        return widget_.get() == &widget && (property < 0 || property_.propertyIndex() == property);
    }

    [[nodiscard]] bool hasUnwrittenText() const {
        if (!widget_ || direction_ == Direction::Show || !typed_.isModified()) return false;
        return typed_.isPart() || shownNow() != shown_;
    }
    void revert() { show(); }

    /// False when what was typed cannot be written.
    bool commit() {
        if (!widget_ || direction_ == Direction::Show) return true;
        if (auto* spin = qobject_cast<QAbstractSpinBox*>(widget_.get())) spin->interpretText();
        return write();
    }

    /// Whether there was something to show.
    bool refresh() {
        if (!isStale_ || !widget_ || hasUnwrittenText()) return false;
        show();
        return true;
    }

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::FocusOut) write();
        return false;
    }

private:
    void markStale() {
        isStale_ = true;
        if (binder_) binder_->scheduleRefresh();
    }

    void hearOfProperty() {
        auto* mapper = new QSignalMapper(this);
        mapper->setMapping(widget_.get(), widget_.get());
        const QMetaObject& meta = QSignalMapper::staticMetaObject;
        connect(widget_.get(), property_.notifySignal(), mapper, meta.method(meta.indexOfSlot("map()")));
        connect(mapper, &QSignalMapper::mappedObject, this, [this] { write(); });
    }

    [[nodiscard]] bool isText() const { return property_.metaType() == QMetaType::fromType<QString>(); }
    [[nodiscard]] QVariant shownNow() const { return property_.read(widget_.get()); }

    void show() {
        isStale_ = false;
        Value value;
        unraised([&] { value = valueToShow(); });
        unraised([&] { showValue(value); });
    }

    [[nodiscard]] Value valueToShow() const {
        const Value value = path_.object->valueForKeyPath(path_.keyPath);
        return path_.transformer ? path_.transformer->transformedValue(value) : value;
    }

    void showValue(const Value& value) {
        QVariant shown = isText() ? QVariant(shownText(value, path_.formatter.get())) : shownVariant(value);
        const bool wasShowing = std::exchange(isShowing_, true);
        if (!shown.isValid() && property_.metaType().id() != QMetaType::QDate &&
            property_.metaType().id() != QMetaType::QDateTime)
            shown = QVariant(property_.metaType());
        if (shown.isValid() && (hasUnwrittenText() || shownNow() != shown))
            property_.write(widget_.get(), shown);
        // What is only shown may be another property of a widget that is typed into.
        if (direction_ == Direction::Edit) typed_.setUnmodified();
        shown_ = shownNow(); // as the widget has it
        isShowing_ = wasShowing;
    }

    bool write() {
        if (isShowing_ || !widget_ || !binder_) return true;
        const QVariant now = shownNow();
        if (now == shown_) {
            typed_.setUnmodified();
            return true;
        }
        const auto held = shared_from_this();
        Ref<Error> error;
        try {
            error = store(now);
        } catch (const std::exception& exception) {
            error = refusal(*widget_, exception.what());
        }
        if (!widget_ || !binder_) return !error;
        if (error) {
            if (const auto told = binder_->whenRefused) unraised([&] { told(*widget_, error); });
            return false;
        }
        typed_.setUnmodified();
        show();
        if (const auto told = binder_ ? binder_->whenWritten : nullptr) unraised([&] { told(*widget_); });
        return true;
    }

    /// Null when it is stored.
    Ref<Error> store(const QVariant& now) {
        Value value;
        if (isText() && path_.formatter) {
            Ref<Error> error;
            const Ref<String> text = String::make(textOf(now.toString()));
            if (!path_.formatter->getObjectValueForStringRangeError(value, text, nullptr, &error))
                return error ? error : refusal(*widget_, "cannot be read");
        } else {
            value = valueOfVariant(now);
        }
        if (path_.transformer) {
            if (!path_.transformer->allowsReverseTransformation())
                return refusal(*widget_, "shows a value that cannot be turned back");
            value = path_.transformer->reverseTransformedValue(value);
        }
        path_.object->setValueForKeyPath(value, path_.keyPath);
        return nullptr;
    }

    Binder* binder_;
    Living<QWidget> widget_;
    QMetaProperty property_;
    BoundPath path_;
    Direction direction_;
    TypedText typed_;
    ObservationToken observation_;
    QVariant shown_;
    bool isStale_ = false;
    bool isShowing_ = false;
};

Binder::Binder() : turn_(std::make_unique<Turn>(*this)) {}

Binder::~Binder() {
    unbindAll();
}

void Binder::bind(QWidget& widget, const char* property, BoundPath path, Direction direction) {
    const int index = widget.metaObject()->indexOfProperty(property);
    const std::string named =
        std::string(widget.metaObject()->className()) + " " + textOf(widget.objectName());
    if (index < 0) throw InvalidArgumentException("the " + named + " has no property \"" + property + "\"");
    const QMetaProperty found = widget.metaObject()->property(index);
    if (direction == Direction::Edit && !found.hasNotifySignal())
        throw InvalidArgumentException("the " + named + " does not tell when its \"" + property +
                                       "\" changes");
    static_cast<void>(path.object->valueForKeyPath(path.keyPath));
    std::erase_if(bindings_, [&](const auto& bound) {
        const bool isBefore = bound->isOf(widget, index);
        if (isBefore) bound->stop();
        return isBefore;
    });
    removeDead();
    const auto bound = std::make_shared<Bound>(*this, widget, found, std::move(path), direction);
    bindings_.push_back(bound);
    bound->start();
}

void Binder::unbind(QWidget& widget) {
    std::erase_if(bindings_, [&](const auto& bound) {
        const bool isIts = bound->isOf(widget, -1);
        if (isIts) bound->stop();
        return isIts;
    });
}

void Binder::unbindAll() {
    const auto all = std::exchange(bindings_, {});
    for (const auto& bound : all) bound->stop();
}

void Binder::removeDead() {
    std::erase_if(bindings_, [](const auto& bound) {
        const bool isDead = !bound->widget();
        if (isDead) bound->stop();
        return isDead;
    });
}

bool Binder::commit() {
    const auto all = bindings_; // of which some may go on the way
    std::shared_ptr<Bound> refused;
    for (const auto& bound : all)
        if (!bound->commit() && !refused) refused = bound;
    if (!refused) return true;
    if (QWidget* widget = refused->widget()) widget->setFocus();
    return false;
}

void Binder::revert() {
    const auto all = bindings_;
    for (const auto& bound : all)
        if (bound->hasUnwrittenText()) bound->revert();
}

bool Binder::hasUnwrittenText() const {
    return std::ranges::any_of(bindings_, [](const auto& bound) { return bound->hasUnwrittenText(); });
}

void Binder::refresh() {
    turn_->stop();
    removeDead();
    const auto all = bindings_;
    for (const auto& bound : all)
        if (bound->refresh()) ++refreshes_;
}

void Binder::scheduleRefresh() {
    if (!turn_->isActive()) turn_->start(0);
}

} // namespace estatebook::platform
