#include "tests/controllers/World.h"

namespace letterloft {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

World& opened(World& world) { return world.start().openManager(); }

TEST(TheTable, ShowsTheListAndTheEmptyTextForARowThatIsGone) {
    World world{{"A", "B"}};
    opened(world);
    EXPECT_THAT(world.table().texts(), ElementsAre("A", "B"));
    world.settings.setList("Accounts", {"A"});
    EXPECT_THAT(world.table().texts(), ElementsAre("A", ""));
    world.settings.removeValue("Accounts");
    EXPECT_EQ(world.table().textAt(0), "");
}

TEST(InsertAccount, AddsAFolderAndARow) {
    World world{{"Work"}};
    world.files.addFile(support + "/Default User/Mail", "left over");
    opened(world);
    world.press("insertAccount:");
    world.press("insertAccount:");
    EXPECT_THAT(world.table().texts(), ElementsAre("Work", "Default User", "Default User1"));
    EXPECT_THAT(world.accounts(), ElementsAre("Work", "Default User", "Default User1"));
    EXPECT_EQ(world.textAt(support + "/Default User/Mail"), "left over");
    EXPECT_TRUE(world.files.folderExists(support + "/Default User1"));
    EXPECT_TRUE(world.isSaved());
    EXPECT_FALSE(world.table().selectedRow());
    EXPECT_THAT(world.accountRows(), ElementsAre("Work [mailbox] !")); // until the window closes
    EXPECT_THAT(world.notifications.posts, IsEmpty());
}

TEST(InsertAccount, MayGiveANameTwice) {
    World world{{"Default User1", "Old Default User7"}};
    opened(world).press("insertAccount:");
    EXPECT_THAT(world.accounts(), ElementsAre("Default User1", "Old Default User7", "Default User1"));
}

TEST(InsertAccount, WithoutAFolderChangesNothing) {
    World world{{"Work"}};
    opened(world);
    world.files.failingPaths = {support + "/Default User"};
    const int reloads = world.table().reloads;
    world.press("insertAccount:");
    EXPECT_THAT(world.accounts(), ElementsAre("Work"));
    EXPECT_EQ(world.table().reloads, reloads);
    EXPECT_THAT(world.log.lines,
                ElementsAre(StartsWith("There was an error creating a folder for user Default User:\nCan't make")));
    EXPECT_FALSE(world.sheet());
}

bool rename(World& world, std::size_t row, const CellValue& value) {
    world.table().beginEditing(row);
    return world.table().commit(value);
}

TEST(Rename, MovesTheFolderAndFollowsTheCurrentUser) {
    World world{{"A", "B"}};
    world.files.addFile(support + "/B/Mail", "B's mail");
    opened(world);
    const int reloads = world.table().reloads;
    EXPECT_TRUE(rename(world, 1, std::string{"b %@"}));
    EXPECT_EQ(world.textAt(support + "/b %@/Mail"), "B's mail");
    EXPECT_EQ(world.currentUser(), "A");
    EXPECT_TRUE(rename(world, 0, std::string{"a"}));
    EXPECT_EQ(world.currentUser(), "a");
    EXPECT_THAT(world.accounts(), ElementsAre("a", "b %@"));
    EXPECT_TRUE(world.isSaved());
    EXPECT_EQ(world.table().reloads, reloads);
    EXPECT_THAT(world.accountRows(), ElementsAre("B", "A [mailbox] !"));
}

TEST(Rename, RefusesAnyNameInTheListItsOwnIncluded) {
    for (const char* name : {"A", "B"}) {
        World world{{"A", "B"}};
        opened(world);
        EXPECT_TRUE(rename(world, 1, std::string{name}));
        ASSERT_TRUE(world.sheet());
        EXPECT_EQ(world.sheet()->messageText, "ERROR! Account name " + std::string{name} + " already exists!!");
        EXPECT_EQ(world.sheet()->informativeText, "You can not have 2 accounts with the same name.");
        EXPECT_EQ(world.sheet()->buttons.size(), 1u);
        world.window().press("OK");
        EXPECT_THAT(world.accounts(), ElementsAre("A", "B"));
        EXPECT_EQ(world.settings.synchronizations, 0);
    }
}

TEST(Rename, LeavesTheDecisionToTheMoveOfTheFolder) {
    for (const char* name : {"Left over", "", ".", "..", "a/b", "../Letterloft", "/etc/x"}) {
        World world{{"A", "B"}};
        world.files.addFile(support + "/Left over/Mail", "x");
        opened(world);
        const auto before = std::pair{world.files.tree, world.settings.values};
        EXPECT_TRUE(rename(world, 0, std::string{name}));
        EXPECT_EQ(std::pair(world.files.tree, world.settings.values), before) << name;
        const std::string said =
            "There was an error moving the folder for user A (renamed " + std::string{name} + "):\n";
        EXPECT_THAT(world.log.lines, ElementsAre(StartsWith(said)));
        EXPECT_FALSE(world.sheet());
    }
}

TEST(Rename, OfNoTextOrOfARowThatIsGoneChangesNothing) {
    World world{{"A", "B"}};
    opened(world);
    const auto before = world.files.tree;
    EXPECT_TRUE(rename(world, 0, true));
    world.settings.setList("Accounts", {"A"});
    EXPECT_TRUE(rename(world, 1, std::string{"C"}));
    EXPECT_EQ(world.files.tree, before);
    EXPECT_THAT(world.log.lines, ElementsAre("Error with tableView type pass!"));
}

TEST(Rename, IsDroppedWhenTheWindowCloses) {
    World world{{"A", "B"}};
    opened(world).table().beginEditing(0);
    world.window().close();
    EXPECT_FALSE(world.table().commit(std::string{"C"}));
    EXPECT_THAT(world.accounts(), ElementsAre("A", "B"));
}

// Selects the row and asks for its deletion.
World& askToDelete(World& world, std::size_t row) {
    opened(world).table().select(row);
    world.press("removeAccount:");
    return world;
}

const std::string backupOfB = support + "/OldData/B/20110305-09.07.3";

TEST(RemoveAccount, RefusesTheLastOneBeforeTheCurrentOne) {
    struct Case {
        Texts accounts;
        const char* message;
        const char* informative;
    };
    for (const Case& c :
         {Case{{"A"}, "You must have at least one account!", "Add another account to enable deleting this one..."},
          Case{{"A", "B"},
               "You can't delete the currently active account!",
               "Change to another user then try again..."}}) {
        World world{c.accounts};
        askToDelete(world, 0);
        ASSERT_TRUE(world.sheet());
        EXPECT_EQ(world.sheet()->messageText, c.message);
        EXPECT_EQ(world.sheet()->informativeText, c.informative);
        EXPECT_EQ(world.sheet()->buttons.size(), 1u);
        world.window().press("OK");
        EXPECT_EQ(world.accounts(), c.accounts);
    }
    World world{{"A", "B"}};
    opened(world).press("removeAccount:"); // nothing selected
    EXPECT_FALSE(world.sheet());
}

TEST(RemoveAccount, AsksAndBacksUpTheWholeFolder) {
    World world{{"A", "B", "C"}};
    world.files.addFile(support + "/B/Mail/inbox", "B's inbox");
    world.files.addFile(support + "/B/.hidden", "hidden");
    askToDelete(world, 1);
    ASSERT_TRUE(world.sheet());
    EXPECT_EQ(world.sheet()->messageText, "Are you sure you want to delete account B and all of it's files & data?");
    EXPECT_EQ(world.sheet()->informativeText, "WARNING: Deleted accounts cannot be restored!");
    world.window().press("OK");
    EXPECT_EQ(world.textAt(backupOfB + "/Account/Mail/inbox"), "B's inbox");
    EXPECT_EQ(world.textAt(backupOfB + "/Account/.hidden"), "hidden");
    EXPECT_FALSE(world.files.fileExists(support + "/B"));
    EXPECT_THAT(world.table().texts(), ElementsAre("A", "C"));
    EXPECT_TRUE(world.isSaved());
    EXPECT_THAT(world.log.lines, ElementsAre("The following from the deleted account was backed up to " + backupOfB +
                                             ":(\".hidden\", \"Mail\")"));
    EXPECT_THAT(world.accountRows(), ElementsAre("C", "B", "A [mailbox] !"));
}

TEST(RemoveAccount, AtRowZeroCountsAsAContext) {
    World world{{"A", "B"}};
    world.settings.setText("Current User", "B");
    askToDelete(world, 0).window().press("OK");
    EXPECT_THAT(world.accounts(), ElementsAre("B"));
}

TEST(RemoveAccount, CancelledChangesNothing) {
    for (const bool escapes : {false, true}) {
        World world{{"A", "B"}};
        askToDelete(world, 1);
        escapes ? world.window().pressEscape() : world.window().press("Cancel");
        EXPECT_THAT(world.accounts(), ElementsAre("A", "B"));
        EXPECT_THAT(world.log.lines, IsEmpty());
    }
}

TEST(RemoveAccount, WithoutAContextIsLoggedWhateverTheAnswer) {
    World world{{"A", "B"}};
    opened(world);
    for (const int code : {1, 0, -1})
        world.controller->sheetDidEndShouldDeleteAccount_returnCode_contextInfo(code, std::nullopt);
    EXPECT_EQ(world.log.lines, Texts(3, "Error deleting account - no context info passed!"));
}

TEST(RemoveAccount, RemovesAnEmptyFolderWithoutABackup) {
    World world{{"A", "B"}};
    askToDelete(world, 1).window().press("OK");
    EXPECT_FALSE(world.files.fileExists(support + "/B"));
    EXPECT_FALSE(world.files.fileExists(support + "/OldData"));
    EXPECT_THAT(world.log.lines, ElementsAre("Nothing was found at the path: ()\nNo backup will be performed!"));
    EXPECT_THAT(world.accounts(), ElementsAre("A"));
}

TEST(RemoveAccount, GoesByTheRowWhenTheListHasChangedUnderTheSheet) {
    World world{{"A", "B", "C"}};
    askToDelete(world, 1);
    world.settings.setList("Accounts", {"A", "C"});
    world.window().press("OK");
    EXPECT_THAT(world.accounts(), ElementsAre("A"));
    EXPECT_FALSE(world.files.fileExists(support + "/C"));

    World shorter{{"A", "B", "C"}};
    askToDelete(shorter, 2);
    shorter.settings.setList("Accounts", {"A", "B"});
    shorter.window().press("OK");
    EXPECT_THAT(shorter.accounts(), ElementsAre("A", "B"));
    EXPECT_THAT(shorter.log.lines, IsEmpty());
}

TEST(RemoveAccount, GoesAheadWithAnAccountThatBecameTheCurrentOne) {
    World world{{"A", "B"}};
    askToDelete(world, 1);
    world.menu.choose("B");
    world.window().press("OK");
    EXPECT_THAT(world.accounts(), ElementsAre("A"));
    EXPECT_EQ(world.currentUser(), "B");
}

TEST(RemoveAccount, KeepsTheAccountAfterAnyFailure) {
    struct Case {
        const char* lastLine;
        std::size_t lines;
        void (*spoil)(World&);
    };
    const Case cases[] = {
        {"There was an error checking path contents at /home/user/Library/Application Support/Letterloft/B: Can't list",
         1, [](World& world) { world.files.erase(support + "/B"); }},
        {"There was an error deleting a folder for user B:\nCan't remove", 2,
         [](World& world) {
             world.files.erase(support + "/B/Mail");
             world.files.failingOperation = world.files.operations + 2;
         }},
        {"There was an error creating a folder for backup: Can't make", 2,
         [](World& world) { world.files.failingPaths = {backupOfB}; }},
        {"There was an error moving folders for backup: Can't move", 2,
         [](World& world) { world.files.addFolder(backupOfB + "/Account"); }},
    };
    for (const Case& c : cases) {
        World world{{"A", "B"}};
        world.files.addFile(support + "/B/Mail", "B's mail");
        askToDelete(world, 1);
        c.spoil(world);
        const auto contents = world.files.allContents();
        const int reloads = world.table().reloads;
        world.window().press("OK");
        ASSERT_EQ(world.log.lines.size(), c.lines);
        EXPECT_THAT(world.log.lines.back(), StartsWith(c.lastLine));
        EXPECT_THAT(world.accounts(), ElementsAre("A", "B"));
        EXPECT_EQ(world.files.allContents(), contents);
        EXPECT_EQ(world.settings.synchronizations, 0);
        EXPECT_EQ(world.table().reloads, reloads);
    }
}

TEST(TheStamp, PadsAllButYearAndSecond) {
    const std::pair<Calendar::Components, const char*> cases[] = {
        {{2011, 3, 5, 9, 7, 3}, "20110305-09.07.3"},
        {{2011, 3, 5, 9, 7, 13}, "20110305-09.07.13"},
        {{2011, 12, 31, 23, 59, 59}, "20111231-23.59.59"},
        {{23, 1, 1, 0, 0, 0}, "230101-00.00.0"},
    };
    for (const auto& [now, stamp] : cases) {
        World world{{"A", "B"}};
        world.calendar.now = now;
        world.files.addFile(support + "/B/Mail", "B's mail");
        askToDelete(world, 1).window().press("OK");
        EXPECT_EQ(world.textAt(support + "/OldData/B/" + stamp + "/Account/Mail"), "B's mail");
    }
}

} // namespace
} // namespace letterloft
