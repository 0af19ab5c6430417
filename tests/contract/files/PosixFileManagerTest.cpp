// What only the real file manager can be asked: attributes, permissions, other programs, what a crash leaves.

#include "platform/linux/PosixFileManager.h"
#include "tests/contract/files/ScratchFolders.h"
#include "tests/fakes/FakeCopyProgress.h"
#include "tests/fakes/FakeLog.h"

#include <array>
#include <fcntl.h>
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
using testing::IsEmpty;

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
    ssize_t read(int file, void* buffer, std::size_t size) override {
        if (beforeContents) beforeContents();
        return FileSystemCalls::read(file, buffer, size);
    }
    int setLease(int file, int lease) override {
        if (beforeLease) beforeLease(file);
        return FileSystemCalls::setLease(file, lease);
    }
    int syncfs(int file) override {
        if (beforeSync) beforeSync();
        return FileSystemCalls::syncfs(file);
    }
    int fsync(int file) override {
        synced.push_back(inodeOf("/proc/self/fd/" + std::to_string(file)));
        return FileSystemCalls::fsync(file);
    }
    int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) override {
        if (flags != 0 && refuseFlags) {
            errno = EINVAL;
            return -1;
        }
        const int renamed = FileSystemCalls::renameat2(fromFolder, from, toFolder, to, flags);
        if (renamed == 0 && afterRename) afterRename(to);
        return renamed;
    }
    int statx(int folder, const char* path, int flags, struct statx* info) override {
        const int result = FileSystemCalls::statx(folder, path, flags, info);
        if (notesAreOfAnother && std::string{path}.ends_with(".note")) info->stx_uid = geteuid() + 1;
        return result;
    }

    std::function<void()> beforeContents;
    std::function<void(int file)> beforeLease;
    std::function<void()> beforeSync; // of the copy of a move, after it was made
    std::function<void(const std::string& to)> afterRename;
    bool refuseFlags = false;
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

TEST_F(PosixFileManagerTest, KeepsEverythingOnTheWayToAnotherFileSystemAndBack) {
    const TreeDescription before = described(item);
    const std::string shared = disk + "/shared"; // which gives what is made in it a group
    fs::create_directory(shared);
    chmod(shared.c_str(), 02777);
    if (geteuid() == 0) {
        ASSERT_EQ(chown(shared.c_str(), 1, 1), 0);
    }
    ASSERT_TRUE(files.moveItem(item, shared + "/item"));
    EXPECT_EQ(described(shared + "/item"), before);
    EXPECT_THAT(progress.items, ElementsAre(item));
    ASSERT_TRUE(files.moveItem(shared + "/item", item));
    EXPECT_EQ(described(item), before);
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_TRUE(fs::is_empty(shared));
    EXPECT_EQ(contentsOf(memory + "/sentinel"), "untouched");
}

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

TEST_F(PosixFileManagerTest, MovesByHandWhereTheFileSystemHasNoSafeRename) {
    calls.refuseFlags = true;
    fs::create_directory(memory + "/empty");
    fs::create_symlink("nowhere", memory + "/dangling");
    for (const char* name : {"/item", "/sentinel", "/dangling"}) {
        EXPECT_THAT(files.moveItem(memory + name, memory + "/empty").sentence(), HasSubstr("File exists"));
        EXPECT_TRUE(files.moveItem(memory + name, memory + name + "2"));
    }
    EXPECT_THAT(files.moveItem(memory + "/item2", memory + "/item2/x").sentence(), HasSubstr("inside"));
    EXPECT_TRUE(files.moveItem(memory + "/item2", disk + "/item2"));
    EXPECT_EQ(fs::read_symlink(memory + "/dangling2"), "nowhere");
}

// A program that has not stopped writing: everything it wrote is found afterwards.
TEST_F(PosixFileManagerTest, KeepsWhatChangedOrIsInUseAfterItWasCopied) {
    const int open = ::open((item + "/empty").c_str(), O_RDONLY | O_CLOEXEC);
    calls.beforeSync = [&] {
        std::ofstream{item + "/program", std::ios::app} << "appended";
        fs::create_directory(item + "/empty folder/new");
        writeFile(item + "/new", "new");
        fs::remove(item + "/dangling");
        writeFile(item + "/dangling", "replaced");
    };
    ASSERT_TRUE(files.moveItem(item, disk + "/item"));
    ::close(open);
    EXPECT_EQ(contentsOf(disk + "/item/program"), "#!/bin/sh\n");
    std::vector<std::string> left;
    for (const auto& entry : fs::recursive_directory_iterator(item))
        left.push_back(entry.path().filename());
    EXPECT_THAT(left, testing::UnorderedElementsAre("empty", "program", "empty folder", "new", "new", "dangling"));
    EXPECT_EQ(contentsOf(item + "/program"), "#!/bin/sh\nappended");
    ASSERT_EQ(log.lines.size(), 1u);
    EXPECT_THAT(log.lines[0], AllOf(HasSubstr(item), HasSubstr(disk + "/item")));
}

TEST_F(PosixFileManagerTest, CopiesAFileAsItIsAtOneMomentAndKeepsWhatComesLater) {
    const std::string file = memory + "/file";
    writeFile(file, "1");
    int changes = 100;
    calls.beforeContents = [&] {
        if (changes-- > 0) std::ofstream{file, std::ios::app} << "2";
    };
    EXPECT_THAT(files.moveItem(file, disk + "/file").sentence(), HasSubstr("keeps changing"));
    EXPECT_TRUE(fs::is_empty(disk));
    changes = 1;
    const std::string before = contentsOf(file);
    calls.beforeLease = [](int held) { std::ofstream{"/proc/self/fd/" + std::to_string(held), std::ios::app} << "3"; };
    EXPECT_TRUE(files.moveItem(file, disk + "/file"));
    EXPECT_EQ(contentsOf(disk + "/file"), before + "2");
    EXPECT_EQ(contentsOf(file), before + "23");
}

TEST_F(PosixFileManagerTest, KeepsARemainderAsideWhereItsNameIsTaken) {
    calls.afterRename = [&](const std::string& to) {
        if (!to.ends_with(".aside")) return;
        writeFile(memory + "/" + to + "/new", "new");
        writeFile(item, "another");
    };
    ASSERT_TRUE(files.moveItem(item, disk + "/item"));
    EXPECT_EQ(contentsOf(item), "another");
    ASSERT_EQ(log.lines.size(), 1u);
    EXPECT_THAT(log.lines[0], HasSubstr(".aside"));
    fs::remove(item);
    files.settle({memory, memory + "/missing"});
    EXPECT_EQ(contentsOf(item + "/new"), "new");
    EXPECT_EQ(std::distance(fs::directory_iterator{memory}, {}), 2); // the sentinel and the item
}

TEST_F(PosixFileManagerTest, SettlingTouchesNoNameThatIsNotItsOwn) {
    const std::vector<std::string> names{".letterloft-0123456789abcdef.note", ".letterloft-0123456789abcdeg.staging",
                                         ".letterloft-0123456789abcdef.staging.bak", ".letterloft-.staging"};
    for (const std::string& name : names)
        writeFile(disk + "/" + name, "mine");
    fs::create_symlink("no slash", disk + "/.letterloft-0000000000000000.note");
    files.settle({disk, disk + "/"});
    for (const std::string& name : names)
        EXPECT_EQ(contentsOf(disk + "/" + name), "mine");
    EXPECT_TRUE(fs::is_symlink(disk + "/.letterloft-0000000000000000.note"));
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
            const int result = FileSystemCalls::fstatvfs(file, info);
            info->f_fsid = static_cast<unsigned long>(file);
            (noFiles ? info->f_favail : info->f_bavail) = 10;
            info->f_files = 1000;
            if (untold) info->*untold = info->f_bavail = 0;
            return result;
        }
        int mkdirat(int, const char*, mode_t) override { return ADD_FAILURE() << "began to copy", -1; }
        bool noFiles = false;
        unsigned long statvfs::*untold = nullptr;
    } full;
    PosixFileManager manager{{log, full, progress}, memory, {}};
    EXPECT_THAT(manager.moveItem(item, disk + "/item").sentence(), HasSubstr("bytes"));
    full.noFiles = true;
    EXPECT_THAT(manager.moveItem(item, disk + "/item").sentence(), HasSubstr("files"));
    for (const auto size : {&statvfs::f_frsize, &statvfs::f_blocks}) {
        full.untold = size; // then only copying can tell
        EXPECT_THAT(manager.moveItem(item, disk + "/item").sentence(), HasSubstr("files"));
    }
}

TEST_F(PosixFileManagerTest, GoesDeeperThanDescriptorsAndPathsReach) {
    const std::string name(100, 'd');
    int folder = ::open(memory.c_str(), O_RDONLY | O_CLOEXEC);
    constexpr int depth = 1100;
    for (int i = 0; i < depth; ++i) {
        ASSERT_EQ(mkdirat(folder, name.c_str(), 0700), 0);
        const int next = openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC);
        ::close(folder);
        folder = next;
    }
    ASSERT_GE(folder, 0);
    ::close(openat(folder, "bottom", O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
    ASSERT_EQ(linkat(folder, "bottom", folder, "twin", 0), 0);
    ::close(folder);
    const Status moved = files.moveItem(memory + "/" + name, disk + "/deep");
    ASSERT_TRUE(moved) << moved.sentence().substr(0, 200);
    EXPECT_FALSE(fs::exists(memory + "/" + name));
    EXPECT_TRUE(files.removeItem(disk + "/deep"));
    EXPECT_TRUE(fs::is_empty(disk));
}

TEST_F(PosixFileManagerTest, GoesDeepFromACrowdedFolder) {
    // With more names than are read at once: the rest are read when this folder is closed for want of descriptors.
    const std::string crowd = memory + "/crowd/";
    std::string chain = " folder whose name is long enough to be kept elsewhere";
    for (int depth = 0; depth < 30; ++depth)
        chain += "/c";
    fs::create_directories(crowd + "first" + chain); // one of the two is among the names read first
    for (int i = 0; i < 40000; ++i)
        ::close(::open((crowd + std::to_string(i)).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
    fs::create_directories(crowd + "last" + chain);
    const Status removed = files.removeItem(crowd);
    EXPECT_TRUE(removed) << removed.sentence();
}

TEST_F(PosixFileManagerTest, TakesWhatCannotBeLookedAtForThere) {
    fs::create_directory(disk + "/closed");
    fs::permissions(disk + "/closed", fs::perms{0000});
    EXPECT_TRUE(holdsAsOrdinaryUser([&] {
        const bool there = files.fileExists(disk + "/closed/x") && files.folderExists(disk + "/closed/x");
        return there && log.lines.size() == 2 && log.lines[0].find("Permission denied") != std::string::npos;
    }));
    fs::create_symlink("ring", disk + "/ring");
    EXPECT_TRUE(files.fileExists(disk + "/ring"));
    EXPECT_EQ(log.lines.size(), 1u);
}

TEST_F(PosixFileManagerTest, FailsOnWhatAnOrdinaryUserMayNotReadOrRemove) {
    fs::permissions(memory, fs::perms{0777});
    fs::permissions(disk, fs::perms{0777});
    const std::string mine = memory + "/mine";
    EXPECT_TRUE(holdsAsOrdinaryUser([&] {
        makeTortureTree(mine, memory + "/sentinel");
        const TreeDescription before = described(mine);
        const bool moved = files.moveItem(mine, disk + "/mine").isOk() && described(disk + "/mine") == before;
        return moved && files.moveItem(disk + "/mine", mine).isOk() && described(mine) == before;
    })) << "a read-only folder of one's own";
    EXPECT_TRUE(holdsAsOrdinaryUser([&] {
        fs::permissions(mine + "/blocks", fs::perms{0000});
        const Status moved = files.moveItem(mine, disk + "/mine");
        return !moved && moved.sentence().find("/blocks") != std::string::npos && fs::is_empty(disk);
    })) << "an unreadable file";
    EXPECT_TRUE(holdsAsOrdinaryUser([&] { return !files.removeItem(mine).isOk(); })) << "a read-only folder";
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
    EXPECT_TRUE(files.makeMovesDurable());
    EXPECT_THAT(calls.synced, testing::UnorderedElementsAre(inodeOf(disk), inodeOf(disk + "/renamed/b")));
    EXPECT_TRUE(files.makeMovesDurable());
    EXPECT_EQ(calls.synced.size(), 2u);
}

} // namespace letterloft
