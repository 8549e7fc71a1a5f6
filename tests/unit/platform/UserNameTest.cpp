// SPDX-License-Identifier: MIT
#include "platform/system/UserName.hpp"

#include <gtest/gtest.h>

#include <pwd.h>
#include <unistd.h>

namespace estatebook::platform {
namespace {

struct NameCase {
    const char* comment;
    const char* login;
    const char* name;
};
class FullNameTest : public testing::TestWithParam<NameCase> {};

TEST_P(FullNameTest, IsWhatTheCommentSaysBeforeItsFirstComma) {
    EXPECT_EQ(fullNameInComment(GetParam().comment, GetParam().login), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Comments, FullNameTest,
                         testing::Values(NameCase{"Ada Smith", "ada", "Ada Smith"},
                                         NameCase{"Ada Smith,Room 5,555 0100,", "ada", "Ada Smith"},
                                         NameCase{"& Smith", "ada", "Ada Smith"},
                                         NameCase{"& & & Co", "ada", "Ada Ada Ada Co"},
                                         NameCase{"&", "_apt", "_apt"}, NameCase{"&", "Ada", "Ada"},
                                         NameCase{"&", "", ""}, NameCase{"Zo\u00eb", "zoe", "Zo\u00eb"},
                                         NameCase{"Zo\xeb B", "zoe", "Zo\uFFFD B"},
                                         NameCase{"", "zo\xeb", "zo\uFFFD"}, NameCase{"", "ada", "ada"},
                                         NameCase{",Room 5", "ada", "ada"}, NameCase{"", "", ""}));

TEST(UserNameTest, TheUserIsTheOneWhoseProcessThisIs) {
    const passwd* record = ::getpwuid(::getuid());
    EXPECT_EQ(fullUserName(), record ? fullNameInComment(record->pw_gecos, record->pw_name) : "");
}

} // namespace
} // namespace estatebook::platform
