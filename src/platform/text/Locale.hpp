// SPDX-License-Identifier: MIT
#pragma once

/// Locale: whose habits decide how a date is written.
///
/// A small value that names one interned, never freed entry: copying it costs nothing, and two locales are
/// equal when they name the same entry. What was worked out for a locale (its date table) is kept with the
/// entry, so that it is made once in the life of the process.
///
/// The trap: "C" and "POSIX", as the environment knows them, are not an absence of habits. They write dates
/// as "Jan 1, 2025" (the locale en_US_POSIX), while the empty identifier is the root locale, "2025 M01 1".
///
///     Locale::current().identifier();             // "en_GB" under LC_TIME=en_GB.UTF-8
///     Locale::named("de-DE").identifier();        // "de_DE"
///     Locale::setCurrent(Locale::named("fr_FR")); // for every formatter made from now on

#include "EstateBook_ModelExport.hpp"

#include <string_view>
#include <vector>

namespace estatebook::platform {

struct LocaleEntry;

class ESTATEBOOK_API Locale {
public:
    /// currentLocale: the locale of the process. Until a program sets one it is `fromEnvironment()`, read
    /// once at the first call. May be called from any thread.
    [[nodiscard]] static Locale current();

    /// Makes a locale the current one. Formatters that exist keep the locale they were made with.
    static void setCurrent(Locale locale) noexcept;

    /// The locale of a name such as "de_DE", "de-DE", "zh_Hant_TW" or "th_TH@numbers=thai"; the empty name is
    /// the root locale. A name nobody knows is no error: its language, or at last the root, lends its habits.
    [[nodiscard]] static Locale named(std::string_view identifier);

    /// The locale that the environment asks for with the first of LC_ALL, LC_TIME and LANG that is not empty,
    /// read afresh. The C library need not have that locale installed. A character set (".UTF-8") is of no
    /// account, a modifier such as "@latin" chooses the script; "C", "POSIX" or nothing is en_US_POSIX.
    [[nodiscard]] static Locale fromEnvironment();

    /// Every identifier of the date data, in its order; `named` gives the locale of each.
    [[nodiscard]] static std::vector<std::string_view> availableIdentifiers();

    /// The canonical name, for example "de_DE"; empty for the root locale.
    [[nodiscard]] std::string_view identifier() const noexcept;

    friend bool operator==(Locale a, Locale b) noexcept = default;

private:
    friend class DateFormatter;
    explicit Locale(const LocaleEntry* entry) noexcept : entry_(entry) {}

    const LocaleEntry* entry_;
};

} // namespace estatebook::platform
