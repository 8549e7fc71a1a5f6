// SPDX-License-Identifier: MIT
#include "estatebook/OpenBook.hpp"

#include "estatebook/book/DocumentFile.hpp"
#include "estatebook/book/StoredBook.hpp"
#include "estatebook/book/StoredDocument.hpp"
#include "estatebook/document/DateText.hpp"
#include "estatebook/document/JsonText.hpp"

#include "model/Keys.hpp"
#include "platform/system/Clock.hpp"
#include "platform/text/DateFormatter.hpp"
#include "platform/text/Text.hpp"
#include "store/TKCurrentDateController.hpp"
#include "store/TKManagedObjectModel.hpp"
#include "store/TKState.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace estatebook {

using document::forMessage;
using platform::Date;
using platform::Ref;
using platform::String;
using platform::TimeZone;

namespace {

constexpr std::size_t MaximalChoices = 20;

/// What a document holds of a book file. Nothing else is reckoned with.
document::BookDocument documentOf(const StoredBook& stored) {
    auto document = StoredDocument::of(*stored.store);
    if (!document) throw storeFailure(stored.file, document.error());
    return std::move(document->document);
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

OpenBook OpenBook::open(const std::string& file, std::string_view asOf, Reading how) {
    if (isBookFile(file)) {
        const StoredBook stored = StoredBook::openForReading(file);
        OpenBook book(file, platform::Calendar(stored.timeZone()));
        book.setDay(asOf);
        if (how == Reading::AtOnce)
            book.fill(documentOf(stored));
        else
            book.fill(stored);
        return book;
    }
    const DocumentFile content = DocumentFile::read(file);
    OpenBook book(file, calendarOf(content.document));
    book.setDay(asOf);
    content.warn();
    requireModel();
    book.fill(content.document);
    return book;
}

OpenBook OpenBook::of(const StoredBook& stored) {
    OpenBook book(stored.file, platform::Calendar(TimeZone::defaultTimeZone()));
    book.fill(stored);
    return book;
}

OpenBook OpenBook::readAgain() const {
    const auto made = [&](const document::BookDocument& document, const platform::Calendar& calendar) {
        OpenBook book(path_, calendar);
        if (book.calendar_ != calendar_)
            throw Failure(ExitCode::BadData,
                          fmt::format("{}: its time zone is {} now; start again to follow it", file_,
                                      book.calendar_.timeZone()->name()));
        book.fill(document);
        return book;
    };
    if (isBookFile(path_)) {
        const StoredBook stored = StoredBook::openForReading(path_);
        return made(documentOf(stored), platform::Calendar(stored.timeZone()));
    }
    const DocumentFile content = DocumentFile::read(path_);
    return made(content.document, calendarOf(content.document));
}

void OpenBook::setDay(std::string_view asOf) const {
    if (const auto today = dateOf(asOf, calendar_)) platform::Clock::setNow([today] { return *today; });
    TimeZone::setDefaultTimeZone(calendar_.timeZone());
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

void OpenBook::fill(const StoredBook& stored) {
    context_ = stored.context;
    currencyCode_ = stored.setting(TKCurrencyCodeStateName->view()).string();
    isUnlisted_ = true;
    isDocument_ = false;
}

namespace {

/// Reads a letting if it was not read yet, and takes the schedule away that it makes then. One by whose terms none can be made is awake
/// all the same.
void wake(TKTenure& tenure) {
    if (!tenure.isFault()) return;
    try {
        static_cast<void>(tenure.startDate());
    } catch (const platform::ObjectInaccessibleException&) {
        throw;
    } catch (const platform::Exception&) {
    }
    tenure.setPeriods(nullptr);
}

} // namespace

// Accounts reckon with their lettings. None of these is to wake amid a sum.
const BookObjects& OpenBook::all() const {
    if (!std::exchange(isUnlisted_, false)) return objects_;
    objects_ = BookObjects::ofStore(context_);
    for (const Letting& letting : objects_.lettings) wake(*letting.object);
    return objects_;
}

const std::vector<OpenBook::Entry<TKProperty>>& OpenBook::properties() const {
    return all().properties;
}

const std::vector<OpenBook::Entry<TKTenant>>& OpenBook::tenants() const {
    return all().tenants;
}

const std::vector<OpenBook::Letting>& OpenBook::lettings() const {
    return all().lettings;
}

void OpenBook::forgetTransactions(const Letting& letting) const {
    if (!isDocument_) context_->forgetMembers(*letting.object, keys::transactions);
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
    if (isUnlisted_) {
        Ref<platform::Error> error;
        const auto found = context_->objectWithIdentifier("Tenure", text, &error);
        if (error) throw platform::ObjectInaccessibleException(error->localizedDescription());
        if (found) {
            single_ = {std::string(text), platform::refCast<TKTenure>(found)};
            wake(*single_.object);
            return single_;
        }
    }
    return entryNamed(file_, lettings(), "tenure", "tenures", text,
                      [](const TKTenure& tenure) { return tenure.name(); });
}

const OpenBook::Entry<TKProperty>& OpenBook::propertyNamed(std::string_view text) const {
    return entryNamed(file_, properties(), "property", "properties", text,
                      [](const TKProperty& property) { return property.fullName(); });
}

Failure OpenBook::unreckonable(const Letting& letting, ReckoningError error) const {
    const auto place = static_cast<std::size_t>(&letting - objects_.lettings.data());
    return Failure(ExitCode::BadData,
                   fmt::format("{}: {}the rent of \"{}\" cannot be reckoned ({}); check its rentalAmount, "
                               "rentalPeriod and rentalBillingCycle, its dates and the amounts",
                               file_, isDocument_ ? fmt::format("/tenures/{}: ", place) : "",
                               forMessage(letting.id), error.words));
}

} // namespace estatebook
