// SPDX-License-Identifier: MIT
#include "estatebook/book/ImpliedSettings.hpp"

#include "estatebook/BookObjects.hpp"
#include "estatebook/document/BookMembers.hpp"
#include "estatebook/document/JsonText.hpp"

#include "billing/TKPeriodicBilling.hpp"
#include "platform/calendar/TimeZone.hpp"
#include "platform/system/Clock.hpp"
#include "store/TKState.hpp"

#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <variant>
#include <vector>

namespace estatebook {

using document::BookDocument;
using document::Setting;
using document::SettingValue;
using platform::ManagedObjectContext;
using platform::Store;
using platform::StoreError;
using platform::StoreResult;
using platform::String;
using platform::Value;

namespace {

constexpr std::string_view Mark = "impliedSetting.";

std::string markOf(std::string_view name) {
    return std::string(Mark) + std::string(name);
}

/// The value as the store remembers it; empty for one that is never implied.
std::string remembered(const SettingValue& value) {
    std::string text;
    if (const auto* words = std::get_if<std::string>(&value))
        document::appendJsonText(text, *words);
    else if (const auto* number = std::get_if<std::int64_t>(&value))
        text = std::to_string(*number);
    return text;
}

Value valueOf(const SettingValue& value) {
    if (const auto* number = std::get_if<std::int64_t>(&value)) return *number;
    return String::make(std::get<std::string>(value));
}

/// What a document that says nothing is read with.
std::vector<Setting> implied() {
    return {{std::string(document::TimeZoneSettingName),
             std::string(platform::TimeZone::defaultTimeZone()->name())},
            {TKBillingModeStateName->string(), static_cast<std::int64_t>(TKPeriodBillingModeStart)}};
}

using Names = std::unordered_set<std::string_view>;

/// REQUIRES: the document outlives them.
Names settingsOf(const BookDocument& document) {
    Names names;
    for (const Setting& setting : document.settings) names.insert(setting.name);
    if (document.timeZone) names.insert(document::TimeZoneSettingName);
    return names;
}

/// Null when there is none. Raises ObjectInaccessibleException: what cannot be read is not made a second time.
platform::Ref<TKState> settingOf(ManagedObjectContext& context, const Setting& setting) {
    return TKState::readStateForNameInManagedObjectContext(String::make(setting.name), context);
}

/// Makes room for the settings that the document has.
void removeSettings(ManagedObjectContext& context, const Names& given) {
    for (const auto& state : context.fetchAll<TKState>("State"))
        if (state->name() && given.contains(state->name()->view())) context.deleteObject(*state);
}

std::optional<StoreError> saveMarks(std::vector<platform::MetadataChange> marks, Store& store,
                                    platform::CommitOrigin origin) {
    platform::StoreChanges changes{.token = platform::CommitToken::random(), .origin = std::move(origin)};
    changes.metadata = std::move(marks);
    changes.origin.when = platform::Clock::now();
    const auto saved = store.save(changes);
    return saved ? std::nullopt : std::optional(saved.error());
}

} // namespace

std::optional<StoreError> takeDocument(const BookDocument& document, ManagedObjectContext& context,
                                       Store& store, const platform::CommitOrigin& origin) {
    const auto known = store.metadata();
    if (!known) return known.error();
    const Names given = settingsOf(document);
    std::vector<platform::MetadataChange> marks;
    std::vector<Setting> made;
    for (const Setting& setting : implied()) {
        const std::string mark = markOf(setting.name);
        if (given.contains(setting.name)) {
            if (known->contains(mark)) marks.push_back({mark, std::nullopt});
        } else if (const auto state = settingOf(context, setting); !state || state->value().isAbsent()) {
            marks.push_back({mark, remembered(setting.value)});
            made.push_back(setting);
        }
    }
    // A mark without its setting says nothing, a setting without its mark would be taken for the document's: marks go first.
    if (!marks.empty())
        if (auto error = saveMarks(std::move(marks), store, origin)) return error;
    removeSettings(context, given);
    for (const Setting& setting : made)
        if (const auto state = settingOf(context, setting))
            state->setValue(valueOf(setting.value));
        else
            TKState::updateStateWithNameValueInManagedObjectContext(String::make(setting.name),
                                                                    valueOf(setting.value), context);
    BookObjects::keptOfDocument(document, context);
    return std::nullopt;
}

std::optional<std::string_view> impliedSettingOf(std::string_view entry) {
    if (!entry.starts_with(Mark)) return std::nullopt;
    return entry.substr(Mark.size());
}

StoreResult<ImpliedSettings> ImpliedSettings::of(const Store& store) {
    auto marks = store.metadata();
    if (!marks) return marks.error();
    return ImpliedSettings(*std::move(marks));
}

bool ImpliedSettings::has(std::string_view name, const SettingValue& value) const {
    const auto mark = marks_.find(markOf(name));
    return mark != marks_.end() && mark->second == remembered(value);
}

} // namespace estatebook
