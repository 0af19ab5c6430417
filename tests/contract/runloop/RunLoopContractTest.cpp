#include "platform/qt/QtDescriptorWatcher.h"
#include "platform/qt/QtRunLoop.h"
#include "tests/fakes/FakeRunLoop.h"

#include <QCoreApplication>
#include <QTimer>

#include <gtest/gtest.h>

#include <array>
#include <unistd.h>

namespace letterloft {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

struct FakeUnderTest {
    RunLoop& loop() { return fake; }
    void post(std::function<void()> event) { fake.events.push_back(std::move(event)); }

    FakeRunLoop fake;
};

struct QtUnderTest {
    RunLoop& loop() { return real; }
    void post(std::function<void()> event) { QMetaObject::invokeMethod(qApp, std::move(event), Qt::QueuedConnection); }

    QtRunLoop real;
};

template <typename UnderTest>
class RunLoopContract : public testing::Test {
protected:
    bool turn() { return test.loop().runModeBeforeDate(Clock::now() + 1s); }

    UnderTest test;
};

using RunLoops = testing::Types<FakeUnderTest, QtUnderTest>;
TYPED_TEST_SUITE(RunLoopContract, RunLoops);

TYPED_TEST(RunLoopContract, ServesEventsNested) {
    std::string order;
    this->test.post([&] {
        order += "(";
        while (order.size() < 2)
            ASSERT_TRUE(this->turn());
        order += ")";
    });
    this->test.post([&] { order += "x"; });
    while (order.size() < 3)
        ASSERT_TRUE(this->turn());
    EXPECT_EQ(order, "(x)");
}

TYPED_TEST(RunLoopContract, ReturnsAtAnInstantThatHasPassed) {
    EXPECT_TRUE(this->test.loop().runModeBeforeDate(Clock::now() - 1h));
}

TEST(QtRunLoop, WaitsForTheInstant_WhenNothingComes) {
    QtRunLoop loop;
    const auto instant = Clock::now() + 20ms;
    while (Clock::now() < instant)
        ASSERT_TRUE(loop.runModeBeforeDate(instant)); // returns early only for an event
}

TEST(QtRunLoop, IsWokenByADescriptor_BeforeTheInstant) {
    std::array<int, 2> pipeEnds{};
    ASSERT_EQ(pipe(pipeEnds.data()), 0);
    QtDescriptorWatcher watcher;
    bool isTold = false;
    std::unique_ptr<DescriptorWatcher::Watch> watch;
    watch = watcher.watchReadable(pipeEnds[0], [&] {
        isTold = true;
        watch.reset(); // allowed to the handler
    });
    ASSERT_EQ(write(pipeEnds[1], "x", 1), 1);
    QtRunLoop loop;
    while (!isTold)
        ASSERT_TRUE(loop.runModeBeforeDate(Clock::now() + 1h));
    close(pipeEnds[0]);
    close(pipeEnds[1]);
}

TEST(QtRunLoop, GoesOnServing_AfterTheEndOfTheEventLoopWasAskedFor) {
    QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(); });
    QCoreApplication::exec();
    bool isHandled = false;
    QMetaObject::invokeMethod(
        qApp, [&] { isHandled = true; }, Qt::QueuedConnection);
    QtRunLoop loop;
    while (!isHandled)
        ASSERT_TRUE(loop.runModeBeforeDate(Clock::now() + 1s));
}

} // namespace
} // namespace letterloft
