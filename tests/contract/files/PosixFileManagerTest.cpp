// What only the real file manager can be asked: attributes, permissions, other programs, what a crash leaves.

#include "platform/linux/PosixFileManager.h"
#include "tests/contract/files/ScratchFolders.h"
#include "tests/fakes/FakeCopyProgress.h"
#include "tests/fakes/FakeLog.h"

#include <array>
#include <cerrno>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace letterloft {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

ino_t inodeOf(const std::string& path) {
    struct stat info {};
    stat(path.c_str(), &info);
    return info.st_ino;
}

class Interfering final : public FileSystemCalls {
public:
    ssize_t copy_file_range(int from, int to, std::size_t size) override {
        if (beforeContents) beforeContents();
        return FileSystemCalls::copy_file_range(from, to, size);
    }
    ssize_t sendfile(int to, int from, std::size_t size) override {
        if (beforeContents) beforeContents();
        return FileSystemCalls::sendfile(to, from, size);
    }
    int fsync(int file) override {
        synced.push_back(inodeOf("/proc/self/fd/" + std::to_string(file)));
        return syncsFail ? (errno = EIO, -1) : FileSystemCalls::fsync(file);
    }
    int statx(int folder, const char* path, int flags, struct statx* info) override {
        const int result = FileSystemCalls::statx(folder, path, flags, info);
        if (notesAreOfAnother && std::string{path}.ends_with(".note")) info->stx_uid = geteuid() + 1;
        if (sizesAreTooLarge && S_ISREG(info->stx_mode)) ++info->stx_size;
        return result;
    }

    std::function<void()> beforeContents;
    bool sizesAreTooLarge = false;
    bool syncsFail = false;
    bool notesAreOfAnother = false;
    std::vector<ino_t> synced;
};

class PosixFileManagerTest : public testing::Test {
protected:
    PosixFileManagerTest() {
        writeFile(memory + "/sentinel", "untouched");
        makeTortureTree(item, memory + "/sentinel");
    }

    ScratchFolders scratch;
    const std::string memory = scratch.onMemory();
    const std::string disk = scratch.onDisk();
    const std::string item = memory + "/item";
    FakeLog log;
    Interfering calls;
    FakeCopyProgress progress;
    PosixFileManager files{{log, calls, progress}, memory, {memory + "/settings"}};
};

// What it returns in a process of its own.
int statusOf(const std::function<int()>& work) {
    const pid_t child = fork();
    if (child == 0) _exit(work());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Runs it as a user who is not allowed everything; the result is its own.
bool holdsAsOrdinaryUser(const std::function<bool()>& condition) {
    constexpr uid_t nobody = 65534;
    return statusOf([&] {
               if (geteuid() == 0 && (setresgid(nobody, nobody, nobody) != 0 || setresuid(nobody, nobody, nobody) != 0))
                   return 2;
               return condition() ? 0 : 1;
           }) == 0;
}

} // namespace

TEST_F(PosixFileManagerTest, NamesBothPathsAndTheReasonOfARefusal) {
    writeFile(disk + "/file", "");
    const std::vector<std::array<std::string, 4>> refusals{{item, disk + "/file", "already", "File exists"},
                                                           {item, memory + "/no/x", "missing", "No such file"},
                                                           {memory + "/no", disk + "/x", "nothing to move", "No such"},
                                                           {item, item + "/x", "inside", "Invalid argument"},
                                                           {memory, disk + "/x", "Letterloft's own", "settings"}};
    for (const auto& [from, to, why, reason] : refusals)
        EXPECT_THAT(files.moveItem(from, to).sentence(),
                    AllOf(HasSubstr(from), HasSubstr(to), HasSubstr(why), HasSubstr(reason)));
}

TEST_F(PosixFileManagerTest, NeverGoesIntoSomethingMounted) {
    // In a mount namespace of its own, which an ordinary user gets only together with a user namespace.
    const int status = statusOf([&] {
        if (unshare(geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS) != 0 ||
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount(item.c_str(), (item + "/empty folder").c_str(), nullptr, MS_BIND, nullptr) != 0)
            return 2;
        const auto names = [](const Status& refusal) {
            return !refusal && refusal.sentence().find("mount point") != std::string::npos;
        };
        const bool refused = names(files.moveItem(item, disk + "/item")) &&
                             names(files.moveItem(item + "/empty folder", memory + "/x")) &&
                             names(files.removeItem(item + "/empty folder"));
        return refused && fs::is_empty(disk) ? 0 : 1;
    });
    if (status == 2) GTEST_SKIP() << "LEFT OUT: this machine lets nobody mount anything";
    EXPECT_EQ(status, 0);
    EXPECT_EQ(contentsOf(item + "/read-only/inside"), "inside");
}

TEST_F(PosixFileManagerTest, CopiesAFileAsItIsAtOneMoment) {
    const std::string file = memory + "/file";
    writeFile(file, "1");
    int changes = 100;
    calls.beforeContents = [&] {
        if (changes-- > 0) std::ofstream{file, std::ios::app} << "2";
    };
    EXPECT_THAT(files.moveItem(file, disk + "/file").sentence(), HasSubstr("keeps changing"));
    changes = 0;
    calls.sizesAreTooLarge = true;
    EXPECT_THAT(files.moveItem(file, disk + "/file").sentence(), HasSubstr("shorter than it says"));
    calls.sizesAreTooLarge = false;
    EXPECT_TRUE(fs::is_empty(disk));
    const std::string before = contentsOf(file);
    changes = 1;
    EXPECT_TRUE(files.moveItem(file, disk + "/file"));
    EXPECT_EQ(contentsOf(disk + "/file"), before + "2");
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(PosixFileManagerTest, SettlingTouchesNoNameThatIsNotItsOwn) {
    const std::string mark = disk + "/.letterloft-0123456789abcde";
    const std::vector<std::string> names{mark + "f.note", mark + "g.staging", mark + "f.staging.bak"};
    for (const std::string& name : names)
        writeFile(name, "mine");
    files.settle({disk});
    for (const std::string& name : names)
        EXPECT_EQ(contentsOf(name), "mine");
}

// A note that is obeyed has what looks like its copy elsewhere removed.
TEST_F(PosixFileManagerTest, SettlingObeysNoNoteOfAnotherUserInAFolderOpenToAll) {
    calls.notesAreOfAnother = true;
    for (const auto& [folder, text] : {std::pair{memory, "mine"}, std::pair{disk, "fake"}}) {
        fs::create_directory(folder + "/mail");
        writeFile(folder + "/mail/letter", text);
        fs::last_write_time(folder + "/mail/letter", fs::file_time_type{});
    }
    fs::create_symlink("mail" + disk + "/mail", memory + "/.letterloft-0123456789abcdef.note");
    ASSERT_EQ(chmod(memory.c_str(), 01777), 0);
    files.settle({memory});
    EXPECT_EQ(contentsOf(memory + "/mail/letter"), "mine");
    EXPECT_THAT(log.lines, ElementsAre(HasSubstr("comes from another user")));
    calls.notesAreOfAnother = false;
    files.settle({memory});
    EXPECT_FALSE(fs::exists(memory + "/mail"));
}

TEST_F(PosixFileManagerTest, RefusesEarlyWhatTheTargetHasNoRoomFor) {
    class Full final : public FileSystemCalls {
    public:
        int fstatvfs(int file, struct statvfs* info) override {
            *info = told;
            info->f_fsid = static_cast<unsigned long>(file);
            return 0;
        }
        int mkdirat(int, const char*, mode_t) override { return ADD_FAILURE() << "began to copy", -1; }
        struct statvfs told {};
    } full;
    PosixFileManager manager{{log, full, progress}, memory, {}};
    // No file is left; without blocks or their size only copying can tell of bytes.
    full.told.f_files = full.told.f_blocks = 1000;
    EXPECT_THAT(manager.moveItem(item, disk + "/item").sentence(), HasSubstr("files"));
    full.told.f_frsize = 512;
    full.told.f_blocks = 0;
    EXPECT_THAT(manager.moveItem(item, disk + "/item").sentence(), HasSubstr("files"));
    full.told.f_blocks = full.told.f_favail = 1000;
    EXPECT_THAT(manager.moveItem(item, disk + "/item").sentence(), HasSubstr("bytes"));
}

TEST_F(PosixFileManagerTest, GoesDeeperThanDescriptorsAndPathsReach) {
    const std::string name(100, 'd');
    ASSERT_EQ(chdir(memory.c_str()), 0);
    for (int depth = 0; depth < 1100; ++depth)
        ASSERT_TRUE(mkdir(name.c_str(), 0700) == 0 && chdir(name.c_str()) == 0);
    std::ofstream{"bottom"} << "text";
    fs::create_hard_link("bottom", "twin");
    ASSERT_EQ(chdir("/"), 0);
    const Status moved = files.moveItem(memory + "/" + name, disk + "/deep");
    ASSERT_TRUE(moved) << moved.sentence().substr(0, 200);
    EXPECT_FALSE(fs::exists(memory + "/" + name));
    EXPECT_TRUE(files.removeItem(disk + "/deep"));
    EXPECT_TRUE(fs::is_empty(disk));
}

// With more names than are read at once: the rest are read when this folder is closed for want of descriptors.
TEST_F(PosixFileManagerTest, GoesDeepFromACrowdedFolder) {
    std::string chain = " folder whose name is long enough to be kept elsewhere";
    for (int depth = 0; depth < 30; ++depth)
        chain += "/c";
    fs::create_directories(memory + "/crowd/first" + chain); // one of the two is among the names read first
    for (int i = 0; i < 40000; ++i)
        ASSERT_EQ(mknod((memory + "/crowd/" + std::to_string(i)).c_str(), S_IFREG | 0600, 0), 0);
    fs::create_directories(memory + "/crowd/last" + chain);
    EXPECT_TRUE(files.removeItem(memory + "/crowd"));
}

TEST_F(PosixFileManagerTest, KeepsAllThatAnOrdinaryUserMayAndFailsOnTheRest) {
    ASSERT_TRUE(geteuid() != 0 || chown(disk.c_str(), 1, 1) == 0);
    fs::permissions(disk, fs::perms{02777}); // what is made in it gets its group
    fs::permissions(memory, fs::perms{0777});
    const std::string mine = memory + "/mine";
    EXPECT_TRUE(holdsAsOrdinaryUser([&] {
        makeTortureTree(mine, memory + "/sentinel");
        const TreeDescription before = described(mine);
        const bool moved = files.moveItem(mine, disk + "/mine").isOk() && described(disk + "/mine") == before;
        return moved && files.moveItem(disk + "/mine", mine).isOk() && described(mine) == before;
    })) << "there and back";
    EXPECT_TRUE(holdsAsOrdinaryUser([&] {
        fs::permissions(mine + "/blocks", fs::perms{0000});
        const Status moved = files.moveItem(mine, disk + "/mine");
        return moved.sentence().find("/blocks") != std::string::npos && fs::is_empty(disk) && !files.removeItem(mine);
    })) << "an unreadable file and a read-only folder";
    EXPECT_TRUE(fs::exists(mine + "/read-only/inside"));
}

TEST_F(PosixFileManagerTest, SyncsEachChangedFolderOnceWhereverItIsByThen) {
    ASSERT_TRUE(files.createFolder(disk + "/a/b"));
    ASSERT_TRUE(files.createFolder(disk + "/gone"));
    ASSERT_TRUE(files.makeMovesDurable());
    calls.synced.clear();
    for (const char* name : {"/1", "/2", "/3"}) {
        writeFile(disk + name, "");
        ASSERT_TRUE(files.moveItem(disk + name, disk + "/a/b" + name));
    }
    ASSERT_TRUE(files.moveItem(disk + "/a/b/3", disk + "/gone/3"));
    ASSERT_TRUE(files.removeItem(disk + "/gone"));
    ASSERT_TRUE(files.moveItem(disk + "/a", disk + "/renamed"));
    calls.syncsFail = true;
    EXPECT_FALSE(files.makeMovesDurable());
    calls.syncsFail = false;
    calls.synced.clear();
    EXPECT_TRUE(files.makeMovesDurable());
    EXPECT_THAT(calls.synced, testing::UnorderedElementsAre(inodeOf(disk), inodeOf(disk + "/renamed/b")));
    EXPECT_TRUE(files.makeMovesDurable());
    EXPECT_EQ(calls.synced.size(), 2u);
}

} // namespace letterloft
