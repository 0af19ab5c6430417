#include "tests/controllers/World.h"

namespace letterloft {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(TheStatusItem, IsSetUpOnceWithTheMenuAboveTheFixedItems) {
    World world;
    world.start();
    EXPECT_THAT(world.menu.shown(),
                ElementsAre("Default User [mailbox] !", "-", "Manage Accounts...", "Letterloft Help", "Quit"));
    ASSERT_EQ(world.statusBar.items.size(), 1u);
    const FakeStatusBar::Shown& item = *world.statusBar.items.front();
    EXPECT_TRUE(item.highlights && item.enabled && item.menu == &world.menu);
    EXPECT_EQ(item.length, -1);
    EXPECT_EQ(item.toolTip + "|" + item.image + "|" + item.alternateImage,
              "Letterloft Menu|letter_icon|letter_alternate_icon");
}

TEST(FirstStart, IsToldByAppsAloneWhateverItHolds) {
    for (const FakeSettingsStore::Value& present :
         {FakeSettingsStore::Value{std::vector<FakeSettingsStore::Element>{}}, FakeSettingsStore::Value{}}) {
        World world;
        world.settings.values["Apps"] = present;
        world.start();
        EXPECT_EQ(world.settings.values["Apps"], present);
        EXPECT_FALSE(world.settings.hasValue("AutostartApps"));
    }
}

TEST(AccountItems, StandInReverseWithTheCurrentOneInert) {
    World world{{"B", "A", "C"}};
    world.settings.setList("Accounts", {"A", "B", "C"});
    world.start();
    EXPECT_THAT(world.accountRows(), ElementsAre("C", "B [mailbox] !", "A"));
    EXPECT_FALSE(world.menu.choose("B"));
}

TEST(Pruning, ShowsWhatItDropsOnceMore) {
    World world{{"A", "B", "C", "D"}};
    world.files.erase(support + "/A");
    world.files.erase(support + "/D");
    world.files.addFile(support + "/D", "a file is no folder");
    world.start();
    EXPECT_THAT(world.accounts(), ElementsAre("B", "C"));
    // D, the last entry when A went, was dropped in its turn.
    EXPECT_EQ(world.currentUser(), "C");
    EXPECT_THAT(world.accountRows(), ElementsAre("D", "C [mailbox] !", "B", "A"));
    EXPECT_EQ(world.settings.synchronizations, 0);
    world.menuLet.populateMenuWithAccounts();
    EXPECT_THAT(world.accountRows(), ElementsAre("C [mailbox] !", "B"));
    EXPECT_THAT(world.log.lines, IsEmpty());
}

TEST(Pruning, SparesWhatCantBeLookedAt) {
    World world{{"A", "B"}};
    world.files.unreachablePaths = {support};
    world.start();
    EXPECT_THAT(world.accounts(), ElementsAre("A", "B"));
    EXPECT_EQ(world.currentUser(), "A");
}

TEST(ManageAccounts, LoadsTheWindowOnceAndShowsItAgain) {
    World world{{"A", "B"}};
    world.start().openManager().openManager();
    EXPECT_EQ(world.interfaceFiles.loads, 1);
    EXPECT_EQ(world.window().timesOrderedFront, 2);
    EXPECT_EQ(world.application.activations, 2);
}

TEST(ClosingAnyWindow, BringsTheMenuUpToDate) {
    World world{{"A"}};
    world.start().openManager();
    world.press("insertAccount:");
    EXPECT_THAT(world.accountRows(), ElementsAre("A [mailbox] !"));
    world.window().close();
    EXPECT_THAT(world.accountRows(), ElementsAre("Default User", "A [mailbox] !"));
    world.window().close(); // hidden already: not told
    EXPECT_EQ(world.notifications.countOf("accountsDidChange"), 1u);
    FakeWindow help{world.notifications};
    help.makeKeyAndOrderFront();
    help.close();
    EXPECT_EQ(world.notifications.countOf("accountsDidChange"), 2u);
}

} // namespace
} // namespace letterloft
