// SPDX-License-Identifier: MIT
#include "platform/text/Locale.hpp"

#include "platform/text/LocaleEntry.hpp"
#include "platform/text/MediumDateTable.hpp"

#include <unicode/datefmt.h>
#include <unicode/locid.h>

#include <atomic>
#include <cstdlib>
#include <map>
#include <memory>
#include <utility>

namespace estatebook::platform {
namespace {

/// The entries live as long as the process: formatters on any thread point at them.
const LocaleEntry* entryNamed(std::string_view canonicalName) {
    static std::mutex mutex;
    static auto& entries = *new std::map<std::string, std::unique_ptr<LocaleEntry>, std::less<>>;
    const std::lock_guard lock(mutex);
    auto found = entries.find(canonicalName);
    if (found == entries.end())
        found = entries.emplace(canonicalName, std::make_unique<LocaleEntry>(canonicalName)).first;
    return found->second.get();
}

std::atomic<const LocaleEntry*> currentEntry = nullptr;

/// The modifiers of the C library's locale names (glibc's list of supported locales) that choose a script.
constexpr std::pair<std::string_view, std::string_view> scriptModifiers[] = {
    {"arabic", "Arab"}, {"cyrillic", "Cyrl"}, {"devanagari", "Deva"}, {"iqtelif", "Latn"}, {"latin", "Latn"},
};

/// "sr_RS.UTF-8@latin" is "sr_Latn_RS".
std::string identifierOfEnvironmentName(std::string_view name) {
    const std::string_view modifier =
        name.find('@') == name.npos ? std::string_view() : name.substr(name.find('@') + 1);
    name = name.substr(0, name.find_first_of(".@"));
    if (name.empty() || name == "C" || name == "POSIX") return "en_US_POSIX";
    for (const auto& [word, script] : scriptModifiers) {
        if (modifier != word) continue;
        const std::size_t languageEnd = std::min(name.find('_'), name.size());
        return std::string(name.substr(0, languageEnd)) + '_' + std::string(script) +
               std::string(name.substr(languageEnd));
    }
    return std::string(name);
}

} // namespace

const MediumDateTable& LocaleEntry::mediumDates() const {
    std::call_once(made_, [this] { mediumDates_ = new MediumDateTable(identifier); });
    return *mediumDates_;
}

Locale Locale::current() {
    if (const LocaleEntry* entry = currentEntry.load(std::memory_order_acquire)) return Locale(entry);
    const LocaleEntry* expected = nullptr;
    const Locale ofEnvironment = fromEnvironment();
    currentEntry.compare_exchange_strong(expected, ofEnvironment.entry_);
    return expected ? Locale(expected) : ofEnvironment;
}

void Locale::setCurrent(Locale locale) noexcept {
    currentEntry.store(locale.entry_, std::memory_order_release);
}

Locale Locale::named(std::string_view identifier) {
    return Locale(entryNamed(icu::Locale::createCanonical(std::string(identifier).c_str()).getName()));
}

Locale Locale::fromEnvironment() {
    for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
        const char* name = std::getenv(variable);
        if (name && *name) return named(identifierOfEnvironmentName(name));
    }
    return named(identifierOfEnvironmentName(""));
}

std::vector<std::string_view> Locale::availableIdentifiers() {
    std::int32_t count = 0;
    const icu::Locale* locales = icu::DateFormat::getAvailableLocales(count);
    std::vector<std::string_view> identifiers;
    identifiers.reserve(static_cast<std::size_t>(count));
    for (std::int32_t index = 0; index < count; ++index) identifiers.emplace_back(locales[index].getName());
    return identifiers;
}

std::string_view Locale::identifier() const noexcept {
    return entry_->identifier;
}

} // namespace estatebook::platform
