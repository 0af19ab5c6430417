#include "platform/linux/HeldProcess.h"
#include "tests/contract/quitting/Desktop.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace letterloft {

namespace {

class Held : public testing::Test {
protected:
    static Started start(const std::string& reaction) {
        return Started{{LETTERLOFT_TEST_PROGRAM, "sigterm=" + reaction}};
    }

    // Once it is up.
    static HeldProcess held(Started& started) {
        return std::move(*HeldProcess::hold(*ProcessIdentity::ofProcess(started.ready())));
    }

    Desktop desktop;
};

} // namespace

TEST_F(Held, IsNeverTheNextOneOfItsNumber) {
    const ProcessIdentity own = *ProcessIdentity::ofProcess(getpid());
    EXPECT_TRUE(HeldProcess::hold(own));
    EXPECT_FALSE(HeldProcess::hold({own.pid, own.startTime - 1}));
    Started started = start("default");
    const ProcessIdentity former = *ProcessIdentity::ofProcess(started.pid());
    kill(started.pid(), SIGKILL);
    EXPECT_EQ(started.status(), -SIGKILL);
    EXPECT_FALSE(HeldProcess::hold(former));
}

TEST_F(Held, HasNotEndedForWantOfADescriptor) {
    Started started = start("handle");
    const ProcessIdentity identity = held(started).identity();
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit none{0, usual.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const auto process = HeldProcess::hold(identity);
    const bool hadEnded = process && process->hasEnded();
    setrlimit(RLIMIT_NOFILE, &usual);
    ASSERT_TRUE(process);
    EXPECT_EQ(process->descriptor(), -1);
    EXPECT_FALSE(hadEnded);
    EXPECT_FALSE(process->sendSigterm());
    kill(started.pid(), SIGTERM);
    while (!process->hasEnded()) { // a zombie by then
    }
    EXPECT_EQ(started.status(), 0);
}

TEST_F(Held, TellsWhatSigtermWouldDo) {
    using Effect = HeldProcess::SigtermEffect;
    for (const auto& [reaction, effect] : {std::pair{"default", Effect::deadly}, std::pair{"handle", Effect::handled},
                                           std::pair{"block", Effect::handled}, std::pair{"ignore", Effect::ignored}}) {
        Started started = start(reaction);
        EXPECT_EQ(held(started).sigtermEffect(), effect) << reaction;
    }
}

} // namespace letterloft
