// SPDX-License-Identifier: MIT
#include "platform/text/MediumDateTable.hpp"

#include "platform/values/Exception.hpp"

#include <unicode/calendar.h>
#include <unicode/decimfmt.h>
#include <unicode/dtfmtsym.h>
#include <unicode/smpdtfmt.h>

#include <algorithm>
#include <mutex>
#include <optional>

namespace estatebook::platform {
namespace {

using Texts = std::vector<std::string>;

/// Calendars that have the months of the civil year and differ from it in the number of the year alone.
/// Era: the index of the name that stands for every ordinary year.
struct CivilCalendar {
    std::string_view type;
    int yearOffset;
    int era;
};
constexpr CivilCalendar civilCalendars[] = {{"gregorian", 0, 1}, {"buddhist", 543, 0}};

std::string utf8(const icu::UnicodeString& text) {
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

} // namespace

/// ICU's formatter, one date at a time.
class MediumDateTable::Fallback {
public:
    explicit Fallback(const std::string& localeName)
        : format_(icu::DateFormat::createDateInstance(icu::DateFormat::kMedium,
                                                      icu::Locale(localeName.c_str()))) {
        if (!format_)
            throw InternalInconsistencyException("there is no date format for the locale " + localeName);
        format_->adoptTimeZone(icu::TimeZone::createTimeZone("UTC"));
    }

    [[nodiscard]] const icu::DateFormat& format() const noexcept { return *format_; }

    std::string text(CivilDay day) {
        constexpr double millisecondsPerDay = 86400e3;
        const std::lock_guard lock(mutex_);
        if (day == lastDay_) return lastText_;
        icu::UnicodeString formatted;
        format_->format(static_cast<double>(day.number) * millisecondsPerDay, formatted);
        lastText_ = utf8(formatted);
        lastDay_ = day;
        return lastText_;
    }

private:
    std::mutex mutex_;
    // Ranges of days meet on a day, which is then written twice.
    std::optional<CivilDay> lastDay_;
    std::string lastText_;
    std::unique_ptr<icu::DateFormat> format_;
};

/// Reads ICU's pattern and symbols into cells.
class MediumDateTable::Compiler {
public:
    Compiler(MediumDateTable& table, const icu::DateFormat& format)
        : table_(table), format_(dynamic_cast<const icu::SimpleDateFormat*>(&format)) {}

    /// False when the pattern has something that cells cannot hold; the table is to be cleared then.
    bool compile() {
        addCell({}); // nobody's: the number 0 is no cell
        if (!format_ || !readCalendar() || !readDigits()) return false;
        icu::UnicodeString pattern;
        format_->toPattern(pattern);
        if (!readPattern(pattern)) return false;
        closeLiteral();
        if (longestText() > MaximalTextLength) return false;
        coverYearsOfFourDigits();
        coverUsualYears();
        return true;
    }

private:
    static constexpr std::size_t CellRoom = sizeof Cell::text;

    bool readCalendar() {
        const std::string_view type = format_->getCalendar()->getType();
        const auto found = std::ranges::find(civilCalendars, type, &CivilCalendar::type);
        if (found == std::end(civilCalendars)) return false;
        calendar_ = *found;
        table_.yearOffset_ = found->yearOffset;
        return true;
    }

    bool readDigits() {
        const auto* numbers = dynamic_cast<const icu::DecimalFormat*>(format_->getNumberFormat());
        if (!numbers || !numbers->getDecimalFormatSymbols()) return false;
        for (const char16_t field : {u'y', u'M', u'd'})
            if (format_->getNumberFormatForField(field) != numbers) return false;
        for (int digit = 0; digit < 10; ++digit)
            digits_.push_back(utf8(numbers->getDecimalFormatSymbols()->getConstDigitSymbol(digit)));
        return true;
    }

    /// A pattern is letters that repeat, text between single quotes, and other characters that stand for
    /// themselves; two single quotes are one, inside and outside of quoted text.
    bool readPattern(const icu::UnicodeString& pattern) {
        bool quoted = false;
        for (std::int32_t at = 0; at < pattern.length();) {
            const char16_t unit = pattern[at];
            if (unit == u'\'' && at + 1 < pattern.length() && pattern[at + 1] == u'\'') {
                literal_ += '\'';
                at += 2;
            } else if (unit == u'\'') {
                quoted = !quoted;
                ++at;
            } else if (!quoted && isLetter(unit)) {
                std::int32_t count = 1;
                while (at + count < pattern.length() && pattern[at + count] == unit) ++count;
                if (!readField(unit, count)) return false;
                at += count;
            } else {
                const UChar32 character = pattern.char32At(at);
                literal_ += utf8(icu::UnicodeString(character));
                at += U16_LENGTH(character);
            }
        }
        return true;
    }

    static bool isLetter(char16_t unit) {
        return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
    }

    bool readField(char16_t letter, std::int32_t count) {
        switch (letter) {
        case u'd':
            return count <= 2 && addStep(Day, numbers(1, 31, count));
        case u'M':
            return addMonth(count, icu::DateFormatSymbols::FORMAT);
        case u'L':
            return addMonth(count, icu::DateFormatSymbols::STANDALONE);
        case u'y':
            return addYear(count);
        case u'G':
            return addEra(count);
        default:
            return false;
        }
    }

    bool addMonth(std::int32_t count, icu::DateFormatSymbols::DtContextType context) {
        if (count <= 2) return addStep(Month, numbers(1, 12, count));
        if (count > 4) return false;
        std::int32_t size = 0;
        const icu::UnicodeString* names = format_->getDateFormatSymbols()->getMonths(
            size, context, count == 3 ? icu::DateFormatSymbols::ABBREVIATED : icu::DateFormatSymbols::WIDE);
        if (size < 12) return false;
        Texts texts;
        for (int month = 0; month < 12; ++month) texts.push_back(utf8(names[month]));
        return addStep(Month, texts);
    }

    bool addYear(std::int32_t count) {
        if (count > 4) return false;
        return (count == 2 || addStep(Century, numbers(0, 99, 2))) &&
               addStep(YearOfCentury, numbers(0, 99, 2));
    }

    bool addEra(std::int32_t count) {
        if (count > 3) return false;
        std::int32_t size = 0;
        const icu::UnicodeString* names = format_->getDateFormatSymbols()->getEras(size);
        if (calendar_.era >= size) return false;
        literal_ += utf8(names[calendar_.era]);
        return true;
    }

    Texts numbers(int first, int last, std::int32_t width) const {
        Texts texts;
        for (int number = first; number <= last; ++number) {
            const std::string ones = digits_[static_cast<std::size_t>(number % 10)];
            const bool two = number >= 10 || width == 2;
            texts.push_back(two ? digits_[static_cast<std::size_t>(number / 10)] + ones : ones);
        }
        return texts;
    }

    /// The literal before the field joins its cells where there is room, and stands alone where there is
    /// none. Texts that are too long for one cell go on in the cell of a further step.
    bool addStep(Field field, const Texts& texts) {
        const std::size_t longest = std::ranges::max_element(texts, {}, &std::string::size)->size();
        if (longest == 0) return false;
        if (longest + literal_.size() > CellRoom) closeLiteral();
        for (std::size_t from = 0; from < longest; from += CellRoom) {
            table_.steps_.push_back({field, static_cast<std::uint16_t>(table_.cells_.size())});
            for (const std::string& text : texts)
                addCell(literal_ + text.substr(std::min(from, text.size()), CellRoom));
        }
        literal_.clear();
        return true;
    }

    void closeLiteral() {
        for (std::string_view rest = literal_; !rest.empty();
             rest.remove_prefix(std::min(rest.size(), CellRoom))) {
            table_.steps_.push_back({Always, static_cast<std::uint16_t>(table_.cells_.size())});
            addCell(rest.substr(0, CellRoom));
        }
        literal_.clear();
    }

    void addCell(std::string_view text) {
        Cell cell{};
        std::ranges::copy(text, cell.text);
        cell.length = static_cast<std::uint8_t>(text.size());
        table_.cells_.push_back(cell);
    }

    std::size_t longestText() const {
        std::size_t sum = 0;
        for (std::size_t step = 0; step < table_.steps_.size(); ++step) {
            const auto begin = table_.cells_.begin() + table_.steps_[step].firstCell;
            const auto end = step + 1 < table_.steps_.size()
                                 ? table_.cells_.begin() + table_.steps_[step + 1].firstCell
                                 : table_.cells_.end();
            sum += std::max_element(begin, end, [](const Cell& a, const Cell& b) {
                       return a.length < b.length;
                   })->length;
        }
        return sum;
    }

    void coverYearsOfFourDigits() {
        table_.firstDay_ = CivilDay::fromYearMonthDay(1000 - table_.yearOffset_, 1, 1).number;
        const CivilDay end = CivilDay::fromYearMonthDay(10000 - table_.yearOffset_, 1, 1);
        table_.dayCount_ = static_cast<std::uint64_t>(end.number - table_.firstDay_);
    }

    void coverUsualYears() {
        const std::vector<Step> steps = sharedSteps();
        if (steps.size() > MostCells || table_.cells_.size() >> BitsPerCell != 0) return;
        for (std::size_t place = 0; place < steps.size(); ++place)
            if (steps[place].field == Day || steps[place].field == DayAndMonth)
                table_.cellsPerDay_ += std::uint64_t{1} << (place * BitsPerCell);
        constexpr unsigned years = UsualYear.mask + 1;
        for (unsigned year = 0; year <= years; ++year)
            for (int month = 1; month <= 12; ++month) {
                const CivilDay first = CivilDay::fromYearMonthDay(FirstUsualYear + year, month, 1);
                const std::uint32_t fields = table_.fieldsOf(first) | UsualYear.holding(year);
                std::uint64_t cells = 0;
                for (std::size_t place = 0; place < steps.size(); ++place)
                    cells |= std::uint64_t{cellOf(steps[place], fields)} << (place * BitsPerCell);
                table_.usualMonths_.push_back(
                    {cells, static_cast<std::uint32_t>(first.number - FirstUsualDay)});
            }
        table_.usualDayCount_ = table_.usualMonths_[12 * years].firstDay;
    }

    /// The steps, neighbours put together where one field tells the cells of both.
    std::vector<Step> sharedSteps() {
        std::vector<Step> steps;
        for (const Step step : table_.steps_) {
            std::optional<Step> shared;
            if (!steps.empty()) shared = sharedStep(steps.back(), step);
            if (shared)
                steps.back() = *shared;
            else
                steps.push_back(step);
        }
        return steps;
    }

    std::optional<Step> sharedStep(Step first, Step second) {
        const std::optional<Field> field = sharedField(first.field, second.field);
        if (!field) return std::nullopt;
        Texts texts;
        for (const std::uint32_t fields : allFieldsIn(*field)) {
            texts.push_back(textOf(first, fields) + textOf(second, fields));
            if (texts.back().size() > CellRoom) return std::nullopt;
        }
        const Step step{*field, static_cast<std::uint16_t>(table_.cells_.size())};
        for (const std::string& text : texts) addCell(text);
        return step;
    }

    static std::optional<Field> sharedField(Field first, Field second) {
        if (second == Always || first == second) return first;
        if (first == Always) return second;
        if ((first == Day && second == Month) || (first == Month && second == Day)) return DayAndMonth;
        if (first == Century && second == YearOfCentury) return UsualYear;
        return std::nullopt;
    }

    /// The fields of a day for each number that may stand in this one, in order.
    std::vector<std::uint32_t> allFieldsIn(Field field) const {
        std::vector<std::uint32_t> all;
        if (field == DayAndMonth) {
            // No month has the last of the numbers that there is room for.
            for (unsigned month = 0; month < 12; ++month)
                for (unsigned day = 0; day <= Day.mask; ++day)
                    all.push_back(Month.holding(month) | Day.holding(std::min(day, 30u)));
        } else if (field == UsualYear) {
            for (unsigned year = 0; year <= UsualYear.mask; ++year)
                all.push_back(table_.fieldsOf(CivilDay::fromYearMonthDay(FirstUsualYear + year, 1, 1)) |
                              UsualYear.holding(year));
        } else {
            const unsigned count = field == Day ? 31 : field == Month ? 12 : field == Always ? 1 : 100;
            for (unsigned number = 0; number < count; ++number) all.push_back(field.holding(number));
        }
        return all;
    }

    static std::uint32_t cellOf(Step step, std::uint32_t fields) {
        return step.firstCell + step.field.of(fields);
    }
    std::string textOf(Step step, std::uint32_t fields) const {
        const Cell& cell = table_.cells_[cellOf(step, fields)];
        return {cell.text, cell.length};
    }

    MediumDateTable& table_;
    const icu::SimpleDateFormat* format_;
    CivilCalendar calendar_{};
    Texts digits_;
    std::string literal_;
};

MediumDateTable::MediumDateTable(const std::string& localeName)
    : fallback_(std::make_unique<Fallback>(localeName)) {
    if (Compiler(*this, fallback_->format()).compile() && agreesWithFallback()) return;
    dayCount_ = 0;
    usualDayCount_ = 0;
}

MediumDateTable::~MediumDateTable() = default;

// A letter or a calendar that means more than its documentation says would show here, and cost speed only.
bool MediumDateTable::agreesWithFallback() const {
    for (int month = 1; month <= 12; ++month) {
        for (const int year : {1583 + 173 * month, 1900 + 21 * month}) {
            const CivilDay day = CivilDay::fromYearMonthDay(year, month, 2 * month + 3);
            char text[RoomNeeded];
            if (std::string_view(text, write(text, day)) != fallback_->text(day)) return false;
        }
    }
    return true;
}

std::uint32_t MediumDateTable::fieldsOf(CivilDay day) const noexcept {
    const YearMonthDay parts = day.yearMonthDay();
    const auto shown = static_cast<std::uint32_t>(parts.year + yearOffset_);
    return Day.holding(static_cast<std::uint32_t>(parts.day - 1)) |
           Month.holding(static_cast<std::uint32_t>(parts.month - 1)) | Century.holding(shown / 100) |
           YearOfCentury.holding(shown % 100);
}

char* MediumDateTable::writeUnusual(char* out, CivilDay day) const {
    if (!hasCellsFor(day)) return writeWithFallback(out, day);
    const std::uint32_t fields = fieldsOf(day);
    for (const Step& step : steps_) {
        const Cell& cell = cells_[step.firstCell + step.field.of(fields)];
        std::memcpy(out, &cell, sizeof cell);
        out += cell.length;
    }
    return out;
}

char* MediumDateTable::writeWithFallback(char* out, CivilDay day) const {
    const std::string text = fallback_->text(day);
    std::size_t size = std::min(text.size(), MaximalTextLength);
    while (size > 0 && size < text.size() && (text[size] & 0xC0) == 0x80) --size; // never through a character
    return std::copy_n(text.data(), size, out);
}

} // namespace estatebook::platform
