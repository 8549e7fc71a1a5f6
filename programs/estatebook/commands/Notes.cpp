// SPDX-License-Identifier: MIT
#include "estatebook/commands/Commands.hpp"

#include "estatebook/Listing.hpp"
#include "estatebook/document/JsonText.hpp"

#include "platform/text/DateFormatter.hpp"
#include "platform/values/AttributedString.hpp"
#include "tags/TKTagNames.hpp"

#include <fmt/format.h>

#include <ostream>

namespace estatebook {

using document::forMessage;
using platform::Ref;
using platform::String;

namespace {

constexpr std::size_t LongestShownText = 400;
constexpr std::size_t LongestShownNote = 20'000;
constexpr std::size_t MaximalLinesOfParagraph = 400;
constexpr std::string_view Indent = "    ";

/// What a note is on.
struct Owner {
    std::string_view kind;
    std::string_view id;
    Ref<String> name;
};

Ref<String> contentOf(const TKNote& note) {
    const platform::Value content = note.content();
    if (const auto rich = content.as<platform::AttributedString>()) return rich->text();
    return content.string();
}

/// All notes of a book that were made by its day, with their owners.
template <class Function>
void forEachNote(const OpenBook& book, Function each) {
    const auto notesOf = [&](const Owner& owner, const TKNotable& object) {
        for (const TKNote& note : object.notes())
            if (!(note.createdDate() > book.asOf())) each(owner, note); // none is before all others
    };
    for (const auto& [id, property] : book.properties())
        notesOf({"property", id, property->fullName()}, *property);
    for (const auto& [id, tenant] : book.tenants()) notesOf({"tenant", id, tenant->name()}, *tenant);
    for (const auto& [id, tenure] : book.lettings()) notesOf({"tenure", id, tenure->name()}, *tenure);
}

std::string shown(const Ref<String>& text) {
    return text ? forMessage(text->view(), LongestShownText) : std::string();
}

/// "14 Mar 2024, Landlord: Inspection [Inspection, Damp]"; what is absent is left out with its mark.
std::string titleOf(const TKNote& note, const platform::DateFormatter& dates) {
    std::string title;
    const auto append = [&](std::string_view mark, const std::string& text) {
        if (!text.empty()) title += (title.empty() ? "" : std::string(mark)) + text;
    };
    if (const auto created = note.createdDate()) append("", dates.stringFromDate(*created));
    append(", ", shown(note.createdBy()));
    append(": ", shown(note.subject()));
    if (const auto tags = note.tagNames(); tags && !tags->isEmpty())
        append(" ", fmt::format("[{}]", forMessage(tags->editableString(), LongestShownText)));
    return title.empty() ? "(no subject)" : title;
}

void printWrapped(std::string_view text, std::string_view indent, std::size_t width, std::ostream& out) {
    for (const std::string& line : wrapText(text, width - indent.size(), MaximalLinesOfParagraph))
        out << (line.empty() ? "" : indent) << line << '\n';
}

void printText(const OpenBook& book, std::ostream& out) {
    const std::size_t width = TextTable::widthOfOutput();
    const auto dates = platform::DateFormatter::medium();
    out << fmt::format("Notes by {}\n", dates->stringFromDate(book.asOf()));
    std::string_view lastOwner;
    forEachNote(book, [&](const Owner& owner, const TKNote& note) {
        if (owner.id.data() != lastOwner.data()) {
            out << '\n';
            printWrapped(owner.name ? shown(owner.name) : forMessage(owner.id), "", width, out);
            lastOwner = owner.id;
        }
        out << '\n';
        printWrapped(titleOf(note, *dates), "", width, out);
        const Ref<String> content = contentOf(note);
        std::string_view text = content ? content->view() : std::string_view();
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            std::string_view paragraph = text.substr(0, end);
            if (paragraph.ends_with('\r')) paragraph.remove_suffix(1);
            printWrapped(forMessage(paragraph, LongestShownNote), Indent, width, out);
            text.remove_prefix(std::min(end + 1, text.size()));
        }
    });
}

Listing::Cell tagsCell(const Ref<TKTagNames>& names) {
    std::vector<std::string> texts;
    if (names)
        for (const platform::Value& name : names->items()->members())
            if (name.string()) texts.push_back(name.string()->string());
    return texts;
}

} // namespace

void printNotes(const ListOptions& options, std::ostream& out) {
    const OpenBook book = OpenBook::open(options.book.file, options.book.asOf);
    if (options.format == Format::Text) return printText(book, out);
    Listing listing(
        book, "notes",
        {{"id"}, {"on"}, {"owner"}, {"ownerName"}, {"date"}, {"by"}, {"subject"}, {"content"}, {"tags"}});
    forEachNote(book, [&](const Owner& owner, const TKNote& note) {
        listing.addRow({book.identifierOf(note), std::string(owner.kind), std::string(owner.id),
                        Listing::cell(owner.name), Listing::cell(note.createdDate()),
                        Listing::cell(note.createdBy()), Listing::cell(note.subject()),
                        Listing::cell(contentOf(note)), tagsCell(note.tagNames())});
    });
    listing.print({}, options.format, out);
}

} // namespace estatebook
