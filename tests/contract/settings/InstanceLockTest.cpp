#include "platform/linux/InstanceLock.h"
#include "tests/contract/files/ScratchFolders.h"

#include <gmock/gmock.h>

namespace letterloft {
namespace {

using ::testing::HasSubstr;

TEST(TheInstanceLock, IsImpossibleWhereALinkOrNoFolderIsInItsWay) {
    const ScratchFolders scratch;
    const std::string path = scratch.at("Library/Application Support/Letterloft.lock");
    FileSystemCalls calls;
    std::filesystem::create_directories(scratch.at("Library/Application Support"));
    std::filesystem::create_symlink(scratch.at("victim"), path);
    const InstanceLock planted = InstanceLock::take(calls, path);
    EXPECT_EQ(planted.outcome(), InstanceLock::Outcome::impossible);
    EXPECT_THAT(planted.reason(), HasSubstr(path));
    EXPECT_FALSE(std::filesystem::exists(scratch.at("victim")));
    std::filesystem::remove_all(scratch.at("Library"));
    writeFile(scratch.at("Library"), "a file");
    EXPECT_THAT(InstanceLock::take(calls, path).reason(), HasSubstr("Not a directory"));
}

} // namespace
} // namespace letterloft
