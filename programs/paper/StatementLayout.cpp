// SPDX-License-Identifier: MIT
#include "paper/StatementLayout.hpp"

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace estatebook::paper {

namespace {

constexpr double Margin = 56;
constexpr double FootAboveEdge = 34;
constexpr double UsualSize = 9.5;
/// Below this nothing is read any more, so that numbers may as well stand over one another.
constexpr double SmallestSize = 2;
/// How much of a page's width descriptions have at least.
constexpr double PartForDescriptions = 0.3;
constexpr double TitleSize = 15;
constexpr double SubtitleSize = 10;
constexpr double RunningSize = 8;
constexpr double PartHeadingSize = 12;
/// In parts of the size. Lines of one text stand closer than rows.
constexpr double Leading = 1.22;
constexpr double RowGap = 0.23;
constexpr double Ascent = 0.92;
constexpr double FewLines = 5;

std::string_view beforePoint(std::string_view number) noexcept {
    return number.substr(0, number.find('.'));
}

std::string replaced(std::string text, std::string_view mark, std::string_view by) {
    if (const std::size_t place = text.find(mark); place != std::string::npos)
        text.replace(place, mark.size(), by);
    return text;
}

/// Widths of texts, each measured once: dates and amounts come again and again.
class Widths {
public:
    explicit Widths(TextMeasure& measure) : measure_(measure) {}

    double of(std::string_view text, const TextStyle& style) {
        auto& known = known_[Key(style.size, style.isBold, style.isItalic)];
        const auto found = known.find(text);
        if (found != known.end()) return found->second;
        return known.emplace(text, measure_.width(text, style)).first->second;
    }

private:
    using Key = std::tuple<double, bool, bool>;

    TextMeasure& measure_;
    std::map<Key, std::unordered_map<std::string_view, double>> known_;
};

/// A column of numbers, aligned on their points.
struct NumberColumn {
    double before = 0;
    double after = 0;
    double title = 0;
    /// Where it ends.
    double right = 0;

    [[nodiscard]] double width() const noexcept { return std::max(before + after, title); }
    [[nodiscard]] double point() const noexcept { return right - after; }
};

/// What stands below one another, from the first section's heading to the last remark.
struct Row {
    std::string_view date{};
    std::string_view what{};
    std::string_view amount{};
    std::string_view balance{};
    TextStyle style{};
    double spaceAbove = 0;
    /// Where the text "what" begins, and the width it has.
    double left = 0;
    double width = 0;
    bool hasRuleAbove = false;
    bool staysWithNext = false;
    /// What is told to go on when the row begins a page, the outer heading first; or null.
    const PrintedStatement::Section* part = nullptr;
    const PrintedStatement::Section* section = nullptr;
};

} // namespace

class StatementLayout::Setter {
public:
    Setter(StatementLayout& layout, const PrintedStatement& statement, PaperSize size, TextMeasure& measure)
        : layout_(layout), statement_(statement), size_(size), measure_(measure), widths_(measure) {}

    void set() {
        chooseColumns();
        beginFirstPage();
        setRows();
        numberPages();
    }

private:
    using Section = PrintedStatement::Section;

    [[nodiscard]] double left() const noexcept { return Margin; }
    [[nodiscard]] double right() const noexcept { return size_.width - Margin; }
    [[nodiscard]] double bottom() const noexcept { return size_.height - Margin; }

    // -- Styles

    [[nodiscard]] TextStyle usual() const noexcept { return {.size = textSize_}; }
    [[nodiscard]] TextStyle bold() const noexcept { return {.size = textSize_, .isBold = true}; }
    [[nodiscard]] TextStyle styleOf(const PrintedStatement::Line& line) const noexcept {
        return {.size = textSize_, .isItalic = line.isGenerated};
    }
    [[nodiscard]] static TextStyle running() noexcept { return {.size = RunningSize, .isPale = true}; }

    // -- Columns

    void chooseColumns() {
        measureColumns();
        const double others = right() - left() - whatWidth_;
        const double roomForOthers = (right() - left()) * (1 - PartForDescriptions);
        if (others <= roomForOthers) return;
        textSize_ = std::max(UsualSize * roomForOthers / others, SmallestSize);
        measureColumns();
    }

    void measureColumns() {
        dateWidth_ = widths_.of(statement_.columns[0], bold());
        amount_ = {.title = widths_.of(statement_.columns[2], bold())};
        balance_ = {.title = widths_.of(statement_.columns[3], bold())};
        for (const Section& section : statement_.sections) {
            for (const PrintedStatement::Line& line : section.lines) {
                const TextStyle style = styleOf(line);
                dateWidth_ = std::max(dateWidth_, widths_.of(line.date, style));
                widen(amount_, line.amount, style);
                widen(balance_, line.balance, style);
            }
            for (const PrintedStatement::Total& total : section.totals) widen(balance_, total.amount, bold());
        }
        const double gap = textSize_ * 1.5;
        balance_.right = right();
        amount_.right = balance_.right - balance_.width() - 1.2 * gap;
        whatLeft_ = left() + dateWidth_ + gap;
        whatWidth_ = amount_.right - amount_.width() - gap - whatLeft_;
    }

    void widen(NumberColumn& column, std::string_view number, const TextStyle& style) {
        const double before = widths_.of(beforePoint(number), style);
        column.before = std::max(column.before, before);
        column.after = std::max(column.after, widths_.of(number, style) - before);
    }

    // -- Pages

    [[nodiscard]] Page& page() noexcept { return layout_.pages_.back(); }

    void beginFirstPage() {
        layout_.pages_.emplace_back();
        y_ = Margin;
        setText(statement_.title, {.size = TitleSize, .isBold = true});
        y_ += 4;
        setText(statement_.subtitle, {.size = SubtitleSize});
        y_ += 14;
        setTitles();
        top_ = y_;
    }

    void beginPage(const Row& first) {
        layout_.pages_.emplace_back();
        y_ = Margin;
        const double widthOfSubtitle = widths_.of(statement_.subtitle, running());
        const double baseline = y_ + Ascent * RunningSize;
        const double room = std::max(right() - left() - widthOfSubtitle - 2 * RunningSize, RunningSize);
        // What does not fit on the line is left out; the first page has it all.
        page().texts.push_back({statement_.title, running(), left(), baseline, room, 0});
        page().texts.push_back({statement_.subtitle, running(), right() - widthOfSubtitle, baseline, 0, 0});
        y_ += Leading * RunningSize + 10;
        setTitles();
        for (const Section* section : {first.part, first.section != first.part ? first.section : nullptr})
            if (section && !section->heading.empty()) {
                const std::string& text =
                    layout_.made_.emplace_back(replaced(statement_.continued, "{heading}", section->heading));
                y_ += textSize_ * 0.4;
                setText(text, section->isPart ? partHeading() : bold());
                y_ += textSize_ * RowGap;
            }
        top_ = y_;
    }

    /// The titles of the columns and the rule below them.
    void setTitles() {
        const double baseline = y_ + Ascent * textSize_;
        const auto place = [&](std::string_view text, double x) {
            page().texts.push_back({text, bold(), x, baseline, 0, 0});
        };
        const auto& [date, what, amount, balance] = statement_.columns;
        place(date, left());
        place(what, whatLeft_);
        place(amount, amount_.right - amount_.title);
        place(balance, balance_.right - balance_.title);
        y_ += (Leading + RowGap) * textSize_;
        setRule(left());
        y_ += textSize_ * 0.35;
    }

    void setRule(double from) { page().rules.push_back({from, right(), y_}); }

    void setText(std::string_view text, const TextStyle& style) {
        const double width = right() - left();
        const std::vector<TextMeasure::Line> lines = measure_.linesOf(text, style, width);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            page().texts.push_back({text, style, left(), y_ + ascentOf(lines[i], style), width, i});
            y_ += heightOf(lines[i], style);
        }
    }

    /// A script that stands taller than the usual ones gets the room it needs.
    static double ascentOf(const TextMeasure::Line& line, const TextStyle& style) noexcept {
        return std::max(line.ascent, Ascent * style.size);
    }
    static double heightOf(const TextMeasure::Line& line, const TextStyle& style) noexcept {
        return std::max(ascentOf(line, style) + line.descent, Leading * style.size);
    }

    void numberPages() {
        const std::string count = std::to_string(layout_.pages_.size());
        std::size_t number = 0;
        for (Page& each : layout_.pages_) {
            const std::string& text = layout_.made_.emplace_back(replaced(
                replaced(statement_.pageOfPages, "{page}", std::to_string(++number)), "{pages}", count));
            each.texts.push_back(
                {text, running(), right() - widths_.of(text, running()), size_.height - FootAboveEdge, 0, 0});
        }
    }

    // -- Rows

    struct MeasuredRow {
        Row row;
        std::vector<TextMeasure::Line> lines;
        double height = 0;
    };

    [[nodiscard]] TextStyle partHeading() const noexcept {
        return {.size = std::max(PartHeadingSize * textSize_ / UsualSize, textSize_), .isBold = true};
    }

    void setRows() {
        const Section* part = nullptr;
        for (const Section& section : statement_.sections) {
            if (section.isPart) part = &section;
            addSection(section, part);
        }
        double space = textSize_ * 1.4;
        for (const std::string& remark : statement_.remarks) {
            add({.what = remark,
                 .style = {.size = textSize_ * 0.9},
                 .spaceAbove = space,
                 .left = left(),
                 .width = right() - left()});
            space = 0;
        }
    }

    void addSection(const Section& section, const Section* part) {
        if (!section.heading.empty())
            add({.what = section.heading,
                 .style = section.isPart ? partHeading() : bold(),
                 .spaceAbove = textSize_ * (section.isPart ? 1.6 : 1.2),
                 .left = left(),
                 .width = right() - left(),
                 .staysWithNext = !section.lines.empty() || !section.totals.empty()});
        for (const PrintedStatement::Line& line : section.lines)
            add({.date = line.date,
                 .what = line.what,
                 .amount = line.amount,
                 .balance = line.balance,
                 .style = styleOf(line),
                 .left = whatLeft_,
                 .width = whatWidth_,
                 .staysWithNext = &line == &section.lines.back() && !section.totals.empty(),
                 .part = part,
                 .section = &section});
        for (const PrintedStatement::Total& total : section.totals) {
            const bool isFirst = &total == &section.totals.front();
            const bool hasRule = isFirst && !section.lines.empty();
            add({.what = total.words,
                 .balance = total.amount,
                 .style = bold(),
                 .spaceAbove = hasRule ? textSize_ * 0.7 : 0,
                 .left = whatLeft_,
                 // No amount stands there.
                 .width = amount_.right - whatLeft_,
                 .hasRuleAbove = hasRule,
                 .staysWithNext = &total != &section.totals.back(),
                 .part = part,
                 .section = &section});
        }
    }

    void add(Row row) {
        MeasuredRow& added = together_.emplace_back(MeasuredRow{row, {}, row.spaceAbove});
        added.lines = measure_.linesOf(row.what, row.style, row.width);
        for (const TextMeasure::Line& line : added.lines) added.height += heightOf(line, row.style);
        added.height += gapBelow(added);
        if (!row.staysWithNext) setTogether();
    }

    /// A tall last line has its gap in it.
    static double gapBelow(const MeasuredRow& measured) noexcept {
        const TextStyle& style = measured.row.style;
        return std::max((Leading + RowGap) * style.size - heightOf(measured.lines.back(), style), 0.0);
    }

    /// Sets the rows that are to stand on one page; those for which a page is too small begin where a few lines have room.
    void setTogether() {
        double height = 0;
        for (const MeasuredRow& each : together_) height += each.height;
        if (height > bottom() - top_) height = FewLines * Leading * textSize_;
        if (height > bottom() - y_ && !isFresh()) beginPage(together_.front().row);
        for (const MeasuredRow& each : together_) setRow(each);
        together_.clear();
    }

    /// Whether nothing stands on the page yet.
    [[nodiscard]] bool isFresh() const noexcept { return y_ <= top_; }

    void setRow(const MeasuredRow& measured) {
        const Row& row = measured.row;
        if (row.hasRuleAbove) {
            y_ += row.spaceAbove / 2;
            setRule(whatLeft_);
            y_ += row.spaceAbove / 2;
        } else {
            y_ += isFresh() ? std::min(row.spaceAbove, 0.5 * textSize_) : row.spaceAbove;
        }
        for (std::size_t i = 0; i < measured.lines.size(); ++i) {
            const TextMeasure::Line& line = measured.lines[i];
            const double height = heightOf(line, row.style);
            if (y_ + height > bottom() && !isFresh()) beginPage(row);
            const double baseline = y_ + ascentOf(line, row.style);
            if (i == 0) setCells(row, baseline);
            page().texts.push_back({row.what, row.style, row.left, baseline, row.width, i});
            y_ += height;
        }
        y_ += gapBelow(measured);
    }

    void setCells(const Row& row, double baseline) {
        const auto place = [&](std::string_view text, double x) {
            if (!text.empty()) page().texts.push_back({text, row.style, x, baseline, 0, 0});
        };
        place(row.date, left());
        for (const auto& [number, column] :
             {std::pair(row.amount, &amount_), std::pair(row.balance, &balance_)})
            place(number, column->point() - widths_.of(beforePoint(number), row.style));
    }

    StatementLayout& layout_;
    const PrintedStatement& statement_;
    PaperSize size_;
    TextMeasure& measure_;
    Widths widths_;

    double textSize_ = UsualSize;
    double dateWidth_ = 0;
    double whatLeft_ = 0;
    double whatWidth_ = 0;
    NumberColumn amount_;
    NumberColumn balance_;

    /// Where the next row begins, and where the first one of the page does.
    double y_ = 0;
    double top_ = 0;
    std::vector<MeasuredRow> together_;
};

StatementLayout::StatementLayout(const PrintedStatement& statement, PaperSize size, TextMeasure& measure) {
    Setter(*this, statement, size, measure).set();
}

} // namespace estatebook::paper
