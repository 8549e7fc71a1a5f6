// SPDX-License-Identifier: MIT
#pragma once

/// BookBuilder: makes a book of what a JSON reader meets, one event after another, and refuses what is none.
///
/// An object is given to it as `beginObject`, for each member `key` and the member's value, `endObject`; a
/// list as `beginList`, its entries, `endList`. Each function gives false when reading must stop; `finish`
/// then tells why.

#include "estatebook/document/BookChecks.hpp"
#include "estatebook/document/BookPlace.hpp"
#include "estatebook/document/BookReader.hpp"
#include "estatebook/document/BookValues.hpp"
#include "estatebook/document/TextSource.hpp"

#include "platform/calendar/Calendar.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace estatebook::document {

class BookBuilder {
public:
    /// The source tells the line of each event. REQUIRES: it outlives the builder.
    BookBuilder(const TextSource& source, std::string_view file) : source_(source), file_(file) {}

    bool value(const Scalar& value);
    bool beginObject();
    bool key(std::string_view name);
    bool endObject();
    bool beginList();
    bool endList();

    /// Ends the reading with an error at this place.
    bool refuse(Refusal refusal);

    /// The book, when all of it was met and nothing is wrong with it, or the error. To be called once, at the
    /// end.
    [[nodiscard]] BookReading finish();

private:
    /// What stands around the next event.
    enum class Stage : std::uint8_t {
        Before,
        Book,
        Settings,
        List,
        Object,
        InnerList,
        InnerObject,
        Tags,
        Pieces,
        Piece,
        Attributes,
        After
    };

    struct PendingDate {
        BookPlace place;
        std::string text;
    };

    [[nodiscard]] BookPlace here() const noexcept;
    [[nodiscard]] std::string path() const;
    bool refuseAt(std::string path, std::size_t line, Refusal refusal);
    bool refuseUnless(Verdict verdict) { return !verdict || refuse(std::move(*verdict)); }
    bool refuseValue(std::string_view found);
    bool refuseMember(std::string_view name, Refusal refusal);
    [[nodiscard]] Wanted wantedHere();

    bool enterMember(std::string_view name, std::span<const std::string_view> known, std::uint32_t& seen);
    bool enterSetting(std::string_view name);
    bool addObject();
    bool addInnerObject();
    bool countEntry();

    bool bookValue(const Scalar& value);
    bool schemaValue(const Scalar& value);
    bool zoneValue(const Scalar& value);
    bool setZone(std::string_view name);
    bool settingValue(const Scalar& value);
    bool memberValue(const Scalar& value);
    bool tagValue(const Scalar& value);
    void markMember(Role role);

    [[nodiscard]] std::span<const std::string_view> memberNames();
    template <class Function>
    auto visitField(Function&& function);
    [[nodiscard]] std::vector<std::string>& tags();

    bool addPiece(TextPiece piece);
    bool enterPieceMember(std::string_view name);
    bool enterAttribute(std::string_view name);
    bool pieceValue(const Scalar& value);
    bool attributeValue(const Scalar& value);
    bool endPiece();
    bool endAttributes();
    [[nodiscard]] RichText& richText();

    bool checkSettingNames();
    bool finishDates();
    bool finishBook(std::vector<BookWarning>& warnings);

    const TextSource& source_;
    std::string file_;

    Stage stage_ = Stage::Before;
    BookPlace place_;
    /// The setting being read.
    std::string settingName_;
    /// The members met so far, of the book, of the object in a list of it, and of the object in a list of
    /// that.
    std::uint32_t bookSeen_ = 0;
    std::uint32_t objectSeen_ = 0;
    std::uint32_t innerSeen_ = 0;
    std::size_t entries_ = 0;
    bool hasSchema_ = false;
    bool hasZoneMember_ = false;
    bool hasZoneSetting_ = false;
    bool atZoneSetting_ = false;
    std::size_t tagCount_ = 0;
    /// Of the text being read in pieces, and of the latest of them.
    std::size_t pieceCount_ = 0;
    std::string attributeName_;
    std::optional<PieceMember> pieceMember_;
    std::uint32_t pieceSeen_ = 0;
    bool hasPieceText_ = false;

    BookDocument book_;
    BookMarks marks_;
    std::vector<std::size_t> settingLines_;
    /// Dates that were met before the zone.
    std::vector<PendingDate> pendingDates_;
    std::optional<platform::Calendar> calendar_;
    std::optional<BookError> error_;
};

} // namespace estatebook::document
