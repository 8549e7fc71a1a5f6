// SPDX-License-Identifier: MIT
#include "platform/system/Log.hpp"

#include <algorithm>
#include <string>
#include <syslog.h>
#include <utility>

namespace estatebook::platform {

namespace {

Log::Sink& currentSink() {
    static Log::Sink sink;
    return sink;
}

} // namespace

void Log::write(std::string_view line) {
    std::string text(line);
    std::ranges::replace_if(
        text, [](char each) { return each == '\n' || each == '\r'; }, ' ');
    if (const auto& sink = currentSink())
        sink(text);
    else
        ::syslog(LOG_USER | LOG_NOTICE, "%s", text.c_str());
}

void Log::setSink(Sink sink) {
    currentSink() = std::move(sink);
}

} // namespace estatebook::platform
