// SPDX-License-Identifier: MIT
#pragma once

/// ArrearsWatch: the arrears of a book, shown again whenever the book's file or the day changes.
///
///     RunLoop loop;
///     ArrearsWatch watch("book.json", "", loop, std::cout, ArrearsWatch::Screen::Terminal);
///     for (;;) {
///         loop.addTimer(TKCurrentDateController::sharedInstance().timer());
///         loop.runOnce();
///     }
///
/// The day is that of the shared TKCurrentDateController. A file that cannot be read, or holds half a book, leaves what was
/// read before on display, with a line that says what is wrong. Nothing is printed when nothing has changed.

#include "estatebook/OpenBook.hpp"
#include "estatebook/watch/FileWatcher.hpp"

#include "platform/system/RunLoop.hpp"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace estatebook {

class ArrearsWatch {
public:
    /// On a terminal each table takes the place of the one before; else an empty line stands between them.
    enum class Screen : std::uint8_t { Lines, Terminal };

    /// Opens the book as OpenBook does and shows it. Throws Failure when that cannot be, or the file cannot be watched.
    /// REQUIRES: loop and stream outlive the watch.
    ArrearsWatch(const std::string& file, std::string_view asOf, platform::RunLoop& loop, std::ostream& out,
                 Screen screen);
    ~ArrearsWatch();
    ArrearsWatch(const ArrearsWatch&) = delete;
    ArrearsWatch& operator=(const ArrearsWatch&) = delete;

    /// Shows what there is once more, as for a terminal of another size.
    void redraw();

private:
    void readAgain();
    void show();
    [[nodiscard]] std::string text() const;
    void print(const std::string& text);

    std::ostream& out_;
    Screen screen_;
    FileWatcher watcher_;
    OpenBook book_;
    /// Why the file was not read the last time; empty when it was.
    std::string trouble_;
    std::string shown_;
};

} // namespace estatebook
