// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/book/NewBook.hpp"
#include "estatebook/document/BookMembers.hpp"
#include "estatebook/document/JsonText.hpp"

#include "billing/TKPeriodicBilling.hpp"
#include "store/TKState.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace estatebook {

using document::forMessage;
using platform::Ref;
using platform::String;
using platform::TimeZone;
using platform::Value;

namespace {

constexpr std::size_t LengthOfCurrencyCode = 3;

Ref<TimeZone> zoneNamed(const std::string& name) {
    if (name.empty()) return TimeZone::local();
    auto zone = TimeZone::named(name);
    if (!zone)
        throw Failure(ExitCode::WrongUsage,
                      fmt::format("--time-zone: the zone \"{}\" is unknown; use a name such as Europe/London",
                                  forMessage(name)));
    return zone;
}

void requireCurrencyCode(const std::string& code) {
    const bool isCode = code.size() == LengthOfCurrencyCode &&
                        std::ranges::all_of(code, [](char each) { return each >= 'A' && each <= 'Z'; });
    if (!isCode && !code.empty())
        throw Failure(ExitCode::WrongUsage,
                      fmt::format("--currency: \"{}\" is no code of a currency; use one such as GBP",
                                  forMessage(code)));
}

} // namespace

void initBook(const InitOptions& options) {
    const auto zone = zoneNamed(options.timeZone);
    requireCurrencyCode(options.currency);
    NewBook book(options.file, "init");
    const auto set = [&](const Ref<String>& name, const Value& value) {
        TKState::updateStateWithNameValueInManagedObjectContext(name, value, book.context());
    };
    if (!options.currency.empty()) set(Ref<String>(TKCurrencyCodeStateName), String::make(options.currency));
    // Of the kind that a document's whole numbers have.
    set(Ref<String>(TKBillingModeStateName),
        static_cast<std::int64_t>(options.billsAtEnd ? TKPeriodBillingModeEnd : TKPeriodBillingModeStart));
    set(String::make(document::TimeZoneSettingName), String::make(zone->name()));
    book.finish();
}

} // namespace estatebook
