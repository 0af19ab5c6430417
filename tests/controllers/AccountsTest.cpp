#include "tests/controllers/World.h"

namespace letterloft {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

World& opened(World& world) { return world.start().openManager(); }

TEST(InsertAccount, WithoutAFolderChangesNothing) {
    World world{{"Work"}};
    opened(world);
    world.files.failingOperation = world.files.operations + 1;
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

TEST(Rename, LeavesTheCurrentUserAndWhatIsNoTextOrARowThatIsGone) {
    World world{{"A", "B"}};
    opened(world);
    const int reloads = world.table().reloads;
    EXPECT_TRUE(rename(world, 1, std::string{"b %@"}));
    EXPECT_THAT(world.accounts(), ElementsAre("A", "b %@"));
    EXPECT_TRUE(world.files.folderExists(support + "/b %@") && world.isSaved() && world.currentUser() == "A");
    EXPECT_EQ(world.table().reloads, reloads);
    const auto before = world.files.tree;
    EXPECT_TRUE(rename(world, 0, true));
    world.settings.setList("Accounts", {"A"});
    EXPECT_TRUE(rename(world, 1, std::string{"C"}));
    EXPECT_EQ(world.files.tree, before);
    EXPECT_THAT(world.log.lines, ElementsAre("Error with tableView type pass!"));
}

TEST(Rename, RefusesNamesInTheListAndLeavesTheRestToTheMove) {
    for (const std::string& name : Texts{"A", "B", "Left over", "", ".", "..", "a/b", "../Letterloft", "/etc/x"}) {
        World world{{"A", "B"}};
        world.files.addFile(support + "/Left over/Mail", "x");
        opened(world);
        const auto before = std::pair{world.files.tree, world.settings.values};
        EXPECT_TRUE(rename(world, 0, name));
        EXPECT_EQ(std::pair(world.files.tree, world.settings.values), before) << name;
        const bool isTaken = name == "A" || name == "B";
        EXPECT_EQ(world.window().question(),
                  !isTaken ? "(none)"
                           : "ERROR! Account name " + name +
                                 " already exists!!|You can not have 2 accounts with the same name.|OK");
        const std::string said = "There was an error moving the folder for user A (renamed " + name + "):\n";
        const Texts& lines = world.log.lines;
        EXPECT_TRUE(isTaken ? lines.empty() : lines.size() == 1 && lines[0].find(said) == 0) << name;
    }
}

// Selects the row and asks for its deletion.
World& askToDelete(World& world, std::size_t row) {
    if (!world.controller) opened(world);
    world.table().select(row);
    world.press("removeAccount:");
    return world;
}

const std::string backupOfB = support + "/OldData/B/20110305-09.07.3";

TEST(RemoveAccount, RefusesTheLastOneBeforeTheCurrentOne) {
    World world{{"A", "B"}};
    opened(world).press("removeAccount:");
    EXPECT_EQ(world.window().question(), "(none)"); // nothing was selected
    EXPECT_EQ(askToDelete(world, 0).window().question(),
              "You can't delete the currently active account!|Change to another user then try again...|OK");
    World single{{"A"}};
    EXPECT_EQ(askToDelete(single, 0).window().question(),
              "You must have at least one account!|Add another account to enable deleting this one...|OK");
}

TEST(RemoveAccount, AsksAndNamesWhatItBackedUp) {
    World world{{"A", "B", "C"}};
    world.files.addFile(support + "/B/Mail/inbox", "B's inbox");
    world.files.addFile(support + "/B/.hidden", "hidden");
    EXPECT_EQ(askToDelete(world, 1).window().question(),
              "Are you sure you want to delete account B and all of it's files & data?|"
              "WARNING: Deleted accounts cannot be restored!|OK|Cancel");
    world.window().press("OK");
    EXPECT_EQ(world.textAt(backupOfB + "/Account/.hidden"), "hidden");
    EXPECT_THAT(world.table().texts(), ElementsAre("A", "C"));
    EXPECT_THAT(world.log.lines, ElementsAre("The following from the deleted account was backed up to " + backupOfB +
                                             ":(\".hidden\", \"Mail\")"));
}

TEST(RemoveAccount, TakesRowZeroForAContextButNotNone) {
    World world{{"A", "B"}};
    world.settings.setText("Current User", "B");
    askToDelete(world, 0);
    world.controller->sheetDidEndShouldDeleteAccount_returnCode_contextInfo(1, std::nullopt);
    EXPECT_THAT(world.accounts(), ElementsAre("A", "B"));
    world.window().press("OK");
    EXPECT_THAT(world.accounts(), ElementsAre("B"));
    EXPECT_FALSE(world.files.fileExists(support + "/A") || world.files.fileExists(support + "/OldData"));
    EXPECT_THAT(world.log.lines, ElementsAre("Error deleting account - no context info passed!",
                                             "Nothing was found at the path: ()\nNo backup will be performed!"));
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
    EXPECT_TRUE(shorter.log.lines.empty());
}

TEST(RemoveAccount, KeepsTheAccountAfterAnyFailure) {
    const std::tuple<int, bool, std::string> cases[] = {
        {1, true, "There was an error checking path contents at " + support + "/B: Can't list"},
        {2, false, "There was an error deleting a folder for user B:\nCan't remove"},
        {2, true, "There was an error creating a folder for backup: Can't make"},
        {3, true, "There was an error moving folders for backup: Can't move"}};
    for (const auto& [operation, hasMail, lastLine] : cases) {
        World world{{"A", "B"}};
        if (hasMail) world.files.addFile(support + "/B/Mail", "B's mail");
        askToDelete(world, 1);
        world.files.failingOperation = world.files.operations + operation;
        const auto contents = world.files.allContents();
        const int reloads = world.table().reloads;
        world.window().press("OK");
        ASSERT_EQ(world.log.lines.size(), operation == 1 ? 1u : 2u);
        EXPECT_THAT(world.log.lines.back(), StartsWith(lastLine));
        EXPECT_THAT(world.accounts(), ElementsAre("A", "B"));
        EXPECT_EQ(world.files.allContents(), contents);
        EXPECT_EQ(world.settings.synchronizations, 0);
        EXPECT_EQ(world.table().reloads, reloads);
    }
}

} // namespace
} // namespace letterloft
