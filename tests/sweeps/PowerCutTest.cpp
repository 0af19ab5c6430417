// What a power cut leaves of whole operations: both file systems stop at once, lose what was not durable, and are
// mounted again. Needs root, loop devices and the file system's own tools; where those are missing it says so.

#include "tests/contract/files/ScratchFolders.h"
#include "tests/sweeps/WholeOperations.h"

#include <cstdlib>
#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <tuple>
#include <unistd.h>

namespace letterloft {
namespace {

// EXT4_IOC_SHUTDOWN and XFS_IOC_GOINGDOWN, which are one, with the flag that leaves the journal unwritten; neither
// header can be included everywhere.
constexpr unsigned long stopRequest = _IOR('X', 125, std::uint32_t);
constexpr std::uint32_t withoutJournal = 2;

bool runs(const std::string& command) { return std::system(("(" + command + ") >/dev/null 2>&1").c_str()) == 0; }

// A file system of its own, in a file.
class LoopDisk {
public:
    LoopDisk(const std::string& type, std::string folder) : folder_{std::move(folder)} {
        const std::string image = folder_ + ".image";
        mount_ = "mount -o loop" + std::string{type == "ext4" ? ",noauto_da_alloc " : " "} + image + " " + folder_;
        isThere_ = runs("truncate -s 320M " + image + " && mkfs." + type + " -q " + image + " && mkdir " + folder_) &&
                   runs(mount_);
    }
    ~LoopDisk() {
        if (isThere_ && !runs("umount " + folder_)) ADD_FAILURE() << folder_ << " stays mounted";
    }
    LoopDisk(const LoopDisk&) = delete;
    LoopDisk& operator=(const LoopDisk&) = delete;

    bool isThere() const { return isThere_; }
    const std::string& folder() const { return folder_; }

    void sync() const { EXPECT_TRUE(runs("sync -f " + folder_)); }

    void stop() const {
        std::uint32_t flags = withoutJournal;
        const int root = open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        EXPECT_EQ(ioctl(root, stopRequest, &flags), 0);
        close(root);
    }

    void startAgain() const { ASSERT_TRUE(runs("umount " + folder_) && runs(mount_)); }

private:
    std::string folder_;
    std::string mount_;
    bool isThere_ = false;
};

class PowerCut : public testing::TestWithParam<std::tuple<std::string, Operation>> {
protected:
    // What another program's mount namespace takes over would stay stopped.
    static void SetUpTestSuite() {
        if (unshare(CLONE_NEWNS) == 0) mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    }

    void SetUp() override {
        if (!near_.isThere() || !far_.isThere())
            GTEST_SKIP() << "LEFT OUT: no " << type_ << " can be made and mounted here";
    }

    void cutPower() const {
        near_.stop();
        far_.stop();
        near_.startAgain();
        far_.startAgain();
    }

    const std::string type_ = std::get<0>(GetParam());
    ScratchFolders scratch_;
    LoopDisk near_{type_, scratch_.onMemory() + "/near-disk"};
    LoopDisk far_{type_, scratch_.onMemory() + "/far-disk"};
};

TEST_P(PowerCut, LosesNothingAndNoSettingIsNewerThanItsMoves) {
    const OperationTrial trial{std::get<1>(GetParam()), near_.folder(), far_.folder()};
    constexpr int cuts = 25;
    const int step = trial.points() / cuts + 1;
    for (int at = trial.points() + 1; at > 0 && !HasFailure(); at -= step) {
        SCOPED_TRACE(at);
        trial.home().make();
        near_.sync();
        far_.sync();
        const bool died = trial.diesAt(at, true);
        cutPower();
        trial.expectNothingLost();
        if (!died) trial.expectDone();
        trial.expectRecovery(1);
    }
}

INSTANTIATE_TEST_SUITE_P(On, PowerCut,
                         testing::Combine(testing::Values("ext4", "xfs"), testing::ValuesIn(wholeOperations)),
                         [](const auto& made) { return std::get<0>(made.param) + std::get<1>(made.param).name; });

} // namespace
} // namespace letterloft
