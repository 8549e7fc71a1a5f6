// SPDX-License-Identifier: MIT
#pragma once

/// MediumDateReader: reads the texts that DateFormatter writes, and what people type in their place.
///
///     auto reader = MediumDateReader::make(Locale::named("en_US"));
///     reader->read("Jan 1, 2025", MediumDateReader::Manner::Strict)->day;      // 1 January 2025
///     reader->read("1/2/2025", MediumDateReader::Manner::Lenient)->day;        // 2 January 2025
///
/// Read strictly, a text follows the locale's pattern: month names may be spelled out, and years of two digits are those
/// from 1950 to 2049. Read leniently, separators and widths are loose, months may be numbers, and a day or month that there is none of runs
/// on: 32 January is 1 February. Either way an empty text is no date.
///
/// The trap: lenient reading finds a date in almost any three numbers, in the order of the locale. In the United States
/// "32.01.2025" is the first day of the 32nd month, 1 August 2027.

#include "EstateBook_ModelExport.hpp"

#include "platform/calendar/CivilDay.hpp"
#include "platform/text/Locale.hpp"
#include "platform/values/Object.hpp"
#include "platform/values/Ref.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace estatebook::platform {

class ESTATEBOOK_API MediumDateReader final : public Object {
public:
    enum class Manner : bool { Strict, Lenient };

    struct Found {
        CivilDay day;
        /// Where the date ends in the text, in bytes.
        std::size_t end = 0;
    };

    [[nodiscard]] static Ref<MediumDateReader> make(Locale locale);

    /// The date that the text begins with, white space aside; none when there is none, and for a text that is not well
    /// formed. What follows is not looked at. May be called from any thread.
    [[nodiscard]] std::optional<Found> read(std::string_view text, Manner manner) const;

    [[nodiscard]] std::string_view runtimeClassName() const noexcept override { return "MediumDateReader"; }

private:
    class Formats;
    explicit MediumDateReader(Locale locale);
    ~MediumDateReader() override;

    std::unique_ptr<Formats> formats_;
};

} // namespace estatebook::platform
