// SPDX-License-Identifier: MIT
#pragma once

/// StringsTable: the texts that the main program supplies in the user's language.
///
/// The library looks up a few words ("days", "weeks", "months", "years") in tables of the main program. A
/// library without such a program, or a program without a table, has none: then the words are what they are
/// asked for.
///
///     auto table = StringsTable::parse("\"weeks\" = \"Wochen\";");
///     StringsTable::install(*table);
///     localizedStringForKeyValueTable(weeks)->view();     // "Wochen"
///     localizedStringForKeyValueTable(months)->view();    // "months", the very object that was passed

#include "platform/values/String.hpp"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace estatebook::platform {

class ESTATEBOOK_API StringsTable {
public:
    /// The name under which the default table is kept.
    static constexpr std::string_view DefaultName = "Localizable";

    StringsTable() = default;
    /// The table of those texts by their keys.
    [[nodiscard]] static StringsTable fromTexts(const std::map<std::string, std::string>& texts);

    /// Reads the form
    ///     /* a remark */
    ///     "key" = "value";   // another
    /// in UTF-8, where \" \\ \n \r \t and \uXXXX stand for characters inside the quotes. Of a key given twice
    /// the last counts. No value when the text is not of that form; `error` then says what is wrong and in
    /// which line.
    [[nodiscard]] static std::optional<StringsTable> parse(std::string_view text,
                                                           std::string* error = nullptr);

    /// Reads a file of that form. No value when it cannot be read; `error` then has the path and the reason.
    [[nodiscard]] static std::optional<StringsTable> read(const std::string& path,
                                                          std::string* error = nullptr);

    /// Puts a table in the place of the main program's table of that name, from any thread. Texts that were
    /// handed out stay.
    static void install(StringsTable table, std::string_view name = DefaultName);

    /// The text of a key, or null.
    [[nodiscard]] Ref<String> find(std::string_view key) const;

private:
    std::map<std::string, Ref<String>, std::less<>> texts_;
};

/// localizedStringForKey:value:table: of the main program. The installed text of the key. Where there is
/// none, `value` itself if it is present and not empty, else `key` itself. An empty table name is the default
/// table.
[[nodiscard]] ESTATEBOOK_API Ref<String> localizedStringForKeyValueTable(const Ref<String>& key,
                                                                         const Ref<String>& value = nullptr,
                                                                         std::string_view table = {});

} // namespace estatebook::platform
