#include "tests/controllers/World.h"

#include "manager/NewAccountName.h"
#include "storage/Text.h"

namespace letterloft {
namespace {

TEST(JoinedStaysBelowItsBase, WhateverTheComponent) {
    const std::pair<const char*, const char*> cases[] = {
        {"/etc", "/s/etc"}, {"a/b", "/s/a/b"}, {"../x", "/s/../x"}, {".", "/s/."},
        {"..", "/s/.."},    {"", "/s"},        {"a//b/", "/s/a/b"}, {"a b ", "/s/a b "},
    };
    for (const auto& [component, path] : cases) {
        EXPECT_EQ(joined("/s", component), path);
        EXPECT_EQ(joined("/s//", component), path);
    }
    EXPECT_EQ(joined("/", "a"), "/a");
}

TEST(ParkedPathKeepsTheLastComponentOnly, TrailingSlashesAside) {
    EXPECT_EQ(parkedPath(accountFolder(home, "Work"), mailFolder + "//"), support + "/Work/Mail");
    EXPECT_EQ(parkedPath("/a", "/x/Mail"), parkedPath("/a", "/y/Mail"));
    EXPECT_EQ(backupFolder(home, "%@", "20110305-09.07.3"), support + "/OldData/%@/20110305-09.07.3");
    EXPECT_EQ(expandedTilde("~/", home), home);
    EXPECT_EQ(expandedTilde("~other/x", home), "~other/x");
}

TEST(FilledTakesNoValueForAText, WhateverItHolds) {
    EXPECT_EQ(filled("%@ is already managing %@!", {"%@", "100%d\n"}), "%@ is already managing 100%d\n!");
    EXPECT_EQ(filledForLog("User %@:\n%@", {"a\nb\x1b\xff", std::nullopt}), "User a\\nb\\x1b\\xff:\n(null)");
    EXPECT_EQ(filledForLog("%@", {"Ünï\u2028"}), "Ünï\\xe2\\x80\\xa8");
}

TEST(NewAccountName, FollowsTheGreatestDefaultUser) {
    const std::pair<Texts, const char*> cases[] = {
        {{}, "Default User"},
        {{"Work", "Home"}, "Default User"},
        {{"Default User"}, "Default User1"},
        {{"Default User1", "Default User"}, "Default User2"},
        {{"Default User9", "Default User10"}, "Default User11"},
        {{"Default User007", "Default User6"}, "Default User8"},
        {{"Default User2b", "Default User10a"}, "Default User11"},
        {{"Default User7", "Default Users"}, "Default User1"}, // a digit comes before a letter
        // Position 12 counts from the start of the whole name; the result may be there already.
        {{"Default User1", "Old Default User7"}, "Default User1"},
        {{"Default User3", "default user"}, "Default User1"},
        {{"DEFAULT U\u017FER4"}, "Default User5"}, // the long s is an s
        {{"\U0001F600Default User5"}, "Default User1"},
        {{"Default User2", "\uFF24efault User9"}, "Default User3"}, // a wide D is none
        {{"Default User \t12x"}, "Default User13"},
        {{"Default User+4"}, "Default User5"},
        {{"Default User-1"}, "Default User0"},
        {{"Default User-5"}, "Default User-4"},
        {{"Default User- 5"}, "Default User1"},
        {{"Default User2147483646"}, "Default User2147483647"},
        {{"Default User2147483647"}, "Default User-2147483648"},
        {{"Default User99999999999999999999999"}, "Default User-2147483648"},
        {{"Default User-99999999999999999999999"}, "Default User-2147483647"},
        {{"Default User18446744073709551617", "Default User18446744073709551616"}, "Default User-2147483648"},
    };
    for (const auto& [names, expected] : cases)
        EXPECT_EQ(newAccountName(names), expected) << testing::PrintToString(names);
}

} // namespace
} // namespace letterloft
