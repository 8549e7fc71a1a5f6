// SPDX-License-Identifier: MIT
#include "platform/system/UserName.hpp"

#include "platform/text/Text.hpp"

#include <cerrno>
#include <cstddef>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace estatebook::platform {

std::string fullNameInComment(std::string_view comment, std::string_view login) {
    std::string capitalised(login);
    if (!login.empty() && login[0] >= 'a' && login[0] <= 'z')
        capitalised[0] = static_cast<char>(login[0] - 'a' + 'A');
    std::string name;
    for (const char each : comment.substr(0, comment.find(','))) {
        if (each == '&')
            name += capitalised;
        else
            name += each;
    }
    return toWellFormedUtf8(name.empty() ? login : std::string_view(name));
}

std::string fullUserName() {
    constexpr std::size_t MostRoom = std::size_t{1} << 20;
    for (std::vector<char> room(1024); room.size() <= MostRoom; room.resize(room.size() * 2)) {
        passwd record{};
        passwd* found = nullptr;
        const int error = ::getpwuid_r(::getuid(), &record, room.data(), room.size(), &found);
        if (error == ERANGE) continue;
        if (!found) return {};
        return fullNameInComment(record.pw_gecos ? record.pw_gecos : "", record.pw_name);
    }
    return {};
}

} // namespace estatebook::platform
