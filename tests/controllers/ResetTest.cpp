#include "tests/controllers/World.h"

namespace letterloft {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

const std::string mail = "/Applications/Mail.app";

// "Work" is current; mail is managed with an item of its own, beside another application.
World& withData(World& world) {
    world.manage(mail, {"/other"});
    world.manage("/draw", {"/sketches"});
    world.settings.setList("Apps", {mail, "/draw", "/without a list"});
    world.settings.setList("/unlisted", {"/kept"});
    world.settings.setList("AutostartApps", {"/kept"});
    world.files.addFile(support + "/Home/other", "parked");
    world.files.addFile(support + "/OldData/Gone/20110101-01.01.1/Account/other", "backup");
    world.files.addFile("/other", "live");
    return world.start().openManager();
}

TEST(Reset, RunsWhicheverButtonWasPressed) {
    for (const char* button : {"OK", "Cancel"}) {
        World world{{"Work", "Home"}};
        withData(world).press("resetAllData:");
        EXPECT_EQ(world.window().question(),
                  "Are you sure you want to reset all your data?|WARNING: Data for all accounts other "
                  "than the current one will be deleted!|OK|Cancel");
        world.window().press(button);
        EXPECT_THAT(world.accounts(), ElementsAre("Default User"));
        EXPECT_EQ(world.currentUser(), "Default User");
        EXPECT_THAT(world.settings.list("Apps"), ElementsAre(mail));
        EXPECT_EQ(world.settings.list(mail), keys::mailItems(home));
        EXPECT_THAT(world.settings.list("Autostart Apps"), ElementsAre(mail));
        EXPECT_THAT(world.settings.list("AutostartApps"), ElementsAre("/kept"));
        EXPECT_FALSE(world.settings.hasValue("/draw"));
        EXPECT_TRUE(world.settings.hasValue("/unlisted"));
        EXPECT_TRUE(world.isSaved());
        EXPECT_THAT(world.files.allContents(), ElementsAre("live"));
        EXPECT_TRUE(world.files.folderExists(support + "/Default User"));
        EXPECT_THAT(world.table().texts(), ElementsAre("Default User"));
        EXPECT_THAT(world.outline().rows, ElementsAre(Texts{mail}));
        EXPECT_EQ(world.outline().valueAt(0, world.outline().second), CellValue{true});
        EXPECT_THAT(world.log.lines, ElementsAre("Deleting " + support));
        EXPECT_THAT(world.accountRows(), ElementsAre("Home", "Work [mailbox] !"));
        EXPECT_TRUE(world.menu.choose("Home"));
        EXPECT_EQ(world.log.lines.back(), "Error!  Home is not a valid user!");
    }
}

TEST(Reset, DoesNotRunWithoutAnAnswer) {
    World world{{"Work", "Home"}};
    withData(world).press("resetAllData:");
    const auto before = std::pair{world.files.tree, world.settings.values};
    world.window().close();
    EXPECT_EQ(std::pair(world.files.tree, world.settings.values), before);
}

TEST(Reset, ChangesNoSettingWhenTheFolderStays) {
    for (const bool isMissing : {true, false}) {
        World world{{"Work", "Home"}};
        withData(world);
        if (isMissing) world.files.erase(support);
        world.files.failingPaths = {support + "/Home/other"};
        const auto before = world.settings.values;
        world.press("resetAllData:");
        world.window().press("OK");
        EXPECT_EQ(world.settings.values, before);
        EXPECT_EQ(world.settings.synchronizations, 0);
        EXPECT_EQ(world.files.fileExists(support + "/Home/other"), !isMissing);
        EXPECT_THAT(world.log.lines,
                    ElementsAre("Deleting " + support, StartsWith("There was an error deleting the support folder at " +
                                                                  support + " - Can't")));
    }
}

TEST(Reset, CarriesOnWithoutTheNewFolder) {
    World world{{"Work", "Home"}};
    withData(world);
    world.files.failingOperation = world.files.operations + 2;
    world.press("resetAllData:");
    world.window().press("OK");
    EXPECT_THAT(world.log.lines.back(),
                StartsWith("There was an error creating a folder for the Default user:\nCan't make"));
    EXPECT_THAT(world.accounts(), ElementsAre("Default User"));
    EXPECT_TRUE(world.isSaved());
}

} // namespace
} // namespace letterloft
