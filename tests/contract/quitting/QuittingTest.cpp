// How programs are asked to quit, told by what each of them says that it is asked for.
#include "platform/linux/LinuxRunningApplication.h"
#include "tests/contract/applications/ApplicationsFixture.h"

#include <csignal>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace letterloft {

namespace {

constexpr const char* applicationId = "org.letterloft.Tester";

HeldProcess held(pid_t pid) { return std::move(*HeldProcess::hold(*ProcessIdentity::ofProcess(pid))); }

std::vector<std::string> commandOf(const std::string& options) {
    std::istringstream words{options.front() == '/' ? options : LETTERLOFT_TEST_PROGRAM " " + options};
    return {std::istream_iterator<std::string>{words}, {}};
}

struct Asked {
    explicit Asked(const std::string& options) : program{commandOf(options)} {}

    Started program;
    std::unique_ptr<LinuxRunningApplication> application;
};

// Programs that are asked to quit and waited for as the switch does it.
class Quitting : public Applications {
protected:
    using Instance = LinuxRunningApplication::Instance;

    Asked& start(const std::string& options) {
        all.push_back(std::make_unique<Asked>(options));
        all.back()->program.ready();
        return *all.back();
    }

    static Instance instanceOf(const Asked& one) {
        return {"/applications/tester.desktop", applicationId, held(one.program.pid()), {}, {}};
    }

    void ask(Asked& one, Instance instance) {
        one.application = std::make_unique<LinuxRunningApplication>(std::move(instance), bus, watcher, log);
        one.application->terminate();
    }

    Asked& quit(const std::string& options) {
        Asked& one = start(options);
        ask(one, instanceOf(one));
        return one;
    }

    void followUntil(const std::function<bool()>& condition) {
        serveUntil([&] {
            for (const auto& one : all)
                if (one->application) (void)one->application->isTerminated();
            return condition();
        });
    }

    // The next line a program says, all of them followed up meanwhile.
    std::string next(Asked& one) {
        bool isThere = false;
        const auto watch = watcher.watchReadable(one.program.output(), [&] { isThere = true; });
        followUntil([&] { return isThere; });
        return one.program.line();
    }

    // Lines that have to come one after another, and in brackets what the user does between them.
    void expect(Asked& one, const std::vector<std::string>& steps) {
        const std::map<std::string, int> deeds{
            {"<agree>", SIGUSR1}, {"<refuse>", SIGUSR2}, {"<end>", SIGTERM}, {"<kill>", SIGKILL}};
        for (const std::string& step : steps) {
            if (!deeds.contains(step)) {
                EXPECT_EQ(next(one), step);
                continue;
            }
            EXPECT_FALSE(one.application->isTerminated()); // what stands there now has been seen
            kill(one.program.pid(), deeds.at(step));
        }
    }

    // Nothing more is said, and the end is noticed.
    void expectEnd(Asked& one, int status = 0) {
        followUntil([&] { return one.application->isTerminated(); });
        EXPECT_EQ(one.program.line(), "");
        EXPECT_EQ(one.program.status(), status);
    }

    std::vector<std::unique_ptr<Asked>> all;
};

class QuittingOnDesktop : public Quitting {
protected:
    QuittingOnDesktop() {
        desktop.startBus();
        display = &desktop.startDisplay();
    }

    Started* display = nullptr;
};

using Steps = std::vector<std::string>;

} // namespace

TEST_F(Quitting, BySignalWithoutADisplay) {
    expectEnd(quit("sigterm=default"), -SIGTERM);
    Asked& handling = quit("sigterm=handle");
    expect(handling, {"sigterm"});
    expectEnd(handling);

    EXPECT_EQ(held(start("sigterm=block").program.pid()).sigtermEffect(), HeldProcess::SigtermEffect::handled);

    Asked& stopped = start("sigterm=handle");
    kill(stopped.program.pid(), SIGSTOP);
    while (!held(stopped.program.pid()).isStopped()) {
    }
    ask(stopped, instanceOf(stopped));
    expect(stopped, {"sigterm"});
    expectEnd(stopped);

    Asked& ignoring = quit("sigterm=ignore");
    EXPECT_TRUE(logSays("can't be asked to quit"));
    expect(ignoring, {"<kill>"});
    expectEnd(ignoring, -SIGKILL);
}

// A Wayland display, and one of another machine.
TEST_F(Quitting, NeverBySignalWhatWouldDieOfItOnADisplay) {
    const std::string wayland = "listener = socket.socket(socket.AF_UNIX)\nlistener.bind('wayland-0')\n";
    const std::string remote = R"(listener = socket.socket()
for port in range(6010, 6064):
    with contextlib.suppress(OSError):
        listener.bind(('127.0.0.1', port))
        break
)";
    for (const std::string& listener : {wayland, remote}) {
        log.lines.clear();
        const std::string script = desktop.write("shown", "import contextlib, os, signal, socket\nos.chdir('" +
                                                              desktop.home() + "')\n" + listener + R"(listener.listen()
client = socket.socket(listener.family)
client.connect(listener.getsockname())
server = listener.accept()
print('ready', os.getpid(), flush=True)
signal.pause()
)");
        Asked& shown = start("/usr/bin/python3 " + script);
        ask(shown, instanceOf(shown));
        EXPECT_TRUE(logSays("can't be asked to quit")) << listener;
        EXPECT_FALSE(shown.application->isTerminated()) << listener;
    }
}

TEST_F(Quitting, IsNoticedByTheRunLoopOnce) {
    Asked& one = quit("sigterm=handle");
    EXPECT_TRUE(watcher.serve(-1));
    EXPECT_TRUE(one.application->isTerminated());
    EXPECT_EQ(watcher.count(), 0U); // an ended process stays readable, and would wake for ever
}

TEST_F(Quitting, IsNotOverForWantOfADescriptor) {
    const Asked& one = start("sigterm=handle");
    const ProcessIdentity identity = *ProcessIdentity::ofProcess(one.program.pid());
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit none{0, usual.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const auto process = HeldProcess::hold(identity);
    const bool isOver = !process || process->hasEnded();
    setrlimit(RLIMIT_NOFILE, &usual);
    EXPECT_FALSE(isOver);
}

TEST_F(Quitting, NeverReachesTheNextProcessOfANumber) {
    ProcessIdentity former = *ProcessIdentity::ofProcess(getpid());
    --former.startTime;
    EXPECT_FALSE(HeldProcess::hold(former));
}

TEST_F(Quitting, IsOverWithTheLastProcessAndAsksTheProgramAlone) {
    Asked& helper = start("sigterm=handle");
    Asked& one = start("sigterm=handle");
    auto both = instanceOf(one);
    both.others.push_back(held(helper.program.pid()));
    ask(one, std::move(both));
    expect(one, {"sigterm", ""});
    EXPECT_FALSE(one.application->isTerminated());
    // Where the program ended before it could be asked, nobody is.
    auto left = instanceOf(helper);
    left.isWithoutProgram = true;
    ask(helper, std::move(left));
    expect(helper, {"<kill>"});
    followUntil([&] { return one.application->isTerminated(); });
    expectEnd(helper, -SIGKILL);
}

TEST_F(QuittingOnDesktop, IsAConversation) {
    const std::string onBus = std::string{"bus="} + applicationId + " name ";
    const std::vector<std::pair<std::string, Steps>> conversations{
        {"windows=3 on-close=close sigterm=handle", {"asked 3", "asked 2", "asked 1"}}, // newest first, and no signal
        {"windows=2 on-close=ask sigterm=handle", {"asked 2", "question", "<agree>", "asked 1", "question", "<agree>"}},
        {"windows=1 modal on-close=close", {"dropped", "<agree>", "asked"}}, // the owner of a dialog, once it can
        {"windows=1 modal on-close=close", {"dropped", "<refuse>", "question", "<agree>", "asked"}}, // the dialog's
        {onBus + "on-quit=quit", {"quit"}},
        {"bus=org.letterloft.Another windows=1 on-quit=quit", {"quit"}}, // its window tells where
        {onBus + "windows=1 on-close=close no-quit", {"asked"}},
        {onBus + "windows=1 on-close=close quit-disabled", {"asked"}},
        {onBus + "windows=1 on-quit=ask sigterm=handle", {"quit", "question", "<agree>"}},
    };
    for (const auto& [options, steps] : conversations) {
        SCOPED_TRACE(options);
        Asked& one = quit(options);
        expect(one, steps);
        expectEnd(one);
    }
}

// The last of them is sent the one signal after five seconds without a window; by then the others, all asked before it,
// would have been sent it too.
TEST_F(QuittingOnDesktop, SendsASignalOnlyWhereNothingIsShownAndItIsSafe) {
    const std::vector<std::pair<std::string, Steps>> patient{
        {"windows=2 on-close=ask sigterm=handle", {"asked 2", "question", "<refuse>", "refused"}},
        {"windows=2 on-close=ignore sigterm=handle", {"asked 2"}}, // and not past it
        {"bus=org.letterloft.Asking name windows=1 on-quit=ask sigterm=handle", {"quit", "question"}},
        {"bus=org.letterloft.Doing name windows=1 on-quit=nothing sigterm=handle", {"quit"}},
    };
    for (const auto& [options, steps] : patient)
        expect(quit(options), steps);
    quit("windows=1 no-delete"); // to close it would be a kill, and so would be the signal
    EXPECT_TRUE(logSays("can't be asked to quit"));
    log.lines.clear();
    quit("windows=0");
    EXPECT_TRUE(logSays("can't be asked to quit"));
    expect(quit("windows=1 on-close=hide"), {"asked"});
    expect(quit("windows=1 on-close=hide sigterm=handle"), {"asked", "sigterm"});
    expectEnd(*all.back());
    followUntil([&] { return logSays("goes on without a window"); });
    for (std::size_t i = 0; i + 1 < all.size(); ++i)
        expect(*all[i], {"<end>", i < patient.size() ? "sigterm" : ""}); // nothing in between
}

TEST_F(QuittingOnDesktop, IsNotWaitedForWhenTheProgramHangs) {
    const Asked& hanging = quit(std::string{"bus="} + applicationId + " name windows=1 on-quit=hang");
    EXPECT_FALSE(hanging.application->isTerminated()); // asked by its window, which it will see when it goes on
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(QuittingOnDesktop, IsOnTheBusWhereAProxySpeaksForIt) {
    Asked& proxy = start(std::string{"bus="} + applicationId + " name on-quit=quit");
    Asked& one = start("sigterm=handle");
    auto inSandbox = instanceOf(one);
    inSandbox.proxies = {proxy.program.pid()};
    ask(one, std::move(inSandbox));
    EXPECT_EQ(next(proxy), "quit");
    expect(one, {"<end>", "sigterm"}); // and none before
    expectEnd(one);
}

TEST_F(QuittingOnDesktop, NeverReachesAnotherOwnerOfTheNameOrWindow) {
    Asked& owner = start(std::string{"bus="} + applicationId + " name windows=1 on-quit=quit on-close=close");
    Asked& one = quit("sigterm=handle");
    expect(one, {"sigterm"});
    expectEnd(one);
    kill(owner.program.pid(), SIGTERM);
    EXPECT_EQ(owner.program.line(), "");
}

TEST_F(QuittingOnDesktop, OutlivesTheDisplayAndTheBus) {
    Asked& shown = quit("windows=1 on-close=ignore sigterm=handle");
    expect(shown, {"asked"});
    kill(display->pid(), SIGTERM);
    display->status();
    EXPECT_TRUE(bus.isThere());
    Started& another = desktop.startBus(); // where everybody looks from now on
    EXPECT_TRUE(bus.isThere());
    kill(another.pid(), SIGTERM);
    another.status();
    setenv("DISPLAY", ":59999", 1); // another test's server may have taken the number that has become free
    Asked& late = quit("sigterm=handle");
    expect(late, {"sigterm"});
    expectEnd(late);
    expect(shown, {"<end>", "sigterm"});
    expectEnd(shown);
}

} // namespace letterloft
