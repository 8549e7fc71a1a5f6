// SPDX-License-Identifier: MIT
#include "estatebook-desktop/sheets/SheetFields.hpp"

#include "estatebook-desktop/sheets/Cycles.hpp"

#include "platform/persistence/EntityDescription.hpp"
#include "platform/persistence/ManagedObjectContext.hpp"

#include <utility>

namespace estatebook::desktop {

using platform::FieldFormatter;
using platform::ManagedObject;
using platform::Number;
using platform::Ref;
using platform::String;
using platform::Value;

namespace {

/// A name: blanks around it are no part of it.
class PlainText final : public FieldFormatter {
public:
    [[nodiscard]] Ref<String> stringForObjectValue(const Value& value) const override {
        return value.string();
    }
    bool getObjectValueForStringRangeError(Value& object, const Ref<String>& string, platform::TextRange*,
                                           Ref<platform::Error>*) const override {
        object = textFrom(textOf(string));
        return true;
    }
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "PlainText"; }
};

/// An amount as the user's locale writes it, or none.
class PlainAmount final : public FieldFormatter {
public:
    PlainAmount(const Figures& figures, QString sentence)
        : figures_(figures), sentence_(std::move(sentence)) {}

    [[nodiscard]] Ref<String> stringForObjectValue(const Value& value) const override {
        return textFrom(figures_.plain(value.decimal()));
    }
    bool getObjectValueForStringRangeError(Value& object, const Ref<String>& string, platform::TextRange*,
                                           Ref<platform::Error>* error) const override {
        const QString text = textOf(string).trimmed();
        const auto amount = figures_.amountOf(text);
        if (amount || text.isEmpty()) {
            object = amount;
            return true;
        }
        if (error)
            *error = platform::Error::make(platform::FormattingErrorDomain, platform::FormattingError,
                                           sentence_.toStdString());
        return false;
    }
    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "PlainAmount"; }

private:
    const Figures& figures_;
    QString sentence_;
};

/// Billing cycles as their places in a list.
class CyclePlaces final : public platform::ValueTransformer {
public:
    [[nodiscard]] Value transformedValue(const Value& cycle) const override {
        return placeOfCycle(cycle.number());
    }
    [[nodiscard]] Value reverseTransformedValue(const Value& place) const override {
        return Number(Cycles[place.unsignedIntegerValue()]);
    }
};

} // namespace

SheetFields::SheetFields(const platform::QtWindow& window, const Figures& figures,
                         const platform::ManagedObjectContext& context, std::string_view entity,
                         const ManagedObject* original)
    : window_(window), figures_(figures), original_(original),
      copy_(ManagedObject::initWithEntityInsertIntoManagedObjectContext(
          *platform::EntityDescription::entityForNameInManagedObjectContext(entity, context), nullptr)) {}

void SheetFields::bindText(std::string_view field, std::string_view key) {
    bind(field, "text", {copy_, std::string(key), {}, platform::makeRef<PlainText>()});
}

void SheetFields::bindAmount(std::string_view field, std::string_view key, const QString& sentence) {
    bind(field, "text", {copy_, std::string(key), {}, platform::makeRef<PlainAmount>(figures_, sentence)});
}

void SheetFields::bindCount(std::string_view field, std::string_view key) {
    bind(field, "value", {copy_, std::string(key)});
}

void SheetFields::bindCycle(std::string_view field, std::string_view key) {
    bind(field, "currentIndex", {copy_, std::string(key), platform::makeRef<CyclePlaces>()});
}

void SheetFields::bindFlag(std::string_view field, std::string_view key) {
    bind(field, "checked", {copy_, std::string(key)});
}

void SheetFields::bindDate(TKDateController& dates, std::string_view key) {
    take(key);
    dates.bindToObjectWithKeyPath("currentDate", copy_, key);
}

void SheetFields::bind(std::string_view field, const char* property, platform::BoundPath path) {
    take(path.keyPath);
    binder_.bind(*window_.find<QWidget>(field), property, std::move(path));
}

void SheetFields::take(std::string_view key) {
    keys_.emplace_back(key);
    if (original_) setValue(original_->valueForKey(key), key);
}

QString SheetFields::commit() {
    QString first;
    binder_.whenRefused = [&](QWidget&, const Ref<platform::Error>& why) {
        if (first.isEmpty()) first = QString::fromStdString(why->localizedDescription());
    };
    binder_.commit();
    binder_.whenRefused = nullptr;
    return first;
}

void SheetFields::applyTo(ManagedObject& object) const {
    for (const std::string& key : keys_)
        if (const Value edited = value(key); edited != object.valueForKey(key))
            object.setValueForKey(edited, key);
}

} // namespace estatebook::desktop
