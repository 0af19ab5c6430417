// Moves and removals that die, fail or are cut short at each of their system calls in turn.

#include "platform/linux/PosixFileManager.h"
#include "tests/contract/files/ScratchFolders.h"
#include "tests/fakes/FakeCopyProgress.h"
#include "tests/fakes/FakeLog.h"
#include "tests/sweeps/FaultyCalls.h"

#include <algorithm>
#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostream>
#include <sys/stat.h>
#include <unistd.h>

namespace letterloft {

namespace fs = std::filesystem;

namespace {

using Fault = FaultyCalls::Fault;

// One torture tree, or one file, that is moved from one folder to another.
class Scene {
public:
    Scene(const ScratchFolders& scratch, bool across, bool folder)
        : from_{scratch.onMemory() + "/from"}, to_{(across ? scratch.onDisk() : scratch.onMemory()) + "/to"} {
        fs::remove_all(from_);
        fs::remove_all(to_);
        fs::create_directories(from_);
        fs::create_directories(to_);
        writeFile(sentinel_ = from_ + "/sentinel", "untouched");
        if (folder)
            makeTortureTree(source(), sentinel_);
        else
            writeFile(source(), std::string(600000, 'x'));
        before_ = described(source());
        sentinelBefore_ = described(sentinel_);
    }

    std::string source() const { return from_ + "/item"; }
    std::string target() const { return to_ + "/item"; }
    const std::string& from() const { return from_; }
    const std::string& to() const { return to_; }
    bool sourceIsWhole() const { return described(source()) == before_; }
    bool targetIsWhole() const { return described(target()) == before_; }
    bool sourceIsGone() const { return described(source()).empty(); }
    bool targetIsGone() const { return described(target()).empty(); }
    bool sentinelStands() const { return described(sentinel_) == sentinelBefore_; }

    // How many files end in that.
    long countOf(const std::string& text) const {
        long count = 0;
        for (const std::string& folder : {from_, to_})
            for (const auto& entry : described(folder))
                count += entry.second.ends_with(text);
        return count;
    }

    // What is there beside the item, the sentinel aside.
    std::vector<std::string> marks() const {
        std::vector<std::string> names;
        for (const std::string& folder : {from_, to_})
            for (const auto& entry : fs::directory_iterator(folder))
                if (entry.path().filename() != "item" && entry.path().filename() != "sentinel")
                    names.push_back(entry.path());
        return names;
    }

private:
    std::string from_;
    std::string to_;
    std::string sentinel_;
    TreeDescription before_;
    TreeDescription sentinelBefore_;
};

struct Disk {
    explicit Disk(FileSystemCalls& calls) : files{{log, calls, progress}, "/nowhere", {}} {}

    FakeLog log;
    FakeCopyProgress progress;
    PosixFileManager files;
};

int countedCalls(const std::function<void(PosixFileManager&)>& operation) {
    FaultyCalls calls;
    Disk disk{calls};
    operation(disk.files);
    return calls.count;
}

// What is moved, and whether to another file system.
struct Kind {
    const char* name;
    bool across;
    bool folder;
};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; } // NOLINT: called by the test framework

class MoveSweep : public testing::TestWithParam<Kind> {
protected:
    Scene fresh() const { return {scratch_, GetParam().across, GetParam().folder}; }

    static auto moving(const Scene& scene) {
        return [&scene](PosixFileManager& files) { return files.moveItem(scene.source(), scene.target()); };
    }

    int points() const {
        const int count = counted(true).count;
        RecordProperty("points", count);
        return count;
    }

    FaultyCalls counted(bool inKernel) const {
        const Scene scene = fresh();
        FaultyCalls calls;
        calls.copiesInKernel = inKernel;
        Disk disk{calls};
        EXPECT_TRUE(moving(scene)(disk.files));
        return calls;
    }

    void fault(Fault fault, int at, bool inKernel) const;

    // After recovery, by a program that starts anew, the item stands whole at exactly one place with nothing beside it.
    static void expectRecovery(const Scene& scene) {
        FaultyCalls calls;
        Disk disk{calls};
        disk.files.settle({scene.from(), scene.to()});
        EXPECT_NE(scene.sourceIsWhole() && scene.targetIsGone(), scene.targetIsWhole() && scene.sourceIsGone());
        EXPECT_THAT(scene.marks(), testing::IsEmpty());
        EXPECT_THAT(disk.log.lines, testing::IsEmpty());
        if (scene.sourceIsWhole()) {
            EXPECT_TRUE(disk.files.moveItem(scene.source(), scene.target()));
        }
        EXPECT_TRUE(scene.targetIsWhole() && scene.sourceIsGone() && scene.sentinelStands());
    }

    ScratchFolders scratch_;
};

} // namespace

// The disk is left as a program leaves it that dies there.
TEST_P(MoveSweep, StopsAtEveryCall) {
    const int last = points();
    for (int at = 1; at <= last && !HasFailure(); ++at) {
        SCOPED_TRACE(at);
        const Scene scene = fresh();
        FaultyCalls calls{Fault::failsFromThenOn, at};
        Disk disk{calls};
        const Status moved = moving(scene)(disk.files);
        EXPECT_TRUE(moved ? scene.targetIsWhole() : scene.sourceIsWhole()) << moved.sentence();
        EXPECT_TRUE(scene.targetIsGone() || scene.targetIsWhole()) << "an incomplete item under its own name";
        EXPECT_FALSE(disk.progress.open);
        expectRecovery(scene);
    }
}

void MoveSweep::fault(Fault fault, int at, bool inKernel) const {
    const Scene scene = fresh();
    FaultyCalls calls{fault, at};
    calls.copiesInKernel = inKernel;
    Disk disk{calls};
    const Status moved = moving(scene)(disk.files);
    EXPECT_FALSE(disk.progress.open);
    if (!moved) {
        EXPECT_TRUE(scene.sourceIsWhole()) << moved.sentence();
    } else if (disk.log.lines.empty()) {
        EXPECT_TRUE(scene.targetIsWhole() && scene.sourceIsGone());
    } else { // an attribute that could not be kept, or a remainder that could not be removed
        EXPECT_FALSE(scene.targetIsGone());
    }
    if (fault == Fault::fails) { // the third fsync is of the source, which may go
        EXPECT_TRUE(!moved || calls.doubt.empty() || calls.doubt == "fsync 3") << calls.doubt << " has failed in vain";
    } else {
        EXPECT_TRUE(moved && disk.log.lines.empty());
    }
    EXPECT_TRUE(scene.sentinelStands());
    FaultyCalls whole;
    Disk after{whole};
    after.files.settle({scene.from(), scene.to()});
    EXPECT_THAT(scene.marks(), testing::IsEmpty());
    EXPECT_TRUE(scene.sourceIsWhole() || scene.targetIsWhole() || !disk.log.lines.empty());
}

// With the ways of the kernel to copy, and without.
TEST_P(MoveSweep, MeetsAnErrorAtEveryCall) {
    for (const bool inKernel : {true, false}) {
        const FaultyCalls whole = counted(inKernel);
        for (int at = 1; at <= whole.count && !HasFailure(); ++at) {
            SCOPED_TRACE(at);
            fault(Fault::fails, at, inKernel);
        }
        for (const int at : whole.cuttable) {
            SCOPED_TRACE(at);
            fault(Fault::isCutShort, at, inKernel);
            fault(Fault::isInterrupted, at, inKernel);
            if (HasFailure()) return;
        }
    }
}

TEST_P(MoveSweep, ReplacesNothingThatComesRightBeforeARename) {
    for (int at = 1; !HasFailure(); ++at) {
        SCOPED_TRACE(at);
        const Scene scene = fresh();
        FaultyCalls calls;
        Disk disk{calls};
        int renames = 0;
        struct stat rival {};
        int open = -1; // what is replaced has no name any more
        calls.beforeRename = [&](int folder, const char* to) {
            if (++renames != at) return;
            EXPECT_EQ(GetParam().folder ? mkdirat(folder, to, 0700) : mknodat(folder, to, S_IFREG, 0), 0);
            open = openat(folder, to, O_PATH | O_CLOEXEC);
        };
        const Status moved = moving(scene)(disk.files);
        EXPECT_TRUE(moved ? scene.targetIsWhole() && scene.sourceIsGone() : scene.sourceIsWhole());
        if (renames < at) return RecordProperty("points", at - 1);
        EXPECT_EQ(fstat(open, &rival), 0);
        EXPECT_GT(rival.st_nlink, 0U);
        close(open);
    }
}

// One writer has a file open all the time; the other opens a file, and makes one, in a folder that it has open.
TEST_P(MoveSweep, LosesNothingThatIsWrittenMeanwhile) {
    const int last = points();
    for (int at = 1; at <= last && !HasFailure(); ++at) {
        SCOPED_TRACE(at);
        const Scene scene = fresh();
        FaultyCalls calls{Fault::none, at};
        Disk disk{calls};
        const bool folder = GetParam().folder;
        const int place = open(scene.source().c_str(), folder ? O_PATH | O_CLOEXEC : O_WRONLY | O_APPEND | O_CLOEXEC);
        long texts = 0;
        calls.meanwhile = [&] {
            if (!folder) return void(texts = write(place, "late", 4) == 4);
            for (const char* name : {"program", "new"}) {
                // A file that is about to be removed can't be opened, or waits until then.
                const int file = openat(place, name, O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0600);
                texts += write(file, "late", 4) == 4;
                close(file);
            }
        };
        const Status moved = moving(scene)(disk.files);
        close(place);
        EXPECT_GE(scene.countOf("late"), texts) << "lost";
        EXPECT_TRUE(moved ? (scene.sourceIsGone() && scene.marks().empty()) || !disk.log.lines.empty()
                          : scene.targetIsGone());
    }
}

INSTANTIATE_TEST_SUITE_P(Of, MoveSweep,
                         testing::Values(Kind{"AFolderWithin", false, true}, Kind{"AFolderAcross", true, true},
                                         Kind{"AFileAcross", true, false}),
                         [](const auto& kind) { return std::string{kind.param.name}; });

// A power cut takes what was not yet durable; what is durable is a matter of order.
TEST(AcrossFileSystems, EveryStepIsDurableBeforeTheNext) {
    const ScratchFolders scratch;
    const Scene scene{scratch, true, true};
    FaultyCalls calls;
    Disk disk{calls};
    ASSERT_TRUE(disk.files.moveItem(scene.source(), scene.target()));
    const auto& order = calls.order;
    std::vector<std::string> steps;
    for (const std::string& call : order) {
        const bool counts = call != "openat" && call != "read";
        if (counts && (steps.empty() || steps.back() != call)) steps.push_back(call);
    }
    // The first rename finds that there are two file systems; then the note and the copy, the sync of the copy and of
    // the note, the item's name, the source set aside, and at last the removal.
    const auto sync = std::find(steps.begin(), steps.end(), "syncfs");
    EXPECT_THAT(std::vector(sync, steps.end()),
                testing::ElementsAre("syncfs", "fsync", "rename", "fsync", "rename", "fsync", "unlink"));
    EXPECT_EQ(std::count(order.begin(), order.end(), "syncfs"), 1);
    EXPECT_EQ(std::count(order.begin(), order.end(), "fsync"), 3);
}

TEST(AcrossFileSystems, ARemainderStaysAsideWhereItsNameIsTaken) {
    const ScratchFolders scratch;
    const Scene scene{scratch, true, false};
    FaultyCalls calls;
    Disk disk{calls};
    const int held = open(scene.source().c_str(), O_RDONLY | O_CLOEXEC);
    int renames = 0; // the first in vain, then the copy, the source aside, and back
    calls.beforeRename = [&](int, const char*) {
        if (++renames == 4) writeFile(scene.source(), "another");
    };
    EXPECT_TRUE(disk.files.moveItem(scene.source(), scene.target()));
    close(held);
    EXPECT_TRUE(scene.targetIsWhole());
    EXPECT_EQ(contentsOf(scene.source()), "another");
    EXPECT_THAT(disk.log.lines, testing::ElementsAre(testing::HasSubstr(".aside")));
    disk.files.settle({scene.from()});
    EXPECT_THAT(scene.marks(), testing::IsEmpty());
}

TEST(RemovalSweep, LeavesWhatItDidNotReachAndTouchesNothingElse) {
    const ScratchFolders scratch;
    const auto removing = [](const Scene& scene) {
        return [&scene](PosixFileManager& files) { return files.removeItem(scene.source()); };
    };
    const Scene trial{scratch, false, true};
    const int last = countedCalls([&](PosixFileManager& files) { EXPECT_TRUE(removing(trial)(files)); });
    RecordProperty("points", last);
    for (int at = 1; at <= last && !testing::Test::HasFailure(); ++at) {
        SCOPED_TRACE(at);
        for (const Fault fault : {Fault::failsFromThenOn, Fault::fails}) {
            const Scene scene{scratch, false, true};
            FaultyCalls calls{fault, at};
            Disk disk{calls};
            if (removing(scene)(disk.files)) {
                EXPECT_TRUE(scene.sourceIsGone()) << "success without a removal";
            }
            EXPECT_TRUE(scene.sentinelStands());
            calls.strikeAt(Fault::none, 0);
            EXPECT_TRUE(scene.sourceIsGone() || disk.files.removeItem(scene.source()));
            EXPECT_TRUE(scene.sourceIsGone());
        }
    }
}

} // namespace letterloft
