#include "tests/controllers/World.h"

namespace letterloft {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

const std::string mail = "/Applications/Mail.app";
const std::string draw = "/usr/share/applications/draw.desktop";

// Two applications: mail with two items, draw with none. Both closed in the outline.
World& opened(World& world) {
    world.manage(mail, {mailFolder, home + "/.mailrc"});
    world.manage(draw, {});
    return world.start().openManager();
}

bool isTicked(World& world, std::size_t row) {
    return std::get<bool>(world.outline().valueAt(row, world.outline().second));
}

TEST(TheOutline, HangsUnderARowWhatItsTextLists) {
    World world{{"A"}};
    world.settings.setList(mailFolder, {"/deeper"});
    opened(world);
    FakeOutlineView& outline = world.outline();
    EXPECT_THAT(outline.rows, ElementsAre(Texts{mail}, Texts{draw}));
    EXPECT_FALSE(outline.expand(1));
    EXPECT_TRUE(outline.expand(0));
    EXPECT_TRUE(outline.expand(1));
    EXPECT_THAT(outline.rows, ElementsAre(Texts{mail}, Texts{mail, mailFolder}, Texts{mail, mailFolder, "/deeper"},
                                          Texts{mail, home + "/.mailrc"}, Texts{draw}));
    EXPECT_EQ(outline.valueAt(2, outline.first), CellValue{"/deeper"});
    // An application that is its own item hangs nothing, and each of its rows has a tick.
    world.settings.setList("Apps", {"/self"});
    world.settings.setList("/self", {"/self"});
    outline.reloadData();
    EXPECT_TRUE(outline.expand(0) && outline.expand(1) && outline.edit(1, outline.second, true));
    EXPECT_EQ(outline.rows.size(), 3u);
    EXPECT_TRUE(isTicked(world, 0) && isTicked(world, 2));
    world.settings.removeValue("Apps");
    outline.reloadData();
    EXPECT_THAT(outline.rows, IsEmpty());
}

TEST(Cells, GoByColumnAndKindOfRow) {
    World world{{"A", mailFolder}};
    opened(world).outline().expand(0);
    FakeOutlineView& outline = world.outline();
    EXPECT_FALSE(outline.cellAt(0, outline.first)->editable);
    EXPECT_TRUE(outline.cellAt(1, outline.first)->editable); // its text is an account's name
    const std::optional<Cell> box = outline.cellAt(0, outline.second);
    EXPECT_TRUE(box->imagePosition == Cell::ImagePosition::imageOnly && box->title.empty());
    const std::optional<Cell> inert = outline.cellAt(1, outline.second);
    EXPECT_TRUE(inert->kind == Cell::Kind::text && !inert->editable && inert->stringValue.empty());
    EXPECT_EQ(outline.valueAt(1, outline.second), CellValue{});
    FakeTableColumn other{"Column 3", 10};
    EXPECT_FALSE(outline.cellAt(0, other));
    EXPECT_EQ(outline.valueAt(0, other), CellValue{});

    EXPECT_EQ(world.controller->outlineView_objectValueForTableColumn_byItem(outline, nullptr, std::nullopt),
              CellValue{"ERROR - No item found!"});
    EXPECT_FALSE(world.controller->outlineView_dataCellForTableColumn_item(outline, nullptr, mail));
}

TEST(Ticks, AreSavedAtOnceAndUntickedAltogether) {
    World world{{"A"}};
    opened(world);
    FakeOutlineView& outline = world.outline();
    EXPECT_FALSE(isTicked(world, 0));
    for (const std::size_t row : {0u, 1u, 0u}) // appended without a look
        EXPECT_TRUE(outline.edit(row, outline.second, true));
    EXPECT_THAT(world.settings.list("Autostart Apps"), ElementsAre(mail, draw, mail));
    EXPECT_TRUE(world.isSaved() && isTicked(world, 0));
    const int reloads = outline.reloads;
    EXPECT_TRUE(outline.edit(0, outline.second, std::string{"true"}));
    EXPECT_EQ(outline.reloads, reloads);
    EXPECT_TRUE(outline.edit(0, outline.second, false));
    EXPECT_THAT(world.settings.list("Autostart Apps"), ElementsAre(draw));
    EXPECT_EQ(outline.reloads, reloads + 1);
    EXPECT_FALSE(world.settings.hasValue("AutostartApps"));
}

TEST(ColumnOne, GrowsToTheWidestChildAndGoesBackWhenAllAreClosed) {
    World world{{"A"}};
    world.manage("/a", {"/short", std::string(100, 'x')});
    world.manage("/b", {"/short"});
    world.start().openManager();
    FakeOutlineView& outline = world.outline();
    outline.first.setWidth(60);
    EXPECT_TRUE(outline.expand(1));
    EXPECT_EQ(outline.first.width(), 60);
    EXPECT_TRUE(outline.expand(0) && outline.collapse(0));
    EXPECT_EQ(outline.first.width(), 700); // the bare text, without indentation
    EXPECT_TRUE(outline.collapse(1));
    EXPECT_EQ(outline.first.width(), 175);
}

FakeOpenPanel& panelOf(World& world, const std::string& operation) {
    world.press(operation);
    return *world.panels.last.lock();
}

TEST(InsertApp, AddsAnApplicationWithoutItems) {
    World world{{"A"}};
    opened(world);
    FakeOpenPanel& panel = panelOf(world, "insertApp:");
    EXPECT_EQ(panel.prompt + "|" + panel.message + "|" + panel.directory,
              "OK|Select a new app to switch.|/Applications");
    EXPECT_THAT(panel.allowedFileTypes, ElementsAre("app"));
    EXPECT_TRUE(panel.canChooseFiles && !panel.canChooseDirectories);
    world.settings.setList("/new %@", {"stale"});
    panel.choose("/new %@");
    EXPECT_THAT(world.settings.list("Apps"), ElementsAre(mail, draw, "/new %@"));
    EXPECT_TRUE(world.settings.hasValue("/new %@") && world.settings.list("/new %@").empty());
    EXPECT_THAT(world.outline().rows.back(), ElementsAre("/new %@"));
    EXPECT_TRUE(world.isSaved() && world.panels.last.expired());
}

TEST(InsertFile, AddsToTheSelectedApplicationOrToTheOwnerOfTheSelectedItem) {
    World world{{"A"}};
    world.settings.setList("Apps", {"/bare"}); // without a list of items
    world.start().openManager().press("insertFile:");
    EXPECT_EQ(world.window().question(), "Nothing selected!|You must select an app to add a file or folder to...|OK");
    world.window().press("OK");
    world.outline().select(0);
    FakeOpenPanel& panel = panelOf(world, "insertFile:");
    EXPECT_EQ(panel.prompt + "|" + panel.message + "|" + panel.directory, "OK|Select File Or Folder...|" + home);
    EXPECT_TRUE(panel.canChooseFiles && panel.canChooseDirectories && panel.allowedFileTypes.empty());
    panel.choose("/new");
    world.outline().expand(0);
    world.outline().select(1);
    panelOf(world, "insertFile:").choose("/newer");
    EXPECT_THAT(world.settings.list("/bare"), ElementsAre("/new", "/newer"));
    EXPECT_THAT(world.outline().rows, ElementsAre(Texts{"/bare"}, Texts{"/bare", "/new"}, Texts{"/bare", "/newer"}));
    EXPECT_TRUE(world.isSaved());
}

TEST(Adding, CancelledWritesNothing) {
    World world{{"A"}};
    opened(world).outline().select(0);
    const auto before = world.settings.values;
    for (const char* operation : {"insertApp:", "insertFile:"}) {
        panelOf(world, operation).chosen = {"/new"};
        world.window().pressEscape();
        EXPECT_EQ(world.settings.values, before);
        EXPECT_TRUE(world.panels.last.expired());
    }
}

TEST(AlreadyManaged, ClosesTheWindowAndNamesTheLastOwner) {
    World world{{"A"}};
    opened(world);
    world.manage("/last", {mailFolder});
    world.outline().reloadData();
    world.outline().select(1);
    const auto before = world.settings.values;
    std::size_t told = 0;
    for (const auto& [operation, path, notice] :
         {std::tuple{"insertApp:", draw, "We're already managing " + draw + "!||OK"},
          std::tuple{"insertFile:", mailFolder, "/last is already managing " + mailFolder + "!||OK"}}) {
        panelOf(world, operation).choose(path);
        EXPECT_EQ(world.settings.values, before);
        EXPECT_EQ(world.notifications.countOf("accountsDidChange"), ++told);
        EXPECT_EQ(world.window().question(), notice);
        world.window().press("OK");
        EXPECT_FALSE(world.window().isVisible);
        world.openManager();
    }
}

// A is current; B and C have mail's folder parked, C its settings too.
World& withParkedCopies(World& world) {
    world.files.addFile(mailFolder, "A's mail");
    world.files.addFile(support + "/A/Mail", "strange, but A's own affair");
    world.files.addFile(support + "/B/Mail", "B's mail");
    world.files.addFile(support + "/C/Mail", "C's mail");
    world.files.addFile(support + "/C/.mailrc", "C's settings");
    return opened(world);
}

World& askToRemove(World& world, std::size_t row) {
    world.outline().select(row);
    world.press("removeAppOrFile:");
    return world;
}

std::string backupOf(const std::string& account, const std::string& stamp) {
    return support + "/OldData/" + account + "/20110305-09.07." + stamp;
}

TEST(RemoveAppOrFile, AsksForWhatTheSettingsSayItIs) {
    World world{{"A"}};
    opened(world).press("removeAppOrFile:");
    EXPECT_FALSE(world.sheet()); // nothing was selected
    world.settings.removeValue(draw);
    world.settings.setList(home + "/.mailrc", {}); // whatever stands under its text makes it one
    world.outline().expand(0);
    const std::pair<std::size_t, std::string> cases[] = {{0, "app " + mail},
                                                         {1, "file/directory " + mailFolder},
                                                         {2, "app " + home + "/.mailrc"},
                                                         {3, "file/directory " + draw}};
    const std::string note = "?|NOTE: Files for accounts other than the current user are located in your "
                             "~/Library/Application Support/Letterloft directory!|OK|Cancel";
    const auto before = world.settings.values;
    for (const auto& [row, what] : cases) {
        EXPECT_EQ(askToRemove(world, row).window().question(),
                  "Are you sure you want to stop managing the " + what + note);
        world.window().press("Cancel");
    }
    // An application without a list of items has no owner whose list it could leave.
    const int reloads = world.outline().reloads;
    askToRemove(world, 3).window().press("OK");
    EXPECT_EQ(world.settings.values, before);
    EXPECT_EQ(world.outline().reloads, reloads);
}

TEST(RemovingAnApplication, BacksUpEveryOtherAccountWithAStampForEachItem) {
    World world{{"A", "B", "C", "A", "B"}};
    world.settings.setList("Autostart Apps", {mail, draw, mail});
    world.calendar.secondsPerLook = 7;
    withParkedCopies(world);
    askToRemove(world, 0).window().press("OK");
    EXPECT_THAT(world.settings.list("Autostart Apps"), ElementsAre(draw));
    EXPECT_EQ(world.textAt(backupOf("B", "3") + "/Mail"), "B's mail");
    EXPECT_EQ(world.textAt(backupOf("C", "10") + "/Mail"), "C's mail");
    EXPECT_EQ(world.textAt(backupOf("C", "17") + "/.mailrc"), "C's settings");
    EXPECT_EQ(world.textAt(support + "/A/Mail"), "strange, but A's own affair");
    EXPECT_THAT(world.outline().rows, ElementsAre(Texts{draw}));
    EXPECT_TRUE(world.isSaved() && world.log.lines.empty());
}

TEST(RemovingAnApplication, WritesNoAutostartListItDoesNotStandIn) {
    World world{{"A"}};
    askToRemove(opened(world), 0).window().press("OK");
    EXPECT_FALSE(world.settings.hasValue("Autostart Apps") || world.files.fileExists(support + "/OldData"));
}

TEST(Removing, StopsAtTheFirstFailureWithoutSavingOrReloading) {
    const char* const lines[] = {"There was an error creating a folder for backup: Can't make",
                                 "There was an error moving files/folders for backup: Can't move"};
    for (const std::size_t row : {0u, 1u}) {
        for (const int failing : {3, 4}) { // counted from the answer
            World world{{"A", "B", "C"}};
            withParkedCopies(world).outline().expand(0);
            const auto contents = world.files.allContents();
            askToRemove(world, row);
            world.files.failingOperation = world.files.operations + failing;
            const int reloads = world.outline().reloads + world.table().reloads;
            world.window().press("OK");
            EXPECT_THAT(world.log.lines, ElementsAre(StartsWith(lines[failing - 3])));
            EXPECT_EQ(world.textAt(backupOf("B", "3") + "/Mail"), "B's mail");
            EXPECT_EQ(world.textAt(support + "/C/Mail"), "C's mail");
            EXPECT_EQ(world.files.allContents(), contents);
            EXPECT_EQ(world.settings.hasValue(mail), row != 0);
            EXPECT_EQ(world.settings.synchronizations, 0);
            EXPECT_EQ(world.outline().reloads + world.table().reloads, reloads);
        }
    }
}

} // namespace
} // namespace letterloft
