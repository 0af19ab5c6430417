// A program that goes on writing into a folder while that is moved to another file system.

#include "platform/linux/PosixFileManager.h"
#include "tests/contract/files/ScratchFolders.h"
#include "tests/fakes/FakeCopyProgress.h"
#include "tests/fakes/FakeLog.h"

#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace letterloft {
namespace {

namespace fs = std::filesystem;

constexpr int mostWrites = 1 << 18;

// What the writer tells of itself.
struct Account {
    std::atomic<int> tried;
    std::array<std::atomic<bool>, mostWrites> done;
};

// Now appends to a file, now makes a new one; now it holds on to the folder wherever that goes, now it goes by the path
// and makes the folder where it is gone.
[[noreturn]] void write(const std::string& folder, Account& account) {
    const int held = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int n = 0; n < mostWrites; account.tried = ++n) {
        const bool appends = n % 50 == 0;
        const std::string name = appends ? "journal" : std::to_string(n);
        const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (appends ? O_APPEND : O_EXCL);
        if (n % 3 == 0) mkdir(folder.c_str(), 0700);
        const int file =
            n % 3 == 0 ? open((folder + "/" + name).c_str(), flags, 0600) : openat(held, name.c_str(), flags, 0600);
        const std::string line = std::to_string(n) + "\n";
        account.done[n] = ::write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size());
        close(file);
    }
    _exit(0);
}

// What has been written and is anywhere below the folder.
void collect(const std::string& folder, std::set<int>& found) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        std::ifstream file{entry.path()};
        for (int n = 0; entry.is_regular_file() && file >> n;)
            found.insert(n);
    }
}

} // namespace

TEST(AWriterThatDoesNotStop, FindsEverythingItWrote) {
    const ScratchFolders scratch;
    const std::string from = scratch.onMemory() + "/item";
    const std::string to = scratch.onDisk() + "/item";
    fs::create_directory(from);
    auto* account = static_cast<Account*>(
        mmap(nullptr, sizeof(Account), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(account, MAP_FAILED);
    const pid_t writer = fork();
    if (writer == 0) write(from, *account);
    const auto waitForWrites = [account](int more) {
        for (const int end = std::min(account->tried + more, mostWrites); account->tried < end;)
            sched_yield();
    };

    FakeLog log;
    FileSystemCalls calls;
    FakeCopyProgress progress;
    PosixFileManager files{{log, calls, progress}, "/nowhere", {}};
    Status moved = Status::failure("not tried");
    for (int attempt = 0; attempt < 100 && !moved; ++attempt) { // a file may keep changing while it is copied
        waitForWrites(100);
        moved = files.moveItem(from, to);
    }
    waitForWrites(100);
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);

    EXPECT_TRUE(moved) << moved.sentence();
    std::set<int> found;
    collect(scratch.onMemory(), found);
    collect(scratch.onDisk(), found);
    int written = 0;
    for (int n = 0; n < account->tried; ++n) {
        written += account->done[n];
        EXPECT_TRUE(!account->done[n] || found.count(n)) << n << " of " << account->tried;
    }
    EXPECT_GT(written, 100);
    ASSERT_EQ(log.lines.size(), 1u);
    for (const auto& entry : fs::directory_iterator(scratch.onMemory()))
        if (entry.is_directory() && entry.path().filename() != "item") {
            EXPECT_THAT(log.lines[0], testing::HasSubstr(entry.path())) << "what stays aside";
        }
    munmap(account, sizeof(Account));
}

} // namespace letterloft
