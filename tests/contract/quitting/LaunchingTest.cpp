#include "platform/linux/GioLauncher.h"
#include "tests/contract/quitting/Desktop.h"
#include "tests/fakes/FakeLog.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace letterloft {

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
descriptors = []
for number in os.listdir("/proc/self/fd"):
    if os.path.exists("/proc/self/fd/" + number):  # which that of the list itself does no more
        descriptors.append(f"descriptor {number} " + os.readlink("/proc/self/fd/" + number))
lines = [f"pid {os.getpid()}", *descriptors, "session " + ("own" if os.getsid(0) == os.getpid() else "shared"),
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

    bool reported(const std::string& line) const { return std::find(seen.begin(), seen.end(), line) != seen.end(); }

    std::string pidReported() const { return seen.empty() ? "" : seen.front().substr(4); }

    void expectDetached() {
        EXPECT_TRUE(reported("session own"));
        for (const char* stream : {"0", "1", "2"}) {
            EXPECT_TRUE(reported(std::string{"descriptor "} + stream + " /dev/null")) << stream;
        }
        const auto descriptors = std::count_if(
            seen.begin(), seen.end(), [](const std::string& line) { return line.rfind("descriptor ", 0) == 0; });
        EXPECT_EQ(descriptors, 3);
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1); // it is no child of ours, and nothing is left to be reaped
    }

    void expectRefused(const std::string& path, const std::string& reason) {
        log.lines.clear();
        EXPECT_FALSE(launcher.launchApplication(path)) << path;
        ASSERT_EQ(log.lines.size(), 1U) << path;
        EXPECT_NE(log.lines.front().find(path), std::string::npos) << log.lines.front();
        EXPECT_NE(log.lines.front().find(reason), std::string::npos) << log.lines.front();
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
    const std::vector<std::string> arguments = {"two words", "%", "--name", "The Tester", path};
    for (const std::string& argument : arguments)
        EXPECT_TRUE(reported("argument " + argument)) << argument;
    EXPECT_FALSE(reported("argument %u"));
    EXPECT_TRUE(reported("mark " + pidReported()));
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
    EXPECT_TRUE(reported("argument in-terminal"));
    setenv("PATH", formerPath.c_str(), 1);
}

TEST_F(LaunchOfEntry, IsRefusedWithTheReason) {
    expectRefused(entry(reportingExec() + "\nTryExec=/nowhere/tester"), "is missing");
    expectRefused(entry("Exec=\"/bin/true"), "Exec line");
    expectRefused(entry("Exec=/nowhere/tester"), "is missing");
    expectRefused(entry("Comment=none"), "names no program");
    expectRefused(desktop.write("share/applications/broken.desktop", "no entry at all"), "desktop entry");
    expectRefused(desktop.home() + "/share/applications/missing.desktop", "No such file");
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
    EXPECT_NE(request.find("\"app-letterloft-org.letterloft.Test\\x2der-" + pidReported() + ".scope\""),
              std::string::npos)
        << request;
    EXPECT_NE(request.find("uint32 " + pidReported() + " "), std::string::npos) << request;
}

using LaunchOfFile = Launching;

TEST_F(LaunchOfFile, StartsAnExecutableOrTheOneOfABundleWithoutOurLaunchMark) {
    setenv("GIO_LAUNCHED_DESKTOP_FILE_PID", std::to_string(getpid()).c_str(), 1);
    desktop.write("Tester.app/tester", "#!/bin/sh\nexec '" + reporter + "'\n", 0700);
    desktop.write("Tester.app/Resources/Info-gnustep.plist", "{ NSExecutable = tester; }");
    for (const std::string& path : {reporter, desktop.home() + "/Tester.app"}) {
        ASSERT_TRUE(launcher.launchApplication(path));
        reportUntil("ready");
        EXPECT_TRUE(reported("mark none"));
        expectDetached();
        kill(std::stoi(pidReported()), SIGKILL);
        seen.clear();
    }
}

TEST_F(LaunchOfFile, IsRefusedWithTheReason) {
    expectRefused(desktop.write("plain", "no program"), "no program");
    expectRefused(desktop.home(), "no application");
    expectRefused(desktop.home() + "/missing", "No such file");
    std::filesystem::create_directories(desktop.home() + "/Empty.app");
    expectRefused(desktop.home() + "/Empty.app", "bundle");
}

} // namespace letterloft
