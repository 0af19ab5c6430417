#include "platform/linux/InstanceLock.h"
#include "tests/contract/settings/ScratchFolder.h"

#include <gmock/gmock.h>

namespace letterloft {
namespace {

using ::testing::HasSubstr;
using Outcome = InstanceLock::Outcome;

class TheInstanceLock : public ::testing::Test {
protected:
    Outcome take() { return InstanceLock::take(calls_, path_).outcome(); }

    ScratchFolder scratch_;
    std::string path_ = scratch_.at("Library/Application Support/Letterloft.lock");
    FileSystemCalls calls_;
};

TEST_F(TheInstanceLock, IsPrivateAndLiesInPrivateFolders) {
    for (const mode_t umaskNow : {0000, 0777}) {
        const mode_t former = umask(umaskNow);
        EXPECT_EQ(take(), Outcome::taken);
        umask(former);
        EXPECT_EQ(modeOf(path_), 0600u);
        EXPECT_EQ(modeOf(scratch_.at("Library")), 0700u);
        EXPECT_EQ(modeOf(scratch_.at("Library/Application Support")), 0700u);
        std::filesystem::remove_all(scratch_.at("Library"));
    }
}

TEST_F(TheInstanceLock, IsImpossibleWhereALinkOrNoFolderIsInItsWay) {
    std::filesystem::create_directories(scratch_.at("Library/Application Support"));
    std::filesystem::create_symlink(scratch_.at("victim"), path_);
    const InstanceLock planted = InstanceLock::take(calls_, path_);
    EXPECT_EQ(planted.outcome(), Outcome::impossible);
    EXPECT_THAT(planted.reason(), HasSubstr(path_));
    EXPECT_FALSE(std::filesystem::exists(scratch_.at("victim")));
    std::filesystem::remove_all(scratch_.at("Library"));
    writeFile(scratch_.at("Library"), "a file");
    EXPECT_THAT(InstanceLock::take(calls_, path_).reason(), HasSubstr("Not a directory"));
}

} // namespace
} // namespace letterloft
