// A settings write that goes wrong at each of its system calls in turn. The settings are never lost, and the next write
// runs to its end.

#include "platform/linux/PlistSettingsStore.h"
#include "tests/contract/files/ScratchFolders.h"
#include "tests/fakes/FakeLog.h"
#include "tests/sweeps/FaultyCalls.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace letterloft {
namespace {

namespace fs = std::filesystem;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::IsSubsetOf;
using Fault = FaultyCalls::Fault;

Result<std::unique_ptr<PlistSettingsStore>> load(const std::string& path, FileSystemCalls& calls, Log& log) {
    return PlistSettingsStore::load(path, calls, log, [] { return Status::ok(); });
}

// What the file at `path` holds under "n"; "damaged" if it can't be read.
std::string generation(const std::string& path) {
    FileSystemCalls calls;
    FakeLog log;
    const auto store = load(path, calls, log);
    return store ? (*store)->text("n").value_or("none") : "damaged";
}

Status writeGeneration(const std::string& path, FileSystemCalls& calls, const std::string& value) {
    FakeLog log;
    const PropertyList list = emptyPropertyList();
    plist_dict_set_item(list.get(), "n", plist_new_string(value.c_str()));
    plist_dict_set_item(list.get(), "long", plist_new_string(std::string(10000, 'x').c_str()));
    const Result<std::string> bytes = propertyListBytes(list);
    return bytes ? SettingsFile{path, calls}.replace(*bytes, log) : bytes.status();
}

// The settings before the fault: how many generations there are, and whether the file's name is a link.
struct Start {
    int generations;
    bool isLink;
};

class SettingsSweep : public ::testing::TestWithParam<std::tuple<Start, Fault>> {
protected:
    void prepare() {
        fs::remove_all(scratch_.at("home"));
        const Start start = std::get<0>(GetParam());
        if (start.isLink) {
            fs::create_directories(fs::path{path_}.parent_path());
            fs::create_directories(scratch_.at("home/dotfiles"));
            fs::create_symlink(scratch_.at("home/dotfiles/settings.plist"), path_);
        }
        FileSystemCalls calls;
        for (int n = 1; n <= start.generations; ++n)
            ASSERT_TRUE(writeGeneration(path_, calls, std::to_string(n)));
    }

    // Whether the fault was past the last call.
    bool writeWithFaultAt(int n) {
        const Fault fault = std::get<1>(GetParam());
        FaultyCalls calls{fault, n};
        const Status written = writeGeneration(path_, calls, "new");
        EXPECT_TRUE(!written || generation(path_) == "new") << n;
        EXPECT_TRUE(!written || calls.doubt.empty()) << calls.doubt << " has failed in vain";
        EXPECT_TRUE(written || fault == Fault::fails || fault == Fault::failsFromThenOn) << written.sentence();
        return calls.count < n;
    }

    void checkThatNothingIsLost(int n) {
        const Start start = std::get<0>(GetParam());
        const std::string last = start.generations == 0 ? "none" : std::to_string(start.generations);
        const std::string before = std::to_string(start.generations - 1);
        EXPECT_THAT(generation(path_), AnyOf(last, "new")) << n;
        if (start.generations > 1) {
            EXPECT_THAT(generation(target() + ".bak"), AnyOf(last, before)) << n;
        }
        EXPECT_EQ(fs::is_symlink(path_), start.isLink) << n;
    }

    void checkThatTheNextWriteIsWhole(int n) {
        FileSystemCalls calls;
        const Status written = writeGeneration(path_, calls, "next");
        EXPECT_TRUE(written) << n << written.sentence();
        EXPECT_EQ(generation(path_), "next") << n;
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator{fs::path{target()}.parent_path()})
            names.push_back(entry.path().filename());
        EXPECT_THAT(names, IsSubsetOf({"settings.plist", "settings.plist.bak"})) << n;
    }

    std::string target() const { return fs::is_symlink(path_) ? fs::read_symlink(path_).string() : path_; }

    ScratchFolders scratch_;
    std::string path_ = scratch_.at("home/letterloft/settings.plist");
};

TEST_P(SettingsSweep, LosesNothingAtAnyCall) {
    int n = 0;
    for (bool isPast = false; !isPast; checkThatTheNextWriteIsWhole(n)) {
        ASSERT_LT(++n, 200);
        prepare();
        isPast = writeWithFaultAt(n);
        checkThatNothingIsLost(n);
    }
    EXPECT_GT(n, 10);
    RecordProperty("points", n - 1);
}

INSTANTIATE_TEST_SUITE_P(Everything, SettingsSweep,
                         ::testing::Combine(::testing::Values(Start{0, false}, Start{1, false}, Start{3, false},
                                                              Start{3, true}),
                                            ::testing::Values(Fault::fails, Fault::failsFromThenOn, Fault::isCutShort,
                                                              Fault::isInterrupted)));

// Without the first sync a power cut leaves an empty file under the name, without the second one the old settings.
TEST(ASettingsWriteIsDurable, BeforeItGetsItsNameAndAfter) {
    const ScratchFolders scratch;
    const std::string path = scratch.at("settings.plist");
    FaultyCalls calls;
    ASSERT_TRUE(writeGeneration(path, calls, "1"));
    ASSERT_TRUE(writeGeneration(path, calls, "2"));
    const auto last = std::find(calls.order.rbegin(), calls.order.rend(), "write").base();
    EXPECT_THAT(std::vector<std::string>(last, calls.order.end()),
                ElementsAre("fsync", "make", "rename", "rename", "openat", "fsync"));
}

// A first run would write the defaults over what could not be looked at.
TEST(ALoadThatGoesWrong, IsNeverTakenForAFirstRun) {
    const ScratchFolders scratch;
    const std::string path = scratch.at("letterloft/settings.plist");
    FileSystemCalls sound;
    ASSERT_TRUE(writeGeneration(path, sound, "1"));
    for (const Fault fault : {Fault::fails, Fault::isCutShort, Fault::isInterrupted}) {
        for (int n = 1;; ++n) {
            FaultyCalls calls{fault, n};
            FakeLog log;
            const auto store = load(path, calls, log);
            EXPECT_TRUE(!store || (*store)->text("n") == "1") << n;
            if (calls.count < n) break;
        }
    }
}

} // namespace
} // namespace letterloft
