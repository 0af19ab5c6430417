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
    world.files.addFile(support + "/Home/other", "parked");
    return world.start().openManager();
}

TEST(Reset, ChangesNoSettingWhenTheFolderStays) {
    World world{{"Work", "Home"}};
    withData(world);
    const auto before = world.settings.values;
    world.press("resetAllData:");
    EXPECT_EQ(world.window().question(),
              "Are you sure you want to reset all your data?|WARNING: Data for all accounts other "
              "than the current one will be deleted!|OK|Cancel");
    world.files.failingOperation = world.files.operations + 1;
    world.window().press("OK");
    EXPECT_EQ(world.settings.values, before);
    EXPECT_EQ(world.settings.synchronizations, 0);
    EXPECT_THAT(world.log.lines,
                ElementsAre("Deleting " + support, StartsWith("There was an error deleting the support folder at " +
                                                              support + " - Can't remove")));
}

TEST(Reset, CarriesOnWithoutTheNewFolderAndShowsWhatIsLeft) {
    World world{{"Work", "Home"}};
    withData(world);
    world.files.failingOperation = world.files.operations + 2;
    world.press("resetAllData:");
    world.window().press("OK");
    EXPECT_THAT(world.log.lines.back(),
                StartsWith("There was an error creating a folder for the Default user:\nCan't make"));
    EXPECT_THAT(world.table().texts(), ElementsAre("Default User"));
    EXPECT_THAT(world.outline().rows, ElementsAre(Texts{mail}));
    EXPECT_TRUE(world.isSaved());
}

} // namespace
} // namespace letterloft
