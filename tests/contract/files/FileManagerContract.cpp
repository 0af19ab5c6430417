#include "platform/linux/PosixFileManager.h"
#include "tests/contract/files/ScratchFolders.h"
#include "tests/fakes/FakeCopyProgress.h"
#include "tests/fakes/FakeFileManager.h"
#include "tests/fakes/FakeLog.h"

#include <algorithm>
#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

namespace letterloft {

namespace fs = std::filesystem;

namespace {

// A file manager with two folders, `here` and `there`, between which things are moved.
struct FileWorld {
    virtual ~FileWorld() = default;
    virtual FileManager& files() = 0;
    virtual void addFile(const std::string& path, const std::string& contents) = 0;
    virtual std::string textAt(const std::string& path) = 0; // of a file; "none" for anything else

    std::string here;
    std::string there;
    std::string settings; // a protected file, in a folder in `here`
};

struct FakeWorld final : FileWorld {
    FakeWorld() {
        here = "/home/user/here";
        there = "/volume/there";
        settings = here + "/configuration/settings";
        manager.addFolder(there);
        manager.addFile(settings, "settings");
        manager.protectedPaths = {settings};
    }
    FileManager& files() override { return manager; }
    void addFile(const std::string& path, const std::string& contents) override { manager.addFile(path, contents); }
    std::string textAt(const std::string& path) override { return manager.textAt(path).value_or("none"); }

    FakeFileManager manager;
};

// As on a file system that knows none of the flags of renameat2(2).
class FlaglessCalls final : public FileSystemCalls {
    int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) override {
        if (flags == 0) return FileSystemCalls::renameat2(fromFolder, from, toFolder, to, 0);
        errno = EINVAL;
        return -1;
    }
};

struct PosixWorld final : FileWorld {
    PosixWorld(bool across, std::unique_ptr<FileSystemCalls> all) : calls{std::move(all)} {
        here = scratch.onDisk() + "/here";
        there = (across ? scratch.onMemory() : scratch.onDisk()) + "/there";
        settings = here + "/configuration/settings";
        fs::create_directories(there);
        addFile(settings, "settings");
        manager = std::make_unique<PosixFileManager>(PosixFileManager::Parts{log, *calls, progress}, scratch.onDisk(),
                                                     std::vector{settings});
    }
    FileManager& files() override { return *manager; }
    void addFile(const std::string& path, const std::string& contents) override { writeFile(path, contents); }
    std::string textAt(const std::string& path) override {
        return fs::is_regular_file(path) ? contentsOf(path) : "none";
    }

    ScratchFolders scratch;
    FakeLog log;
    std::unique_ptr<FileSystemCalls> calls;
    FakeCopyProgress progress;
    std::unique_ptr<PosixFileManager> manager;
};

class FileManagerContract : public testing::TestWithParam<std::string> {
protected:
    static std::unique_ptr<FileWorld> worldNamed(const std::string& name) {
        if (name == "Fake") return std::make_unique<FakeWorld>();
        if (name == "PosixByHand") return std::make_unique<PosixWorld>(false, std::make_unique<FlaglessCalls>());
        return std::make_unique<PosixWorld>(name == "PosixAcross", std::make_unique<FileSystemCalls>());
    }

    // The move fails, says where, and leaves everything as it was.
    void expectRefusal(const std::string& from, const std::string& to) {
        const std::string source = world->textAt(from);
        const std::string target = world->textAt(to);
        const Status moved = files.moveItem(from, to);
        EXPECT_FALSE(moved) << from << " to " << to;
        EXPECT_EQ(world->textAt(from), source);
        EXPECT_EQ(world->textAt(to), target);
        EXPECT_THAT(moved.sentence(), testing::AnyOf(testing::HasSubstr(from), testing::HasSubstr(to)));
    }

    std::vector<std::string> namesIn(const std::string& folder) {
        auto names = files.contentsOfFolder(folder);
        EXPECT_TRUE(names) << names.status().sentence();
        std::vector<std::string> sorted = names ? *names : std::vector<std::string>{"failed"};
        std::sort(sorted.begin(), sorted.end());
        return sorted;
    }

    std::unique_ptr<FileWorld> world = worldNamed(GetParam());
    FileManager& files = world->files();
    const std::string here = world->here;
    const std::string there = world->there;
};

using Names = std::vector<std::string>;

// What links change; the double has none.
class FileManagerLinks : public FileManagerContract {
protected:
    void SetUp() override {
        world->addFile(here + "/folder/file", "text");
        fs::create_symlink("folder", here + "/link");
        fs::create_symlink(there, here + "/out");
        fs::create_symlink("nowhere", here + "/dangling");
    }
};

} // namespace

TEST_P(FileManagerContract, MovesFilesAndWholeFolders) {
    world->addFile(here + "/file", "text");
    world->addFile(here + "/folder/.inner/deep", "deep");
    EXPECT_TRUE(files.moveItem(here + "/file", there + "/moved"));
    EXPECT_TRUE(files.moveItem(here + "/folder/", there + "/folder/")); // trailing slashes do not count
    EXPECT_EQ(namesIn(there), (Names{"folder", "moved"}));
    EXPECT_EQ(namesIn(there + "/folder"), (Names{".inner"}));
    EXPECT_EQ(world->textAt(there + "/moved"), "text");
    EXPECT_EQ(world->textAt(there + "/folder/.inner/deep"), "deep");
    EXPECT_EQ(namesIn(here), (Names{"configuration"}));
}

TEST_P(FileManagerLinks, AreMovedThemselvesAndFollowedInThePathOfAMove) {
    EXPECT_TRUE(files.moveItem(here + "/link/file", here + "/out/file"));
    EXPECT_EQ(world->textAt(there + "/file"), "text");
    EXPECT_TRUE(files.moveItem(here + "/link/", there + "/link")); // but not the last, slash or not
    EXPECT_TRUE(files.moveItem(here + "/dangling", there + "/dangling"));
    EXPECT_EQ(fs::read_symlink(there + "/link"), "folder");
    EXPECT_EQ(fs::read_symlink(there + "/dangling"), "nowhere");
    EXPECT_EQ(namesIn(here), (Names{"configuration", "folder", "out"}));
}

TEST_P(FileManagerContract, MoveRefusesToReplaceAnything) {
    world->addFile(here + "/file", "new");
    world->addFile(there + "/file", "old");
    ASSERT_TRUE(files.createFolder(there + "/empty"));
    ASSERT_TRUE(files.createFolder(here + "/folder"));
    for (const char* source : {"/file", "/folder"})
        for (const char* target : {"/file", "/empty"})
            expectRefusal(here + source, there + target);
    EXPECT_EQ(namesIn(there), (Names{"empty", "file"}));
}

TEST_P(FileManagerContract, MoveRefusesWithoutSourceParentOrRoom) {
    world->addFile(here + "/folder/file", "text");
    world->addFile(there + "/file", "text");
    expectRefusal(here + "/missing", there + "/missing");
    expectRefusal(here + "/folder", there + "/missing/folder");
    expectRefusal(here + "/folder", there + "/file/folder");
    expectRefusal(here + "/folder", here + "/folder/inside");
    EXPECT_EQ(namesIn(here + "/folder"), (Names{"file"}));
}

TEST_P(FileManagerContract, MoveRefusesWhatTheProgramItselfStandsOn) {
    expectRefusal(world->settings, there + "/settings");
    expectRefusal(here + "/configuration", there + "/configuration");
    expectRefusal(here, there + "/here");
    world->addFile(here + "/configuration/other", "other");
    EXPECT_TRUE(files.moveItem(here + "/configuration/other", there + "/other"));
    EXPECT_EQ(world->textAt(world->settings), "settings");
}

TEST_P(FileManagerLinks, AreNothingThatAMoveMayReplaceAndNoWayRoundARefusal) {
    fs::create_symlink("nowhere", there + "/dangling");
    fs::create_symlink("configuration", here + "/alias");
    for (const char* source : {"/folder", "/folder/file"})
        expectRefusal(here + source, there + "/dangling");
    expectRefusal(here + "/folder", here + "/link/inside");
    expectRefusal(here + "/alias/settings", there + "/settings");
    EXPECT_TRUE(files.moveItem(here + "/alias", there + "/alias")); // only a way there, which nobody takes
    EXPECT_EQ(world->textAt(here + "/folder/file"), "text");
    EXPECT_TRUE(fs::is_symlink(there + "/dangling"));
}

TEST_P(FileManagerContract, FindsOnlyWhatIsThere) {
    world->addFile(here + "/folder/file", "text");
    EXPECT_TRUE(files.fileExists(here + "/folder"));
    EXPECT_TRUE(files.folderExists(here + "/folder/"));
    EXPECT_TRUE(files.fileExists(here + "/folder/file/"));
    EXPECT_FALSE(files.folderExists(here + "/folder/file"));
    EXPECT_FALSE(files.fileExists(here + "/missing/file"));
    EXPECT_FALSE(files.fileExists(here + "/folder/file/inside"));
    EXPECT_FALSE(files.contentsOfFolder(here + "/missing"));
    EXPECT_FALSE(files.contentsOfFolder(here + "/folder/file"));
}

TEST_P(FileManagerLinks, AreFollowedToWhatIsThereButNeverRemovedThrough) {
    EXPECT_TRUE(files.fileExists(here + "/link/file"));
    EXPECT_TRUE(files.folderExists(here + "/link/"));
    EXPECT_FALSE(files.fileExists(here + "/dangling"));
    fs::create_symlink("ring", there + "/ring"); // what can't be looked at
    EXPECT_TRUE(files.fileExists(there + "/ring") && files.folderExists(there + "/ring"));
    fs::remove(there + "/ring");
    EXPECT_TRUE(files.createFolder(here + "/link"));
    EXPECT_FALSE(files.createFolder(here + "/dangling"));
    world->addFile(there + "/kept", "kept");
    fs::rename(here + "/out", here + "/folder/out");
    EXPECT_TRUE(files.removeItem(here + "/link"));
    EXPECT_EQ(namesIn(here + "/folder"), (Names{"file", "out"}));
    EXPECT_TRUE(files.removeItem(here + "/folder/"));
    EXPECT_EQ(namesIn(here), (Names{"configuration", "dangling"}));
    EXPECT_EQ(namesIn(there), (Names{"kept"}));
}

TEST_P(FileManagerContract, TakesNothingForAPathThatIsNone) {
    world->addFile(here + "/file", "text");
    const std::string cut = '\0' + std::string{"more"};
    for (const std::string& path :
         {std::string{}, std::string{"relative"}, here + "/file" + cut, here + "/new" + cut}) {
        EXPECT_FALSE(files.fileExists(path)) << path;
        EXPECT_FALSE(files.folderExists(path)) << path;
        EXPECT_FALSE(files.createFolder(path)) << path;
        EXPECT_FALSE(files.contentsOfFolder(path)) << path;
        EXPECT_FALSE(files.moveItem(path, there + "/moved")) << path;
        EXPECT_FALSE(files.moveItem(here + "/file", path)) << path;
        EXPECT_FALSE(files.removeItem(path)) << path;
    }
    EXPECT_EQ(namesIn(here), (Names{"configuration", "file"}));
    EXPECT_EQ(namesIn(there), Names{});
}

TEST_P(FileManagerContract, CreatesFoldersWithParentsAndOverNoFile) {
    EXPECT_TRUE(files.createFolder(here + "/a/b/c"));
    EXPECT_TRUE(files.createFolder(here + "/a/b/"));
    EXPECT_TRUE(files.folderExists(here + "/a/b/c"));
    world->addFile(here + "/file", "text");
    EXPECT_FALSE(files.createFolder(here + "/file"));
    EXPECT_FALSE(files.createFolder(here + "/file/inside"));
}

TEST_P(FileManagerContract, RemovesWholeTreesButNeverTheHomeFolderOrTheRoot) {
    world->addFile(here + "/kept", "kept");
    world->addFile(here + "/folder/inner/file", "text");
    EXPECT_TRUE(files.removeItem(here + "/folder/"));
    EXPECT_FALSE(files.removeItem(here + "/folder"));
    const std::string home = files.homeFolder();
    for (const std::string& path : {std::string{"/"}, home, home + "//", home + "/here/.."})
        EXPECT_FALSE(files.removeItem(path)) << path;
    EXPECT_EQ(namesIn(here), (Names{"configuration", "kept"}));
}

INSTANTIATE_TEST_SUITE_P(Over, FileManagerContract,
                         testing::Values("Fake", "PosixWithin", "PosixByHand", "PosixAcross"),
                         [](const auto& world) { return world.param; });
INSTANTIATE_TEST_SUITE_P(Over, FileManagerLinks, testing::Values("PosixWithin", "PosixByHand", "PosixAcross"),
                         [](const auto& world) { return world.param; });

} // namespace letterloft
