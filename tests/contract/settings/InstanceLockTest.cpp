#include "platform/linux/InstanceLock.h"
#include "tests/contract/settings/ScratchFolder.h"

#include <gmock/gmock.h>

#include <array>
#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

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

// Each start waits at the gate until all are there, tells its outcome, and then holds on until it is killed.
TEST_F(TheInstanceLock, IsTakenByOneOfTwentyAndFreeOnceThatOneIsKilled) {
    std::array<int, 2> gate{};
    std::array<int, 2> outcomes{};
    ASSERT_EQ(pipe(gate.data()), 0);
    ASSERT_EQ(pipe(outcomes.data()), 0);
    std::vector<pid_t> starts;
    for (int i = 0; i < 20; ++i) {
        starts.push_back(fork());
        if (starts.back() != 0) continue;
        close(gate[1]);
        char open = 0;
        if (read(gate[0], &open, 1) != 0) _exit(1);
        const InstanceLock lock = InstanceLock::take(calls_, path_);
        const char outcome = static_cast<char>(lock.outcome());
        if (write(outcomes[1], &outcome, 1) != 1) _exit(1);
        while (true)
            pause();
    }
    close(gate[1]);
    std::vector<int> counts(3);
    for (std::size_t i = 0; i < starts.size(); ++i) {
        char outcome = 0;
        ASSERT_EQ(read(outcomes[0], &outcome, 1), 1);
        ++counts[static_cast<std::size_t>(outcome)];
    }
    EXPECT_THAT(counts, ::testing::ElementsAre(1, 19, 0));
    EXPECT_EQ(take(), Outcome::heldByAnother);
    for (const pid_t start : starts)
        kill(start, SIGKILL);
    for (const pid_t start : starts)
        waitpid(start, nullptr, 0);
    EXPECT_EQ(take(), Outcome::taken);
    for (const int end : {gate[0], outcomes[0], outcomes[1]})
        close(end);
}

TEST_F(TheInstanceLock, IsNotInheritedByALaunchedProgram) {
    pid_t launched = 0;
    {
        const InstanceLock lock = InstanceLock::take(calls_, path_);
        ASSERT_EQ(lock.outcome(), Outcome::taken);
        std::array<char*, 3> words{const_cast<char*>("sleep"), const_cast<char*>("600"), nullptr};
        ASSERT_EQ(posix_spawnp(&launched, "sleep", nullptr, nullptr, words.data(), environ), 0);
    }
    EXPECT_EQ(take(), Outcome::taken);
    kill(launched, SIGKILL);
    waitpid(launched, nullptr, 0);
}

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
