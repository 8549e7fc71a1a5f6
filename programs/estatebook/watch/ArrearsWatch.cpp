// SPDX-License-Identifier: MIT
#include "estatebook/watch/ArrearsWatch.hpp"

#include "estatebook/ArrearsListing.hpp"
#include "estatebook/book/StoredBook.hpp"

#include "platform/system/NotificationCentre.hpp"
#include "store/TKCurrentDateController.hpp"

#include <fmt/format.h>

#include <ostream>
#include <sstream>
#include <utility>

namespace estatebook {

using platform::Notification;
using platform::NotificationCentre;
using platform::Ref;
using platform::String;

namespace {

/// To the upper left corner, with everything below it taken away.
constexpr std::string_view ClearScreen = "\033[H\033[2J";

} // namespace

ArrearsWatch::ArrearsWatch(const std::string& file, std::string_view asOf, platform::RunLoop& loop,
                           std::ostream& out, Screen screen)
    : out_(out), screen_(screen),
      watcher_(
          loop, file, [this] { readAgain(); }, [file] { return isBookFile(file); }),
      book_(OpenBook::open(file, asOf, OpenBook::Reading::AtOnce)) {
    if (!watcher_.fault().empty())
        throw Failure(ExitCode::CannotRead,
                      fmt::format("{}: its folder cannot be watched: {}", book_.file(), watcher_.fault()));
    NotificationCentre::defaultCentre().addObserverSelectorNameObject(
        this, [this](const Notification&) { show(); }, Ref<String>(TKCurrentDateChanged));
    show();
}

ArrearsWatch::~ArrearsWatch() {
    NotificationCentre::defaultCentre().removeObserver(this);
}

void ArrearsWatch::readAgain() {
    try {
        OpenBook read = book_.readAgain();
        std::swap(book_, read); // what was read before ends as a whole
        trouble_.clear();
    } catch (const Failure& failure) {
        trouble_ = failure.what();
    }
    show();
}

std::string ArrearsWatch::text() const {
    std::ostringstream text;
    ArrearsListing(book_).print(Format::Text, text);
    if (!trouble_.empty()) text << "\nNot up to date: " << trouble_ << '\n';
    return std::move(text).str();
}

void ArrearsWatch::show() {
    if (std::string now = text(); now != shown_) print(now);
}

void ArrearsWatch::redraw() {
    print(text());
}

void ArrearsWatch::print(const std::string& text) {
    if (screen_ == Screen::Terminal)
        out_ << ClearScreen;
    else if (!shown_.empty())
        out_ << '\n';
    out_ << text << std::flush;
    shown_ = text;
}

} // namespace estatebook
