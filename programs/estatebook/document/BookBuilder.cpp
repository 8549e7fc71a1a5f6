// SPDX-License-Identifier: MIT
#include "estatebook/document/BookBuilder.hpp"

#include "estatebook/document/DateText.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/calendar/TimeZone.hpp"

#include <algorithm>
#include <numeric>
#include <type_traits>
#include <variant>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace estatebook::document {

namespace {

using platform::Calendar;
using platform::Date;
using platform::TimeZone;

constexpr Wanted WantedText = wantedFor(std::optional<std::string>());
constexpr Wanted WantedList = wantedFor(std::vector<Property>());
constexpr Wanted WantedPiece{"a text, or an object of a text and its attributes",
                             "write a text in quotation marks"};
constexpr Wanted WantedSetting{"a text, a number, true, false or null", "a setting holds nothing else"};

template <class Object>
constexpr auto namesOfMembers() {
    std::array<std::string_view, membersOf<Object>.size()> names;
    std::transform(membersOf<Object>.begin(), membersOf<Object>.end(), names.begin(),
                   [](const Member<Object>& member) { return member.name; });
    return names;
}
template <class Object>
constexpr auto NamesOfMembers = namesOfMembers<Object>();

/// What to do about a date.
std::string_view adviceOn(DateFault fault) noexcept {
    switch (fault) {
    case DateFault::NoSuchDay:
        return "correct the day";
    case DateFault::NoSuchTime:
        return "correct the time, or write it with its offset";
    case DateFault::OutsideYears:
        return "correct the year";
    default:
        return wantedFor(std::optional<Date>()).how;
    }
}

Verdict takeDate(std::string_view text, const Calendar& calendar, std::optional<Date>& field) {
    const DateReading reading = readDate(text, calendar);
    field = reading.date;
    if (field) return {};
    return Refusal{fmt::format("\"{}\" {}", forMessage(text), describe(reading.fault)),
                   std::string(adviceOn(reading.fault))};
}

constexpr IdentifierKind kindOf(const BookPlace& place) noexcept {
    if (place.inner == BookPlace::Inner::Transactions) return IdentifierKind::Transaction;
    if (place.inner == BookPlace::Inner::Notes) return IdentifierKind::Note;
    if (place.list == BookPlace::List::Properties) return IdentifierKind::Property;
    if (place.list == BookPlace::List::Tenants) return IdentifierKind::Tenant;
    return IdentifierKind::Tenure;
}

constexpr BookPlace::List listOf(BookMember member) noexcept {
    switch (member) {
    case BookMember::Properties:
        return BookPlace::List::Properties;
    case BookMember::Tenants:
        return BookPlace::List::Tenants;
    case BookMember::Tenures:
        return BookPlace::List::Tenures;
    default:
        return BookPlace::List::None;
    }
}

} // namespace

// -- Where we are -------------------------------------------------------------------------------------------

BookPlace BookBuilder::here() const noexcept {
    BookPlace place = place_;
    place.line = source_.line();
    return place;
}

std::string BookBuilder::path() const {
    std::string path = place_.path();
    if (stage_ == Stage::Settings && !settingName_.empty()) path += pathStep(forMessage(settingName_));
    if (stage_ == Stage::Tags) path += pathStep(std::to_string(tagCount_));
    if (stage_ == Stage::Pieces) path += pathStep(std::to_string(pieceCount_));
    if (stage_ == Stage::Piece || stage_ == Stage::Attributes)
        path += pathStep(std::to_string(pieceCount_ - 1));
    if (pieceMember_) path += pathStep(PieceMemberNames[static_cast<std::size_t>(*pieceMember_)]);
    if (stage_ == Stage::Attributes && !attributeName_.empty()) path += pathStep(forMessage(attributeName_));
    return path;
}

template <class Function>
auto BookBuilder::visitField(Function&& function) {
    return visitObject(book_, place_, [&](auto& object) {
        const auto& member = membersOf<std::remove_cvref_t<decltype(object)>>[place_.member];
        return std::visit([&](auto field) { return function(object.*field, member.role); }, member.field);
    });
}

std::span<const std::string_view> BookBuilder::memberNames() {
    return visitObject(book_, place_, [](auto& object) -> std::span<const std::string_view> {
        return NamesOfMembers<std::remove_cvref_t<decltype(object)>>;
    });
}

Wanted BookBuilder::wantedHere() {
    switch (stage_) {
    case Stage::Book: {
        const auto member = static_cast<BookMember>(place_.member);
        if (member == BookMember::Settings) return WantedObject;
        return listOf(member) == BookPlace::List::None ? WantedText : WantedList;
    }
    case Stage::Settings:
        return atZoneSetting_ ? WantedText : WantedSetting;
    case Stage::Object:
    case Stage::InnerObject:
        return visitField([](const auto& field, Role) { return wantedFor(field); });
    case Stage::Tags:
        return WantedText;
    case Stage::Pieces:
        return WantedPiece;
    case Stage::Piece:
        return pieceMember_ == PieceMember::Text ? WantedText : WantedObject;
    case Stage::Attributes:
        return WantedSetting;
    default:
        return WantedObject;
    }
}

// -- Refusing -----------------------------------------------------------------------------------------------

bool BookBuilder::refuseAt(std::string path, std::size_t line, Refusal refusal) {
    if (!error_)
        error_ = BookError{.file = file_,
                           .path = std::move(path),
                           .line = line,
                           .message = std::move(refusal.message),
                           .advice = std::move(refusal.advice)};
    return false;
}

bool BookBuilder::refuse(Refusal refusal) {
    return refuseAt(path(), source_.line(), std::move(refusal));
}

bool BookBuilder::refuseMember(std::string_view name, Refusal refusal) {
    place_.member = BookPlace::NoMember;
    return refuseAt(place_.path() + pathStep(forMessage(name)), source_.line(), std::move(refusal));
}

bool BookBuilder::refuseValue(std::string_view found) {
    return refuse(notWanted(wantedHere(), found));
}

bool BookBuilder::countEntry() {
    if (++entries_ <= BookReader::MaximumEntries) return true;
    return refuse({fmt::format("the document holds more than {} entries", BookReader::MaximumEntries),
                   "divide the book"});
}

// -- Objects and lists --------------------------------------------------------------------------------------

bool BookBuilder::beginObject() {
    switch (stage_) {
    case Stage::Before:
        stage_ = Stage::Book;
        return true;
    case Stage::Book:
        if (static_cast<BookMember>(place_.member) != BookMember::Settings) break;
        stage_ = Stage::Settings;
        return true;
    case Stage::List:
        return addObject();
    case Stage::InnerList:
        return addInnerObject();
    case Stage::Pieces:
        if (!addPiece({})) return false;
        pieceSeen_ = 0;
        hasPieceText_ = false;
        stage_ = Stage::Piece;
        return true;
    case Stage::Piece:
        if (pieceMember_ != PieceMember::Attributes) break;
        stage_ = Stage::Attributes;
        return true;
    default:
        break;
    }
    return refuseValue("an object");
}

bool BookBuilder::addObject() {
    if (!countEntry()) return false;
    if (place_.list == BookPlace::List::Properties)
        book_.properties.emplace_back();
    else if (place_.list == BookPlace::List::Tenants)
        book_.tenants.emplace_back();
    else {
        book_.tenures.emplace_back();
        marks_.tenureLines.emplace_back();
    }
    objectSeen_ = 0;
    stage_ = Stage::Object;
    return true;
}

bool BookBuilder::addInnerObject() {
    if (!countEntry()) return false;
    BookPlace owner = place_;
    owner.inner = BookPlace::Inner::None;
    visitObject(book_, owner, [&](auto& object) {
        if constexpr (requires { object.transactions; })
            if (place_.inner == BookPlace::Inner::Transactions) object.transactions.emplace_back();
        if constexpr (requires { object.notes; })
            if (place_.inner == BookPlace::Inner::Notes) object.notes.emplace_back();
    });
    innerSeen_ = 0;
    stage_ = Stage::InnerObject;
    return true;
}

bool BookBuilder::endObject() {
    if (stage_ == Stage::Attributes) return endAttributes();
    if (stage_ == Stage::Piece) return endPiece();
    place_.member = BookPlace::NoMember;
    switch (stage_) {
    case Stage::Book:
        stage_ = Stage::After;
        return true;
    case Stage::Settings:
        stage_ = Stage::Book;
        return checkSettingNames();
    case Stage::Object:
        stage_ = Stage::List;
        ++place_.index;
        return true;
    default:
        stage_ = Stage::InnerList;
        ++place_.innerIndex;
        return true;
    }
}

bool BookBuilder::beginList() {
    if (stage_ == Stage::Book) {
        const BookPlace::List list = listOf(static_cast<BookMember>(place_.member));
        if (list == BookPlace::List::None) return refuseValue("a list");
        place_ = {.list = list};
        stage_ = Stage::List;
        return true;
    }
    if (stage_ != Stage::Object && stage_ != Stage::InnerObject) return refuseValue("a list");
    return visitField([&](const auto& field, Role) {
        using Field = std::remove_cvref_t<decltype(field)>;
        if constexpr (std::is_same_v<Field, std::vector<std::string>>) {
            stage_ = Stage::Tags;
            tagCount_ = 0;
        } else if constexpr (std::is_same_v<Field, std::optional<RichText>>) {
            richText() = {};
            stage_ = Stage::Pieces;
            pieceCount_ = 0;
        } else if constexpr (std::is_same_v<Field, std::vector<Transaction>> ||
                             std::is_same_v<Field, std::vector<Note>>) {
            place_.inner = std::is_same_v<Field, std::vector<Note>> ? BookPlace::Inner::Notes
                                                                    : BookPlace::Inner::Transactions;
            place_.innerIndex = 0;
            place_.member = BookPlace::NoMember;
            stage_ = Stage::InnerList;
        } else {
            return refuseValue("a list");
        }
        return true;
    });
}

bool BookBuilder::endList() {
    switch (stage_) {
    case Stage::List:
        place_ = {};
        stage_ = Stage::Book;
        return true;
    case Stage::InnerList:
        place_.inner = BookPlace::Inner::None;
        place_.member = BookPlace::NoMember;
        stage_ = Stage::Object;
        return true;
    case Stage::Pieces:
        richText().settle();
        stage_ = Stage::InnerObject;
        return true;
    default:
        dropRepeated(tags());
        stage_ = place_.inner == BookPlace::Inner::None ? Stage::Object : Stage::InnerObject;
        return true;
    }
}

// -- Members ------------------------------------------------------------------------------------------------

bool BookBuilder::key(std::string_view name) {
    switch (stage_) {
    case Stage::Book:
        return enterMember(name, BookMemberNames, bookSeen_);
    case Stage::Settings:
        return enterSetting(name);
    case Stage::Object:
        return enterMember(name, memberNames(), objectSeen_);
    case Stage::Piece:
        return enterPieceMember(name);
    case Stage::Attributes:
        return enterAttribute(name);
    default:
        return enterMember(name, memberNames(), innerSeen_);
    }
}

bool BookBuilder::enterMember(std::string_view name, std::span<const std::string_view> known,
                              std::uint32_t& seen) {
    const auto found = std::find(known.begin(), known.end(), name);
    if (found == known.end())
        return refuseMember(name, {fmt::format("\"{}\" is no member here", forMessage(name)),
                                   fmt::format("use {}", fmt::join(known, ", "))});
    const auto index = static_cast<std::uint8_t>(found - known.begin());
    if ((seen >> index & 1u) != 0)
        return refuseMember(name, {fmt::format("\"{}\" is given twice", name), "keep one of the two"});
    seen |= 1u << index;
    place_.member = index;
    return true;
}

bool BookBuilder::enterSetting(std::string_view name) {
    settingName_ = name;
    atZoneSetting_ = name == TimeZoneSettingName;
    if (atZoneSetting_) {
        if (hasZoneMember_)
            return refuse(
                {"the zone is given twice, as timeZone and as a setting", "keep the member timeZone"});
        if (hasZoneSetting_)
            return refuse({fmt::format("\"{}\" is given twice", name), "keep one of the two"});
        hasZoneSetting_ = true;
        return true;
    }
    book_.settings.push_back({settingName_, {}});
    settingLines_.push_back(source_.line());
    return countEntry();
}

bool BookBuilder::checkSettingNames() {
    const auto& settings = book_.settings;
    std::vector<std::size_t> order(settings.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return settings[a].name < settings[b].name; });
    std::size_t first = settings.size();
    for (std::size_t i = 1; i < order.size(); ++i)
        if (settings[order[i]].name == settings[order[i - 1]].name) first = std::min(first, order[i]);
    if (first == settings.size()) return true;
    const std::string name = forMessage(settings[first].name);
    return refuseAt("/settings" + pathStep(name), settingLines_[first],
                    {fmt::format("\"{}\" is given twice", name), "keep one of the two"});
}

// -- Values -------------------------------------------------------------------------------------------------

bool BookBuilder::value(const Scalar& value) {
    switch (stage_) {
    case Stage::Book:
        return bookValue(value);
    case Stage::Settings:
        return settingValue(value);
    case Stage::Object:
    case Stage::InnerObject:
        return memberValue(value);
    case Stage::Tags:
        return tagValue(value);
    case Stage::Pieces:
        if (value.type != Scalar::Type::Text) return refuseValue(value.shown());
        return addPiece({std::string(value.text), {}});
    case Stage::Piece:
        return pieceValue(value);
    case Stage::Attributes:
        return attributeValue(value);
    default:
        return refuseValue(value.shown());
    }
}

bool BookBuilder::bookValue(const Scalar& value) {
    if (value.type == Scalar::Type::Null) return true;
    const auto member = static_cast<BookMember>(place_.member);
    const bool wantsText = member == BookMember::Schema || member == BookMember::TimeZone;
    if (!wantsText || value.type != Scalar::Type::Text) return refuseValue(value.shown());
    return member == BookMember::Schema ? schemaValue(value) : zoneValue(value);
}

bool BookBuilder::schemaValue(const Scalar& value) {
    hasSchema_ = true;
    if (value.text == BookSchema) return true;
    return refuse({fmt::format("the schema is \"{}\", not \"{}\"", forMessage(value.text), BookSchema),
                   "read it with a program that knows its schema"});
}

bool BookBuilder::zoneValue(const Scalar& value) {
    hasZoneMember_ = true;
    if (hasZoneSetting_)
        return refuse({"the zone is given twice, as a setting and as timeZone", "keep the member timeZone"});
    return setZone(value.text);
}

bool BookBuilder::setZone(std::string_view name) {
    const platform::Ref<TimeZone> zone = TimeZone::named(name);
    if (!zone)
        return refuse({fmt::format("the zone \"{}\" is unknown", forMessage(name)),
                       "use a name such as \"Europe/London\""});
    book_.timeZone = name;
    calendar_ = Calendar(zone);
    return true;
}

bool BookBuilder::settingValue(const Scalar& value) {
    if (!atZoneSetting_) return refuseUnless(takeSetting(value, book_.settings.back().value));
    if (value.type == Scalar::Type::Null) return true;
    return value.type == Scalar::Type::Text ? setZone(value.text) : refuseValue(value.shown());
}

bool BookBuilder::memberValue(const Scalar& value) {
    if (value.type == Scalar::Type::Null) return true;
    Verdict verdict = visitField([&](auto& field, Role role) -> Verdict {
        if constexpr (std::is_same_v<std::remove_cvref_t<decltype(field)>, std::optional<Date>>) {
            if (value.type != Scalar::Type::Text) return notWanted(wantedFor(field), value.shown());
            if (calendar_) return takeDate(value.text, *calendar_, field);
            pendingDates_.push_back({here(), std::string(value.text)});
            return {};
        } else {
            if (role == Role::Identifier)
                marks_.identifiers[static_cast<std::size_t>(kindOf(place_))].push_back(here());
            return take(value, field);
        }
    });
    if (stage_ == Stage::Object && place_.list == BookPlace::List::Tenures)
        marks_.tenureLines.back()[place_.member] = source_.line();
    return refuseUnless(std::move(verdict));
}

std::vector<std::string>& BookBuilder::tags() {
    return visitObject(book_, place_, [](auto& object) -> std::vector<std::string>& {
        if constexpr (requires { object.tags; })
            return object.tags;
        else
            std::abort(); // a tenure has none, so the stage cannot be reached
    });
}

bool BookBuilder::tagValue(const Scalar& value) {
    if (value.type != Scalar::Type::Text) return refuseValue(value.shown());
    if (!countEntry()) return false;
    tags().emplace_back(value.text);
    ++tagCount_;
    return true;
}

// -- Pieces of a text ---------------------------------------------------------------------------------------

RichText& BookBuilder::richText() {
    return visitObject(book_, place_, [](auto& object) -> RichText& {
        if constexpr (requires { object.content; })
            return object.content ? *object.content : object.content.emplace();
        else
            std::abort(); // only a note has one, so the stage cannot be reached
    });
}

bool BookBuilder::addPiece(TextPiece piece) {
    if (!countEntry()) return false;
    richText().pieces.push_back(std::move(piece));
    ++pieceCount_;
    return true;
}

bool BookBuilder::enterPieceMember(std::string_view name) {
    const auto found = std::ranges::find(PieceMemberNames, name);
    pieceMember_.reset();
    if (found == PieceMemberNames.end())
        return refuseAt(path() + pathStep(forMessage(name)), source_.line(),
                        {fmt::format("\"{}\" is no member here", forMessage(name)),
                         fmt::format("use {}", fmt::join(PieceMemberNames, ", "))});
    const auto index = static_cast<std::size_t>(found - PieceMemberNames.begin());
    pieceMember_ = static_cast<PieceMember>(index);
    if ((pieceSeen_ >> index & 1u) != 0)
        return refuse({fmt::format("\"{}\" is given twice", name), "keep one of the two"});
    pieceSeen_ |= 1u << index;
    return true;
}

bool BookBuilder::enterAttribute(std::string_view name) {
    attributeName_ = name;
    richText().pieces.back().attributes.push_back({attributeName_, {}});
    return countEntry();
}

bool BookBuilder::pieceValue(const Scalar& value) {
    if (value.type == Scalar::Type::Null) return true;
    if (pieceMember_ != PieceMember::Text || value.type != Scalar::Type::Text)
        return refuseValue(value.shown());
    richText().pieces.back().text = value.text;
    hasPieceText_ = true;
    return true;
}

bool BookBuilder::attributeValue(const Scalar& value) {
    return refuseUnless(takeSetting(value, richText().pieces.back().attributes.back().value));
}

bool BookBuilder::endAttributes() {
    auto& attributes = richText().pieces.back().attributes;
    std::vector<std::string_view> names;
    names.reserve(attributes.size());
    for (const Setting& attribute : attributes) names.push_back(attribute.name);
    std::ranges::sort(names);
    attributeName_.clear();
    if (const auto twice = std::ranges::adjacent_find(names); twice != names.end()) {
        const std::string name = forMessage(*twice);
        return refuseAt(path() + pathStep(name), source_.line(),
                        {fmt::format("\"{}\" is given twice", name), "keep one of the two"});
    }
    std::erase_if(attributes,
                  [](const Setting& each) { return std::holds_alternative<std::monostate>(each.value); });
    stage_ = Stage::Piece;
    return true;
}

bool BookBuilder::endPiece() {
    pieceMember_.reset();
    if (!hasPieceText_) return refuse({"the piece has no text", "give it a member \"text\""});
    stage_ = Stage::Pieces;
    return true;
}

// -- The end ------------------------------------------------------------------------------------------------

bool BookBuilder::finishDates() {
    const Calendar calendar = calendar_.value_or(Calendar::current());
    for (const PendingDate& pending : pendingDates_) {
        place_ = pending.place;
        Verdict verdict = visitField([&](auto& field, Role) -> Verdict {
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(field)>, std::optional<Date>>)
                return takeDate(pending.text, calendar, field);
            return {};
        });
        if (verdict) return refuseAt(place_.path(), place_.line, std::move(*verdict));
    }
    return true;
}

bool BookBuilder::finishBook(std::vector<BookWarning>& warnings) {
    if (!hasSchema_)
        return refuseAt(
            "/schema", source_.line(),
            {"the document names no schema", fmt::format("begin it with \"schema\": \"{}\"", BookSchema)});
    if (!finishDates()) return false;
    if (auto fault = checkBook(book_, marks_))
        return refuseAt(fault->place.path(), fault->place.line, {fault->message, fault->advice});
    for (const BookFault& fault : unreckonableTerms(book_, marks_))
        warnings.push_back({file_, fault.place.path(), fault.place.line, fault.message});
    return true;
}

BookReading BookBuilder::finish() {
    BookReading reading;
    if (stage_ != Stage::After) refuse({"the document is not complete", "restore it from a whole copy"});
    if (!error_ && finishBook(reading.warnings))
        reading.document = std::move(book_);
    else
        reading.error = std::move(error_);
    return reading;
}

} // namespace estatebook::document
