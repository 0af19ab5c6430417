#include "platform/linux/GioLauncher.h"
#include "tests/contract/quitting/Desktop.h"
#include "tests/fakes/FakeLog.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace letterloft {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;

namespace {

constexpr const char* testProgram = LETTERLOFT_TEST_PROGRAM;
constexpr const char* id = "org.letterloft.Tester";

// Launches a program that reports how it finds itself, and ends it afterwards.
class Launching : public testing::Test {
protected:
    void SetUp() override {
        fifo = desktop.home() + "/report";
        ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
        reports = open(fifo.c_str(), O_RDWR | O_CLOEXEC); // for writing too, so that it never ends
        reporter = desktop.write("my programs/reporter", R"(#!/usr/bin/python3
import os, signal, sys
descriptors = ["/proc/self/fd/" + number for number in os.listdir("/proc/self/fd")]
open_files = [os.readlink(one) for one in descriptors if os.path.exists(one)]  # that of the list itself is gone
lines = [f"pid {os.getpid()}", " ".join(open_files), "session " + ("own" if os.getsid(0) == os.getpid() else "shared"),
         "mark " + os.environ.get("GIO_LAUNCHED_DESKTOP_FILE_PID", "none")]
lines += ["argument " + argument for argument in sys.argv[1:]] + ["ready"]
print(*lines, sep="\n", flush=True, file=open(")" + fifo + R"(", "w"))
signal.pause()
)",
                                 0700);
    }

    void TearDown() override {
        for (const std::string& line : seen) {
            if (line.rfind("pid ", 0) == 0) kill(std::stoi(line.substr(4)), SIGKILL);
        }
        close(reports);
    }

    std::string entry(const std::string& keys, const std::string& name = id) const {
        return desktop.write("share/applications/" + name + ".desktop",
                             "[Desktop Entry]\nType=Application\nName=The Tester\n" + keys + "\n");
    }

    std::string reportingExec(const std::string& more = {}) const { return "Exec=\"" + reporter + "\" " + more; }

    // The lines up to this one, which is waited for.
    const std::vector<std::string>& reportUntil(const std::string& last) {
        for (std::string line; line != last; seen.push_back(line)) {
            line.clear();
            for (char c = 0; read(reports, &c, 1) == 1 && c != '\n';)
                line += c;
        }
        return seen;
    }

    std::string pidReported() const { return seen.empty() ? "" : seen.front().substr(4); }

    void expectDetached() {
        EXPECT_THAT(seen, AllOf(Contains("session own"), Contains("/dev/null /dev/null /dev/null")));
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1); // it is no child of ours, and nothing is left to be reaped
    }

    void expectRefused(const std::string& path, const std::string& reason) {
        log.lines.clear();
        EXPECT_FALSE(launcher.launchApplication(path)) << path;
        EXPECT_THAT(log.lines, testing::ElementsAre(AllOf(HasSubstr(path), HasSubstr(reason))));
    }

    Desktop desktop;
    FakeLog log;
    SessionBus bus{log};
    GioLauncher launcher{bus, log};
    std::string fifo;
    std::string reporter;
    int reports = -1;
    std::vector<std::string> seen;
};

} // namespace

using LaunchOfEntry = Launching;

TEST_F(LaunchOfEntry, FillsTheFieldCodesAndDetachesTheProgram) {
    const int leak = dup(STDERR_FILENO); // as a library might leave one behind
    const std::string path = entry(reportingExec("\"two words\" %u %% --name %c %k"));
    ASSERT_TRUE(launcher.launchApplication(path));
    reportUntil("ready");
    EXPECT_THAT(seen, testing::IsSupersetOf({"mark " + pidReported(), std::string{"argument two words"},
                                             std::string{"argument %"}, std::string{"argument --name"},
                                             std::string{"argument The Tester"}, "argument " + path}));
    EXPECT_THAT(seen, testing::Not(Contains("argument %u")));
    expectDetached();
    close(leak);
}

TEST_F(LaunchOfEntry, InATerminalOnlyIfThereIsOne) {
    const std::string path = entry(reportingExec() + "\nTerminal=true");
    const std::string formerPath = std::getenv("PATH");
    setenv("PATH", (desktop.home() + "/bin").c_str(), 1);
    expectRefused(path, "terminal");
    desktop.write("bin/xterm", "#!/bin/sh\nshift\nexec \"$@\" in-terminal\n", 0700);
    ASSERT_TRUE(launcher.launchApplication(path));
    reportUntil("ready");
    EXPECT_THAT(seen, Contains("argument in-terminal"));
    setenv("PATH", formerPath.c_str(), 1);
}

TEST_F(Launching, IsRefusedWithTheReason) {
    expectRefused(entry(reportingExec() + "\nTryExec=/nowhere/tester"), "is missing");
    expectRefused(entry("Exec=\"/bin/true"), "Exec line");
    expectRefused(entry("Exec=/nowhere/tester"), "is missing");
    expectRefused(entry("Comment=none"), "names no program");
    expectRefused(desktop.write("share/applications/broken.desktop", "no entry at all"), "desktop entry");
    expectRefused(desktop.home() + "/share/applications/missing.desktop", "No such file");
    expectRefused(desktop.write("plain", "no program"), "no program");
    std::filesystem::create_directories(desktop.home() + "/Empty.app");
    expectRefused(desktop.home() + "/Empty.app", "bundle");
}

TEST_F(LaunchOfEntry, ByTheBusReachesWhatRunsElseItsServiceElseIsRefusedAtOnce) {
    desktop.write("share/dbus-1/services/tester.service",
                  std::string{"[D-BUS Service]\nName="} + id + "\nExec=/bin/sh -c 'exec >" + fifo +
                      "; echo pid $$; exec " + testProgram + " bus=" + id + " name'\n");
    desktop.startBus();
    expectRefused(entry("Exec=/bin/true\nDBusActivatable=true", "org.letterloft.Nobody"), "session bus");
    const std::string path = entry("Exec=/bin/false\nDBusActivatable=true");
    Started running{{testProgram, std::string{"bus="} + id, "name", "sigterm=handle"}};
    running.ready();
    ASSERT_TRUE(launcher.launchApplication(path));
    EXPECT_EQ(running.line(), "activated"); // sent, though no event loop has run since
    kill(running.pid(), SIGTERM);
    EXPECT_EQ(running.status(), 0);
    while (bus.ownerPid(id)) { // until the bus has seen it, too
    }
    ASSERT_TRUE(launcher.launchApplication(path));
    reportUntil("activated");
}

TEST_F(LaunchOfEntry, WithoutABusUsesTheExecLineAndStartsNone) {
    desktop.startDisplay(); // which is where one would be looked for, and started
    ASSERT_TRUE(launcher.launchApplication(entry(reportingExec() + "\nDBusActivatable=true")));
    reportUntil("ready");
    EXPECT_FALSE(std::filesystem::exists(desktop.home() + "/.dbus")); // where dbus-launch(1) notes what it has started
    EXPECT_EQ(std::getenv("DBUS_SESSION_BUS_ADDRESS"), nullptr);
}

TEST_F(LaunchOfEntry, AsksForAScopeOfItsOwn) {
    desktop.startBus();
    Started manager{{testProgram, "bus=org.freedesktop.systemd1", "name"}};
    manager.ready();
    Started monitor{{"dbus-monitor", "member='StartTransientUnit'"}};
    while (monitor.line().find("NameLost") == std::string::npos) { // it only listens from then on
    }
    ASSERT_TRUE(launcher.launchApplication(entry(reportingExec(), "org.letterloft.Test-er")));
    reportUntil("ready");
    std::string request;
    while (request.find("]") == std::string::npos) // of the PIDs
        request += monitor.line();
    EXPECT_THAT(request, HasSubstr("\"app-letterloft-org.letterloft.Test\\x2der-" + pidReported() + ".scope\""));
    EXPECT_THAT(request, HasSubstr("uint32 " + pidReported() + " "));
}

using LaunchOfFile = Launching;

TEST_F(LaunchOfFile, StartsAnExecutableOrTheOneOfABundleWithoutOurLaunchMark) {
    setenv("GIO_LAUNCHED_DESKTOP_FILE_PID", std::to_string(getpid()).c_str(), 1);
    desktop.write("Tester.app/tester", "#!/bin/sh\nexec '" + reporter + "'\n", 0700);
    desktop.write("Tester.app/Resources/Info-gnustep.plist", "{ NSExecutable = tester; }");
    for (const std::string& path : {reporter, desktop.home() + "/Tester.app"}) {
        ASSERT_TRUE(launcher.launchApplication(path));
        reportUntil("ready");
        EXPECT_THAT(seen, Contains("mark none"));
        expectDetached();
        kill(std::stoi(pidReported()), SIGKILL);
        seen.clear();
    }
}

} // namespace letterloft
