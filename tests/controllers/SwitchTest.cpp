#include "tests/controllers/World.h"

namespace letterloft {
namespace {

using testing::ElementsAre;

const std::string mail = "/Applications/Mail.app";
const std::string draw = "/usr/share/applications/draw.desktop";

// A is current with live mail; B has mail parked. What becomes of a switch that nothing disturbs is seen with the real
// program.
World& withMail(World& world) {
    world.manage(mail, {mailFolder, home + "/.mailrc"});
    world.files.addFile(mailFolder + "/inbox", "A's inbox");
    world.files.addFile(home + "/.mailrc", "A's settings");
    world.files.addFile(support + "/B/Mail/inbox", "B's inbox");
    return world.start();
}

TEST(Switch, RefusesNamesThatAreNoAccounts) {
    struct Case {
        Texts accounts;
        const char* current;
        Texts refused;
    };
    for (const Case& c : {Case{{"A", "C"}, "A", {"B"}}, Case{{"B"}, "A", {"A"}}, Case{{}, "A", {"A", "B"}},
                          Case{{"a", "b"}, "A", {"A", "B"}}, Case{{"B"}, nullptr, {"(null)"}}}) {
        World world{{"A", "B"}};
        withMail(world);
        world.settings.setList("Accounts", c.accounts);
        c.current ? world.settings.setText("Current User", c.current) : world.settings.removeValue("Current User");
        const auto before = std::pair{world.files.tree, world.settings.values};
        ASSERT_TRUE(world.menu.choose("B"));
        Texts lines;
        for (const std::string& name : c.refused)
            lines.push_back("Error!  " + name + " is not a valid user!");
        EXPECT_EQ(world.log.lines, lines);
        EXPECT_EQ(std::pair(world.files.tree, world.settings.values), before);
        EXPECT_EQ(world.running.looks, 0);
    }
}

TEST(Switch, RefusesASenderThatIsNoMenuItem) {
    World world{{"A", "B"}};
    withMail(world);
    FakeControl button;
    world.menuLet.switchAccounts(&button);
    world.menuLet.switchAccounts(nullptr);
    EXPECT_THAT(world.log.lines, ElementsAre("ERROR! Sender button  is not an NSMenuItem!",
                                             "ERROR! Sender (null)  is not an NSMenuItem!"));
    EXPECT_EQ(world.currentUser(), "A");
}

TEST(Quitting, WaitsWithoutLimitAndMovesNothingMeanwhile) {
    World world{{"A", "B"}};
    withMail(world);
    const auto instance = world.running.start(mail);
    instance->refuses = true;
    for (int slice = 0; slice < 500; ++slice)
        world.runLoop.events.push_back([&] { EXPECT_EQ(world.files.operations, 0); });
    world.runLoop.events.push_back([&] { instance->hasEnded = true; });
    world.menu.choose("B");
    EXPECT_EQ(world.runLoop.slices, 501);
    EXPECT_EQ(world.textAt(mailFolder + "/inbox"), "B's inbox");
}

TEST(Quitting, GoesOnWhenNothingCanBeWaitedFor) {
    World world{{"A", "B"}};
    withMail(world);
    world.running.start(mail)->refuses = true;
    world.runLoop.hasSources = false;
    world.menu.choose("B");
    EXPECT_EQ(world.currentUser(), "B");
}

// What happens nested in the wait for mail, which ends after it.
void chooseBWith(World& world, const std::function<void()>& nested) {
    world.runLoop.events.push_back(nested);
    world.running.start(mail);
    ASSERT_TRUE(world.menu.choose("B"));
}

TEST(NestedInTheWait, ListsOfItemsAreReadAnewButNotApps) {
    World world{{"A", "B"}};
    withMail(world);
    world.files.addFile("/late", "late");
    world.files.addFile("/never", "never");
    chooseBWith(world, [&] {
        world.settings.setList(mail, {"/late"});
        world.manage(draw, {"/never"});
        world.menu.items[0]->text = "another title";
    });
    EXPECT_EQ(world.currentUser(), "B"); // the title was taken before the wait
    EXPECT_EQ(world.textAt(support + "/A/late"), "late");
    EXPECT_EQ(world.textAt("/never"), "never");
    EXPECT_EQ(world.textAt(mailFolder + "/inbox"), "A's inbox");
}

TEST(NestedInTheWait, TheChosenAccountMayBeDeletedAndItsItemGo) {
    World world{{"A", "B", "C"}};
    withMail(world);
    world.openManager();
    chooseBWith(world, [&] {
        world.table().select(1);
        world.press("removeAccount:");
        world.window().press("OK");
        world.window().close(); // takes the item whose action is running out of the menu
    });
    EXPECT_THAT(world.accounts(), ElementsAre("A", "C"));
    EXPECT_EQ(world.textAt(support + "/OldData/B/20110305-09.07.3/Account/Mail/inbox"), "B's inbox");
    EXPECT_EQ(world.textAt(support + "/A/Mail/inbox"), "A's inbox");
    EXPECT_EQ(world.currentUser(), "B");
}

TEST(NestedInTheWait, ARenamedCurrentAccountStopsItsItemsFromMoving) {
    World world{{"A", "B"}};
    withMail(world);
    world.openManager();
    chooseBWith(world, [&] {
        world.table().beginEditing(0);
        EXPECT_TRUE(world.table().commit(std::string{"Z"}));
    });
    EXPECT_EQ(world.textAt(mailFolder + "/inbox"), "A's inbox"); // the folder A is no longer there to take it
    EXPECT_EQ(world.textAt(support + "/B/Mail/inbox"), "B's inbox");
    EXPECT_EQ(world.currentUser(), "B");
}

} // namespace
} // namespace letterloft
