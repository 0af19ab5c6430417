#include "platform/linux/LinuxRunningApplication.h"
#include "platform/linux/XWindows.h"
#include "tests/contract/quitting/Desktop.h"
#include "tests/contract/quitting/PollWatcher.h"
#include "tests/fakes/FakeLog.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>
#include <xcb/xcb.h>

namespace letterloft {

namespace {

constexpr const char* testProgram = LETTERLOFT_TEST_PROGRAM;
constexpr int sliceInMilliseconds = 1000;
constexpr const char* applicationId = "org.letterloft.Tester";

HeldProcess held(pid_t pid) { return std::move(*HeldProcess::hold(*ProcessIdentity::ofProcess(pid))); }

std::vector<std::string> command(std::vector<std::string> options) {
    options.insert(options.begin(), testProgram);
    return options;
}

// One program on a desktop of its own, asked to quit as the switch does it.
class Quitting : public testing::Test {
protected:
    Started& start(const std::vector<std::string>& options) {
        program = std::make_unique<Started>(command(options));
        EXPECT_EQ(program->line(), "ready");
        return *program;
    }

    LinuxRunningApplication::Instance instance(std::vector<HeldProcess> others = {}) {
        return {"/applications/tester.desktop", applicationId, held(program->pid()), std::move(others), {}};
    }

    void terminate(LinuxRunningApplication::Instance asked) {
        application = std::make_unique<LinuxRunningApplication>(std::move(asked), bus, watcher, log);
        application->terminate();
    }

    // Starts a program and asks it.
    Started& quit(const std::vector<std::string>& options) {
        start(options);
        terminate(instance());
        return *program;
    }

    // The wait of the switch.
    void waitForEnd() {
        while (!application->isTerminated())
            watcher.serve(sliceInMilliseconds);
    }

    // As long as the program may take to do something it must not do.
    void letSlicesPass(int count) {
        for (int slices = 0; slices < count && !application->isTerminated();) {
            if (!watcher.serve(sliceInMilliseconds)) ++slices;
        }
    }

    bool logSays(const std::string& words) const {
        for (const std::string& line : log.lines) {
            if (line.find(words) != std::string::npos) return true;
        }
        return false;
    }

    Desktop desktop;
    FakeLog log;
    SessionBus bus{log};
    PollWatcher watcher;
    std::unique_ptr<Started> program;
    std::unique_ptr<LinuxRunningApplication> application;
};

// What a window manager writes on the root window (EWMH), and no more.
class TestWindowManager {
public:
    explicit TestWindowManager(const std::vector<std::uint32_t>& clients) {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(server_)).data;
        xcb_create_window(server_, 0, check_, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          XCB_COPY_FROM_PARENT, 0, nullptr);
        write(screen->root, "_NET_CLIENT_LIST", clients);
        write(screen->root, "_NET_SUPPORTING_WM_CHECK", {check_});
        write(check_, "_NET_SUPPORTING_WM_CHECK", {check_});
        settle();
    }
    ~TestWindowManager() { xcb_disconnect(server_); }
    TestWindowManager(const TestWindowManager&) = delete;
    TestWindowManager& operator=(const TestWindowManager&) = delete;

    void dieLeavingItsList() {
        xcb_destroy_window(server_, check_);
        settle();
    }

private:
    void write(xcb_window_t window, const std::string& name, const std::vector<std::uint32_t>& values) {
        auto* atom = xcb_intern_atom_reply(
            server_, xcb_intern_atom(server_, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr);
        xcb_change_property(server_, XCB_PROP_MODE_REPLACE, window, atom->atom, XCB_ATOM_WINDOW, 32,
                            static_cast<std::uint32_t>(values.size()), values.data());
        std::free(atom);
    }

    void settle() { std::free(xcb_get_input_focus_reply(server_, xcb_get_input_focus(server_), nullptr)); }

    xcb_connection_t* server_ = xcb_connect(nullptr, nullptr);
    xcb_window_t check_ = xcb_generate_id(server_);
};

class QuittingOnDisplay : public Quitting {
protected:
    void SetUp() override { display = &desktop.startDisplay(); }

    Started* display = nullptr;
};

class QuittingOnBus : public QuittingOnDisplay {
protected:
    void SetUp() override {
        QuittingOnDisplay::SetUp();
        desktop.startBus();
    }
};

} // namespace

using HeldProcessEnds = Quitting;

TEST_F(HeldProcessEnds, AsAZombieTheMomentTheProgramDoes) {
    Started& started = start({"sigterm=handle"});
    const HeldProcess process = held(started.pid());
    EXPECT_FALSE(process.hasEnded());
    EXPECT_TRUE(process.sendSigterm());
    bool readable = false;
    const auto watch = watcher.watchReadable(process.descriptor(), [&] { readable = true; });
    while (!watcher.serve(sliceInMilliseconds)) {
    }
    EXPECT_TRUE(readable);
    EXPECT_TRUE(process.hasEnded()); // nobody has taken its status yet
    EXPECT_EQ(kill(started.pid(), 0), 0);
    EXPECT_EQ(started.status(), 0);
    EXPECT_TRUE(process.hasEnded());
    EXPECT_FALSE(process.sendSigterm());
}

TEST_F(HeldProcessEnds, AndIsNeverTheNextOneOfItsNumber) {
    const ProcessIdentity own = *ProcessIdentity::ofProcess(getpid());
    EXPECT_TRUE(HeldProcess::hold(own));
    EXPECT_FALSE(HeldProcess::hold({own.pid, own.startTime - 1}));
    Started& started = start({});
    const ProcessIdentity former = *ProcessIdentity::ofProcess(started.pid());
    kill(started.pid(), SIGKILL);
    EXPECT_EQ(started.status(), -SIGKILL);
    EXPECT_FALSE(HeldProcess::hold(former));
}

using SigtermEffect = Quitting;

TEST_F(SigtermEffect, IsToldBeforeItIsSent) {
    using Effect = HeldProcess::SigtermEffect;
    const std::vector<std::pair<std::string, Effect>> cases = {{"default", Effect::deadly},
                                                               {"handle", Effect::handled},
                                                               {"signalfd", Effect::handled},
                                                               {"ignore", Effect::ignored}};
    for (const auto& [reaction, effect] : cases) {
        const Started& started = start({"sigterm=" + reaction});
        EXPECT_EQ(held(started.pid()).sigtermEffect(), effect) << reaction;
    }
}

using QuitBySignal = Quitting;

TEST_F(QuitBySignal, EndsAProgramWithoutDisplay) {
    EXPECT_EQ(quit({"sigterm=default"}).line(), "");
    waitForEnd();
    EXPECT_EQ(program->status(), -SIGTERM);
    quit({"sigterm=handle"});
    waitForEnd();
    EXPECT_EQ(program->status(), 0);
}

TEST_F(QuitBySignal, ReachesAStoppedProgram) {
    start({"sigterm=handle"});
    kill(program->pid(), SIGSTOP);
    while (!held(program->pid()).isStopped()) {
    }
    terminate(instance());
    waitForEnd();
    EXPECT_EQ(program->line(), "sigterm");
}

TEST_F(QuitBySignal, IsNotTriedOnAProgramThatIgnoresIt) {
    quit({"sigterm=ignore"});
    EXPECT_TRUE(logSays("can't be asked to quit"));
    EXPECT_FALSE(application->isTerminated());
    kill(program->pid(), SIGKILL); // by hand
    waitForEnd();
}

TEST_F(QuitBySignal, IsNotTriedOnAWaylandProgramThatWouldDieOfIt) {
    sockaddr_un address{AF_UNIX, {}};
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s/wayland-0", desktop.home().c_str());
    const int compositor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(compositor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(compositor, 2), 0);
    start({"wayland"});
    const int accepted = accept4(compositor, nullptr, nullptr, SOCK_CLOEXEC);
    terminate(instance());
    EXPECT_TRUE(logSays("can't be asked to quit"));
    EXPECT_FALSE(application->isTerminated());
    close(accepted);
    close(compositor);
}

using EndIsNoticed = Quitting;

TEST_F(EndIsNoticed, ByTheRunLoopWithoutATimeOut) {
    quit({"sigterm=handle"});
    constexpr int forEver = -1;
    EXPECT_TRUE(watcher.serve(forEver));
    EXPECT_TRUE(application->isTerminated());
    EXPECT_EQ(watcher.count(), 0U); // an ended process stays readable, and would wake for ever
}

TEST_F(EndIsNoticed, OnlyOfAllProcesses) {
    Started helper{command({"sigterm=ignore"})};
    helper.line();
    start({"sigterm=handle"});
    std::vector<HeldProcess> others;
    others.push_back(held(helper.pid()));
    terminate(instance(std::move(others)));
    EXPECT_EQ(program->line(), "sigterm");
    EXPECT_EQ(program->status(), 0);
    EXPECT_FALSE(application->isTerminated());
    kill(helper.pid(), SIGKILL);
    waitForEnd();
}

TEST_F(EndIsNoticed, OfAProcessThatCameLaterToo) {
    start({"sigterm=handle"});
    auto asked = instance();
    const ProcessIdentity first = asked.program.identity();
    std::unique_ptr<Started> late;
    asked.newcomers = [&](const std::vector<ProcessIdentity>& heldSoFar) {
        EXPECT_EQ(heldSoFar.front(), first);
        std::vector<HeldProcess> newcomers;
        if (late == nullptr && heldSoFar.size() == 1 && held(first.pid).hasEnded()) {
            late = std::make_unique<Started>(command({"sigterm=ignore"}));
            newcomers.push_back(held(late->pid()));
        }
        return newcomers;
    };
    terminate(std::move(asked));
    while (!late) {
        EXPECT_FALSE(application->isTerminated());
        watcher.serve(sliceInMilliseconds);
    }
    EXPECT_FALSE(application->isTerminated());
    kill(late->pid(), SIGKILL);
    waitForEnd();
}

using WindowsAreListed = QuittingOnDisplay;

TEST_F(WindowsAreListed, AsTheWindowManagerSaysWhileItLives) {
    start({"windows=3"});
    XWindows windows;
    const auto asStacked = windows.clientWindows();
    ASSERT_EQ(asStacked.size(), 3U);
    EXPECT_EQ(asStacked[0].pid, program->pid()); // by the X server; the window itself tells another
    EXPECT_EQ(asStacked[0].className, "Tester");
    TestWindowManager manager{{asStacked[2].id, asStacked[0].id}};
    const auto asManaged = windows.clientWindows();
    ASSERT_EQ(asManaged.size(), 2U);
    EXPECT_EQ(asManaged[0].id, asStacked[2].id);
    EXPECT_EQ(asManaged[1].id, asStacked[0].id);
    manager.dieLeavingItsList();
    EXPECT_EQ(windows.clientWindows().size(), 3U);
}

using QuitByWindows = QuittingOnDisplay;

TEST_F(QuitByWindows, NewestFirstAndOneAtATime) {
    quit({"windows=3", "on-close=close", "sigterm=handle"});
    waitForEnd();
    EXPECT_EQ(program->line(), "asked 3");
    EXPECT_EQ(program->line(), "asked 2");
    EXPECT_EQ(program->line(), "asked 1");
    EXPECT_EQ(program->line(), ""); // and no signal
    EXPECT_EQ(program->status(), 0);
}

TEST_F(QuitByWindows, NotPastAWindowThatStays) {
    quit({"windows=2", "on-close=ignore", "sigterm=handle"});
    EXPECT_EQ(program->line(), "asked 2");
    letSlicesPass(1);
    EXPECT_FALSE(application->isTerminated());
    kill(program->pid(), SIGTERM); // by hand
    waitForEnd();
    EXPECT_EQ(program->line(), "sigterm");
}

TEST_F(QuitByWindows, OnlyTheOwnerOfADialog) {
    quit({"windows=1", "dialog", "on-close=close"});
    EXPECT_EQ(program->line(), "asked 1");
}

TEST_F(QuitByWindows, GoesOnOnceTheUserAgrees) {
    quit({"windows=2", "on-close=ask", "sigterm=handle"});
    EXPECT_EQ(program->line(), "asked 2");
    EXPECT_EQ(program->line(), "question");
    letSlicesPass(1);
    kill(program->pid(), SIGUSR1);
    letSlicesPass(1);
    EXPECT_EQ(program->line(), "asked 1"); // nothing in between
    EXPECT_EQ(program->line(), "question");
    kill(program->pid(), SIGUSR1);
    waitForEnd();
    EXPECT_EQ(program->line(), "");
}

TEST_F(QuitByWindows, GivesUpOnceTheUserRefuses) {
    quit({"windows=2", "on-close=ask", "sigterm=handle"});
    EXPECT_EQ(program->line(), "asked 2");
    EXPECT_EQ(program->line(), "question");
    letSlicesPass(1);
    kill(program->pid(), SIGUSR2);
    EXPECT_EQ(program->line(), "refused");
    letSlicesPass(6);
    EXPECT_FALSE(application->isTerminated());
    kill(program->pid(), SIGTERM);
    waitForEnd();
    EXPECT_EQ(program->line(), "sigterm"); // nothing in between
}

TEST_F(QuitByWindows, ThenBySignalIfItGoesOnInTheTray) {
    quit({"windows=1", "on-close=hide", "sigterm=handle"});
    waitForEnd();
    EXPECT_EQ(program->line(), "asked 1");
    EXPECT_EQ(program->line(), "sigterm");
    EXPECT_EQ(program->status(), 0);
}

TEST_F(QuitByWindows, NeverBySignalIfThatWouldKillIt) {
    quit({"windows=1", "on-close=hide"});
    while (!logSays("goes on without a window")) {
        ASSERT_FALSE(application->isTerminated());
        watcher.serve(sliceInMilliseconds);
    }
    EXPECT_FALSE(application->isTerminated());
}

TEST_F(QuitByWindows, NeverOfOneThatCannotTakeTheRequest) {
    quit({"windows=1", "no-delete"});
    EXPECT_TRUE(logSays("can't be asked to quit"));
    letSlicesPass(2);
    EXPECT_FALSE(application->isTerminated());
}

TEST_F(QuitByWindows, NeverOfAnotherProgram) {
    Started stranger{command({"windows=1", "on-close=close"})};
    EXPECT_EQ(stranger.line(), "ready");
    quit({"display"});
    EXPECT_TRUE(logSays("can't be asked to quit")); // shown, without windows, and it would die of the signal
    letSlicesPass(1);
    EXPECT_FALSE(application->isTerminated());
    kill(stranger.pid(), SIGTERM);
    EXPECT_EQ(stranger.line(), ""); // it was never asked
}

TEST_F(QuitByWindows, OutlivesTheDisplay) {
    quit({"windows=1", "on-close=ignore", "sigterm=handle"});
    EXPECT_EQ(program->line(), "asked 1");
    kill(display->pid(), SIGTERM);
    display->status();
    letSlicesPass(2);
    EXPECT_FALSE(application->isTerminated());
    setenv("DISPLAY", ":59999", 1); // another test's server may have taken the number that has become free
    EXPECT_TRUE(XWindows{}.clientWindows().empty());
    kill(program->pid(), SIGTERM);
    waitForEnd();
}

using QuitOnBus = QuittingOnBus;

TEST_F(QuitOnBus, ByTheNameTheProgramOwns) {
    quit({std::string{"bus="} + applicationId, "name", "on-quit=quit"});
    waitForEnd();
    EXPECT_EQ(program->line(), "quit");
    EXPECT_EQ(program->status(), 0);
}

TEST_F(QuitOnBus, WithoutANameByWhatItsWindowTells) {
    quit({"bus=org.letterloft.Another", "windows=1", "on-quit=quit"});
    waitForEnd();
    EXPECT_EQ(program->line(), "quit"); // its window was not asked
}

TEST_F(QuitOnBus, WaitsForTheUsersAnswer) {
    quit({std::string{"bus="} + applicationId, "name", "windows=1", "on-quit=ask", "sigterm=handle"});
    EXPECT_EQ(program->line(), "quit");
    EXPECT_EQ(program->line(), "question");
    letSlicesPass(6);
    kill(program->pid(), SIGUSR1);
    waitForEnd();
    EXPECT_EQ(program->line(), ""); // neither window nor signal
}

TEST_F(QuitOnBus, LeavesAProgramAloneThatDoesNothingUponIt) {
    quit({std::string{"bus="} + applicationId, "name", "windows=1", "on-quit=nothing", "sigterm=handle"});
    EXPECT_EQ(program->line(), "quit");
    letSlicesPass(1);
    kill(program->pid(), SIGTERM);
    waitForEnd();
    EXPECT_EQ(program->line(), "sigterm"); // nothing in between
}

TEST_F(QuitOnBus, IsLeftForTheWindowsWhereItIsNotOffered) {
    for (const char* lack : {"no-quit", "quit-disabled"}) {
        quit({std::string{"bus="} + applicationId, "name", "windows=1", "on-close=close", lack});
        waitForEnd();
        EXPECT_EQ(program->line(), "asked 1") << lack;
    }
}

TEST_F(QuitOnBus, IsNotWaitedForWhenTheProgramHangs) {
    quit({std::string{"bus="} + applicationId, "name", "windows=1", "on-quit=hang"});
    EXPECT_FALSE(application->isTerminated()); // asked by its window, which it will see when it goes on
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(QuitOnBus, NeverReachesAnotherOwnerOfTheName) {
    Started stranger{command({std::string{"bus="} + applicationId, "name", "on-quit=quit"})};
    EXPECT_EQ(stranger.line(), "ready");
    quit({"sigterm=handle"});
    waitForEnd();
    EXPECT_EQ(program->line(), "sigterm");
    kill(stranger.pid(), SIGTERM);
    EXPECT_EQ(stranger.line(), "");
}

using SessionBusAbsent = Quitting;

TEST_F(SessionBusAbsent, IsSaidOnce) {
    EXPECT_FALSE(bus.isThere());
    EXPECT_FALSE(bus.ownerPid("org.freedesktop.DBus"));
    EXPECT_TRUE(bus.connectionsOf({getpid()}).empty());
    EXPECT_EQ(log.lines.size(), 1U);
}

TEST_F(QuitOnBus, SurvivesTheEndOfTheBus) {
    EXPECT_TRUE(bus.isThere());
    Started& another = desktop.startBus(); // where everybody looks from now on
    EXPECT_TRUE(bus.isThere());
    another.endStandardInput();
    kill(another.pid(), SIGTERM);
    another.status();
    quit({"sigterm=handle"});
    waitForEnd();
    EXPECT_EQ(program->line(), "sigterm");
}

} // namespace letterloft
