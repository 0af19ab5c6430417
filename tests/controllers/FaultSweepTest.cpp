#include "tests/controllers/World.h"

#include <functional>

namespace letterloft {
namespace {

const std::string mail = "/Applications/Mail.app";

// Three accounts with data everywhere, A current, the manager open with "A", "B", "C" and mail's items shown.
void fill(World& world) {
    world.manage(mail, {mailFolder, home + "/.mailrc", "/disk/pictures"});
    world.manage("/draw", {"/sketches"});
    int next = 0;
    for (const char* name : {"Mail/inbox", "Mail/sent", ".mailrc", "pictures/1", "sketches"}) {
        const std::string number = std::to_string(++next);
        for (const char* account : {"B", "C"})
            world.files.addFile(World::folderOf(account) + "/" + name, account + number);
    }
    world.files.addFile(mailFolder + "/inbox", "A1");
    world.files.addFile(home + "/.mailrc", "A3");
    world.files.addFile("/disk/pictures/1", "A4");
    world.files.addFile("/sketches", "A5");
    world.start().openManager().outline().expand(0);
    world.files.operations = 0;
}

struct Step {
    const char* name;
    std::function<void(World&)> run;
    // What the settings have to be, whatever failed.
    std::function<void(World&, bool failed)> check;
};

void answerOk(World& world, const char* operation) {
    world.press(operation);
    world.window().press("OK");
}

const Step steps[] = {
    {"switch", [](World& world) { world.menu.choose("B"); },
     [](World& world, bool) {
         EXPECT_EQ(world.currentUser(), "B");
         EXPECT_TRUE(world.isSaved());
     }},
    {"there and back",
     [](World& world) {
         world.menu.choose("B");
         world.menu.choose("A");
     },
     [](World& world, bool) { EXPECT_EQ(world.currentUser(), "A"); }},
    {"rename",
     [](World& world) {
         world.table().beginEditing(0);
         world.table().commit(std::string{"Z"});
     },
     [](World& world, bool failed) {
         EXPECT_EQ(world.accounts().front(), failed ? "A" : "Z");
         EXPECT_EQ(world.currentUser(), failed ? "A" : "Z");
     }},
    {"deletion",
     [](World& world) {
         world.table().select(1);
         answerOk(world, "removeAccount:");
     },
     [](World& world, bool failed) { EXPECT_EQ(world.accounts().size(), failed ? 3u : 2u); }},
    {"removal of an application",
     [](World& world) {
         world.outline().select(0);
         answerOk(world, "removeAppOrFile:");
     },
     [](World& world, bool failed) {
         EXPECT_FALSE(world.settings.hasValue(mail));
         EXPECT_EQ(world.settings.synchronizations, failed ? 0 : 1);
     }},
    {"removal of an item",
     [](World& world) {
         world.outline().select(1);
         answerOk(world, "removeAppOrFile:");
     },
     [](World& world, bool failed) {
         EXPECT_EQ(world.settings.list(mail).size(), 2u);
         EXPECT_EQ(world.settings.synchronizations, failed ? 0 : 1);
     }},
    {"addition of an account", [](World& world) { world.press("insertAccount:"); },
     [](World& world, bool failed) { EXPECT_EQ(world.accounts().size(), failed ? 3u : 4u); }},
};

TEST(NothingIsLost, WhicheverFileOperationFails) {
    for (const Step& step : steps) {
        int operations = 1; // known after the first run, in which none fails
        for (int failing = 0; failing <= operations; ++failing) {
            SCOPED_TRACE(std::string{step.name} + ", operation " + std::to_string(failing));
            World world{{"A", "B", "C"}};
            fill(world);
            const auto before = world.files.allContents();
            world.files.failingOperation = failing;
            step.run(world);
            EXPECT_EQ(world.files.allContents(), before);
            EXPECT_EQ(world.files.operations < failing, false);
            step.check(world, failing != 0);
            if (failing == 0) operations = world.files.operations;
            // Whoever has a folder is still an account after the next start.
            const Texts accounts = world.accounts();
            world.menuLet.populateMenuWithAccounts();
            EXPECT_EQ(world.accounts(), accounts);
        }
        EXPECT_GE(operations, 1);
    }
}

TEST(TheLiveItems, StayWhereTheyAreWhicheverOperationOfAResetFails) {
    for (int failing = 0; failing <= 2; ++failing) {
        World world{{"A", "B", "C"}};
        fill(world);
        world.files.failingOperation = failing;
        answerOk(world, "resetAllData:");
        EXPECT_EQ(world.textAt(mailFolder + "/inbox") + world.textAt(home + "/.mailrc") + world.textAt("/sketches"),
                  "A1A3A5");
        EXPECT_EQ(world.accounts().size(), failing == 1 ? 3u : 1u);
        EXPECT_EQ(world.files.operations, failing == 1 ? 1 : 2);
    }
}

} // namespace
} // namespace letterloft
