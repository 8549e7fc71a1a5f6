// SPDX-License-Identifier: MIT
#include "estatebook/OpenBook.hpp"

#include "estatebook/document/BookReader.hpp"
#include "estatebook/document/DateText.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/system/Clock.hpp"
#include "platform/text/DateFormatter.hpp"
#include "platform/text/Text.hpp"
#include "store/TKCurrentDateController.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKState.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace estatebook {

using document::forMessage;
using platform::Date;
using platform::Ref;
using platform::String;
using platform::TimeZone;

namespace {

constexpr std::size_t MaximalChoices = 20;

/// What a file gives that has a document in it.
struct BookContent {
    document::BookDocument document;
    std::vector<document::BookWarning> warnings;
};

Failure failureOf(const document::BookError& error) {
    const bool isUnreadable = error.kind == document::BookError::Kind::Unreadable;
    return Failure(isUnreadable ? ExitCode::CannotRead : ExitCode::BadData, error.text());
}

/// Throws Failure when there is no document in it.
BookContent readBook(const std::string& file) {
    auto reading = file == "-" ? document::BookReader::readStream(stdin, "standard input")
                               : document::BookReader::readFile(file);
    if (!reading.document) throw failureOf(reading.error.value_or(document::BookError()));
    return {*std::move(reading.document), std::move(reading.warnings)};
}

platform::Calendar calendarOf(const document::BookDocument& document) {
    return platform::Calendar(document.timeZone ? TimeZone::named(*document.timeZone)
                                                : TimeZone::defaultTimeZone());
}

/// None for an empty text.
std::optional<Date> dateOf(std::string_view text, const platform::Calendar& calendar) {
    if (text.empty()) return std::nullopt;
    const auto reading = document::readDate(text, calendar);
    if (!reading.date)
        throw Failure(ExitCode::WrongUsage, fmt::format("--as-of: \"{}\" {}; give a day such as 2025-03-31",
                                                        forMessage(text), document::describe(reading.fault)));
    return reading.date;
}

/// The entry with that identifier, or else that name, or else the only one with a name of which the text is a part.
template <class T, class NameOf>
const BookObjects::Entry<T>&
entryNamed(const std::string& file, const std::vector<BookObjects::Entry<T>>& entries, std::string_view kind,
           std::string_view kinds, std::string_view text, NameOf nameOf) {
    const auto byId = std::ranges::find(entries, text, &BookObjects::Entry<T>::id);
    if (byId != entries.end()) return *byId;

    const auto nameOfEntry = [&](const BookObjects::Entry<T>& entry) {
        const Ref<String> name = nameOf(*entry.object);
        return name ? name->string() : std::string();
    };
    const std::string wanted = platform::canonicalForm(text);
    std::vector<const BookObjects::Entry<T>*> whole, part;
    for (const auto& entry : entries) {
        const std::string name = platform::canonicalForm(nameOfEntry(entry));
        if (name == wanted) whole.push_back(&entry);
        if (name.find(wanted) != std::string::npos) part.push_back(&entry);
    }
    const auto& found = whole.empty() ? part : whole;
    if (found.size() == 1) return *found.front();
    if (found.empty())
        throw Failure(
            ExitCode::NothingMatched,
            fmt::format("{}: no {} is called \"{}\"; see what there is with: estatebook {} --book FILE", file,
                        kind, forMessage(text), kinds));
    std::string lines = fmt::format("{}: \"{}\" fits {} {}; give one of these identifiers:", file,
                                    forMessage(text), found.size(), kinds);
    for (std::size_t i = 0; i < std::min(found.size(), MaximalChoices); ++i)
        lines += fmt::format("\n  {}  {}", forMessage(found[i]->id), forMessage(nameOfEntry(*found[i]), 200));
    if (found.size() > MaximalChoices) lines += fmt::format("\n  and {} more", found.size() - MaximalChoices);
    throw Failure(ExitCode::NothingMatched, lines);
}

} // namespace

OpenBook OpenBook::open(const std::string& file, std::string_view asOf) {
    const BookContent content = readBook(file);
    OpenBook book(file, calendarOf(content.document));
    if (const auto today = dateOf(asOf, book.calendar_)) platform::Clock::setNow([today] { return *today; });
    for (const document::BookWarning& warning : content.warnings) std::cerr << warning.text() << '\n';

    TimeZone::setDefaultTimeZone(book.calendar_.timeZone());
    if (const auto error = TKManagedObjectModel::modelError())
        throw Failure(ExitCode::CannotRead, fmt::format("{}; install the program anew",
                                                        forMessage(error->localizedDescription(), 400)));
    book.fill(content.document);
    return book;
}

OpenBook OpenBook::readAgain() const {
    const BookContent content = readBook(path_);
    OpenBook book(path_, calendarOf(content.document));
    if (book.calendar_ != calendar_)
        throw Failure(ExitCode::BadData, fmt::format("{}: its time zone is {} now; start again to follow it",
                                                     file_, book.calendar_.timeZone()->name()));
    book.fill(content.document);
    return book;
}

OpenBook::OpenBook(const std::string& path, const platform::Calendar& calendar)
    : path_(path), file_(forMessage(path == "-" ? "standard input" : path, 4096)), calendar_(calendar) {}

void OpenBook::fill(const document::BookDocument& document) {
    context_ = TKManagedObjectModel::inMemoryManagedObjectContext();
    context_->setUndoManager(nullptr); // nothing is edited that somebody could undo
    objects_ = BookObjects::ofDocument(document, *context_);
    currencyCode_ =
        TKState::valueForNameInManagedObjectContext(Ref<String>(TKCurrencyCodeStateName), *context_).string();
}

Date OpenBook::asOf() const {
    const auto today = TKCurrentDateController::sharedInstance().currentDate();
    return today ? *today : platform::Clock::now();
}

std::string OpenBook::currencyName() const {
    return currencyCode_ && !currencyCode_->empty() ? forMessage(currencyCode_->view(), 20)
                                                    : "no currency set";
}

std::string OpenBook::heading(std::string_view opening) const {
    const auto dates = platform::DateFormatter::medium();
    return fmt::format("{} {}, {}", opening, dates->stringFromDate(asOf()), currencyName());
}

platform::DecimalBehavior OpenBook::rounding() const {
    return platform::hostOperations().currencyRoundingBehaviourForCurrencyCode(currencyCode_);
}

const OpenBook::Letting& OpenBook::lettingNamed(std::string_view text) const {
    return entryNamed(file_, lettings(), "tenure", "tenures", text,
                      [](const TKTenure& tenure) { return tenure.name(); });
}

const OpenBook::Entry<TKProperty>& OpenBook::propertyNamed(std::string_view text) const {
    return entryNamed(file_, properties(), "property", "properties", text,
                      [](const TKProperty& property) { return property.fullName(); });
}

Failure OpenBook::unreckonable(const Letting& letting, ReckoningError error) const {
    const auto place = static_cast<std::size_t>(&letting - lettings().data());
    return Failure(
        ExitCode::BadData,
        fmt::format("{}: /tenures/{}: the rent of \"{}\" cannot be reckoned ({}); check its rentalAmount, "
                    "rentalPeriod and rentalBillingCycle, its dates and the amounts",
                    file_, place, forMessage(letting.id), error.words));
}

} // namespace estatebook
