// What the interface promises, over real processes and over the double that the controllers are tested with.
#include "tests/contract/applications/ApplicationsFixture.h"
#include "tests/fakes/FakeRunningApplications.h"

namespace letterloft {

namespace {

// How a test starts an application and lets time pass, on either kind.
class RealKind : public Applications {
protected:
    std::string application() { return program("bin/mailer"); }
    void startInstance(const std::string& path) { start({"setsid", path}); }
    std::vector<std::unique_ptr<RunningApplication>> list(const std::string& path) { return instances(path); }
    void serve() { watcher.serve(-1); }
};

class FakeKind : public testing::Test {
protected:
    std::string application() { return "/opt/mailer"; }
    void startInstance(const std::string& path) { fake_.start(path); }
    std::vector<std::unique_ptr<RunningApplication>> list(const std::string& path) {
        return fake_.runningInstances(path);
    }
    void serve() { runLoop_.runModeBeforeDate(std::chrono::steady_clock::now()); }

private:
    FakeRunLoop runLoop_;
    FakeRunningApplications fake_{runLoop_};
};

template <typename Kind>
class RunningInstances : public Kind {};
using Kinds = testing::Types<RealKind, FakeKind>;
TYPED_TEST_SUITE(RunningInstances, Kinds);

TYPED_TEST(RunningInstances, EndAsEventsOfTheRunLoopAndOnlyThoseAskedThen) {
    const std::string path = this->application();
    this->startInstance(path);
    this->startInstance(path);
    const auto all = this->list(path);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_FALSE(all[0]->isTerminated());
    this->startInstance(path);
    all[0]->terminate();
    while (!all[0]->isTerminated())
        this->serve();
    EXPECT_FALSE(all[1]->isTerminated());
    EXPECT_EQ(this->list(path).size(), 2u);
}

} // namespace

} // namespace letterloft
