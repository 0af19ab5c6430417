#include "tests/controllers/World.h"

namespace letterloft {
namespace {

using testing::ElementsAre;

TEST(TheStatusItem, IsSetUpOnceWithTheMenuAboveTheFixedItems) {
    World world;
    world.start();
    EXPECT_THAT(world.menu.shown(),
                ElementsAre("Default User [mailbox] !", "-", "Manage Accounts...", "Letterloft Help", "Quit"));
    ASSERT_EQ(world.statusBar.items.size(), 1u);
    const FakeStatusItem& item = *world.statusBar.items.front();
    EXPECT_TRUE(item.highlights && item.enabled && item.menu == &world.menu);
    EXPECT_EQ(item.length, -1);
    EXPECT_EQ(item.toolTip + "|" + item.image + "|" + item.alternateImage,
              "Letterloft Menu|letter_icon|letter_alternate_icon");
}

TEST(ManageAccounts, LoadsTheWindowOnceAndShowsItAgain) {
    World world{{"A", "B"}};
    world.start().openManager().openManager();
    EXPECT_EQ(world.interfaceFiles.loads, 1);
    EXPECT_EQ(world.window().timesOrderedFront, 2);
    EXPECT_EQ(world.application.activations, 2);
}

TEST(ClosingAnyWindow, TellsTheMenuOnceForEachThatWasVisible) {
    World world{{"A"}};
    world.start().openManager().window().close();
    world.window().close();
    EXPECT_EQ(world.notifications.countOf("accountsDidChange"), 1u);
    FakeWindow help{world.notifications};
    help.makeKeyAndOrderFront();
    world.settings.setList("Accounts", {"A", "B"});
    world.files.addFolder(World::folderOf("B"));
    help.close();
    EXPECT_EQ(world.notifications.countOf("accountsDidChange"), 2u);
    EXPECT_EQ(world.menu.shown().front(), "B");
}

} // namespace
} // namespace letterloft
