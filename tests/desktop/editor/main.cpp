// SPDX-License-Identifier: MIT

// Somebody else's program with a book open, which does as it is told on standard input and acknowledges each line with what
// has become of the edits: "saved", "edited" or "stuck". It ends with its input, or is killed.
//
//     rename NAME     names the first property and the first tenant so, in one step
//     break           ends a letting before it starts, so that the book cannot be saved
//     pass SECONDS    lets time pass, and does what is then due

#include "support/HeldClock.hpp"

#include "estatebook-desktop/session/BookSession.hpp"
#include "estatebook/Failure.hpp"

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>

namespace {

using namespace estatebook;
using namespace estatebook::desktop;
using namespace estatebook::platform;

/// 30 June 2026, noon in London.
constexpr Date Today{804510000};

void rename(BookSession& session, const std::string& name) {
    const auto property = session.properties().front();
    const auto tenant = session.tenants().front();
    session.perform("Change of Names", [&] {
        property->setName(String::make(name));
        tenant->setName(String::make(name));
    });
}

void breakFirstTenure(BookSession& session) {
    const auto tenure = session.tenures().front();
    session.perform("Change of Letting", [&] {
        tenure->setEndDate(Date{tenure->startDate()->secondsSinceReferenceDate - 86400.0 * 60});
    });
}

const char* wordFor(BookSession::Condition condition) {
    switch (condition) {
    case BookSession::Condition::Saved:
        return "saved";
    case BookSession::Condition::Edited:
        return "edited";
    case BookSession::Condition::Stuck:
        return "stuck";
    case BookSession::Condition::ReadOnly:
        break;
    }
    return "read-only";
}

void edit(const std::string& book) {
    testkit::HeldClock clock(Today);
    RunLoop loop;
    const auto session = BookSession::open(book, loop);
    std::cout << "open" << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line);
        std::string verb, rest;
        std::getline(words >> verb >> std::ws, rest);
        if (verb == "rename") rename(*session, rest);
        if (verb == "break") breakFirstTenure(*session);
        if (verb == "pass") {
            clock.pass(std::stod(rest));
            loop.turn();
        }
        std::cout << wordFor(session->condition()) << std::endl;
    }
}

} // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) return 2;
    try {
        edit(arguments[1]);
    } catch (const Refusal& refusal) {
        std::cerr << refusal.what() << std::endl;
        return 1;
    }
    return 0;
}
