#include "platform/linux/GioLauncher.h"
#include "tests/contract/quitting/Desktop.h"
#include "tests/fakes/FakeLog.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gio/gio.h>
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

    std::string reportingExec(const std::string& more = {}) const {
        return "Exec=\"" + std::string{testProgram} + "\" \"report=" + fifo + "\" " + more;
    }

    // The lines up to this one, which is waited for.
    const std::vector<std::string>& reportUntil(const std::string& last) {
        std::string line;
        for (char c = 0; line != last && read(reports, &c, 1) == 1;) {
            if (c != '\n') {
                line += c;
                continue;
            }
            seen.push_back(line);
            if (line != last) line.clear();
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
    int reports = -1;
    std::vector<std::string> seen;
};

// The part of the systemd user manager that is asked for a scope.
class TestSystemd {
public:
    TestSystemd() {
        connection_ =
            g_dbus_connection_new_for_address_sync(std::getenv("DBUS_SESSION_BUS_ADDRESS"),
                                                   GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                                                   nullptr, nullptr, nullptr);
        GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(
            "<node><interface name='org.freedesktop.systemd1.Manager'><method name='StartTransientUnit'>"
            "<arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='a(sv)' direction='in'/>"
            "<arg type='a(sa(sv))' direction='in'/><arg type='o' direction='out'/></method></interface></node>",
            nullptr);
        static constexpr GDBusInterfaceVTable table = {&TestSystemd::called, nullptr, nullptr, {}};
        g_dbus_connection_register_object(connection_, "/org/freedesktop/systemd1", node->interfaces[0], &table, this,
                                          nullptr, nullptr);
        g_dbus_node_info_unref(node);
        g_variant_unref(g_dbus_connection_call_sync(connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                    "org.freedesktop.DBus", "RequestName",
                                                    g_variant_new("(su)", "org.freedesktop.systemd1", 4U), nullptr,
                                                    G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    }
    ~TestSystemd() { g_object_unref(connection_); }
    TestSystemd(const TestSystemd&) = delete;
    TestSystemd& operator=(const TestSystemd&) = delete;

    // Waits for a request: its unit and properties as text.
    const std::string& request() {
        while (request_.empty())
            g_main_context_iteration(nullptr, TRUE);
        return request_;
    }

private:
    static void called(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* arguments,
                       GDBusMethodInvocation* invocation, gpointer self) {
        gchar* text = g_variant_print(arguments, FALSE);
        static_cast<TestSystemd*>(self)->request_ = text;
        g_free(text);
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(o)", "/job"));
    }

    GDBusConnection* connection_;
    std::string request_;
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

TEST_F(LaunchOfEntry, StartsAProgramInAFolderWithBlanks) {
    const std::string program = desktop.write("my programs/go", "#!/bin/sh\nexec \"$@\"\n", 0700);
    EXPECT_TRUE(
        launcher.launchApplication(entry("Exec=\"" + program + "\" \"" + testProgram + "\" \"report=" + fifo + "\"")));
    reportUntil("ready");
    expectDetached();
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

TEST_F(LaunchOfEntry, ByTheBusReachesAProgramThatRuns) {
    desktop.startBus();
    Started running{{testProgram, std::string{"bus="} + id, "name"}};
    EXPECT_EQ(running.line(), "ready");
    ASSERT_TRUE(launcher.launchApplication(entry("Exec=/bin/false\nDBusActivatable=true")));
    EXPECT_EQ(running.line(), "activated"); // sent, though no event loop has run since
}

TEST_F(LaunchOfEntry, ByTheBusStartsItsService) {
    desktop.write("share/dbus-1/services/tester.service", std::string{"[D-BUS Service]\nName="} + id + "\nExec=\"" +
                                                              testProgram + "\" bus=" + id + " name \"report=" + fifo +
                                                              "\"\n");
    desktop.startBus();
    ASSERT_TRUE(launcher.launchApplication(entry("Exec=/bin/false\nDBusActivatable=true")));
    reportUntil("activated");
}

TEST_F(LaunchOfEntry, ByTheBusIsRefusedAtOnceIfNobodyCanStartIt) {
    desktop.startBus();
    expectRefused(entry("Exec=/bin/true\nDBusActivatable=true"), "session bus");
}

TEST_F(LaunchOfEntry, WithoutABusUsesTheExecLine) {
    ASSERT_TRUE(launcher.launchApplication(entry(reportingExec() + "\nDBusActivatable=true")));
    reportUntil("ready");
}

TEST_F(LaunchOfEntry, AsksForAScopeOfItsOwn) {
    desktop.startBus();
    TestSystemd systemd;
    ASSERT_TRUE(launcher.launchApplication(entry(reportingExec(), "org.letterloft.Test-er")));
    reportUntil("ready");
    const std::string scope = "'app-letterloft-org.letterloft.Test\\\\x2der-" + pidReported() + ".scope'";
    EXPECT_NE(systemd.request().find(scope), std::string::npos) << systemd.request();
    EXPECT_NE(systemd.request().find("'PIDs', <[uint32 " + pidReported() + "]>"), std::string::npos)
        << systemd.request();
}

TEST_F(LaunchOfEntry, OutlivesUs) {
    const std::string path = entry(reportingExec());
    const pid_t us = fork();
    if (us == 0) _exit(launcher.launchApplication(path) ? 0 : 1);
    int status = 0;
    waitpid(us, &status, 0);
    EXPECT_EQ(status, 0);
    reportUntil("ready");
    EXPECT_EQ(kill(std::stoi(pidReported()), 0), 0);
}

using LaunchOfFile = Launching;

TEST_F(LaunchOfFile, StartsAnExecutableWithoutOurLaunchMark) {
    setenv("GIO_LAUNCHED_DESKTOP_FILE_PID", std::to_string(getpid()).c_str(), 1);
    ASSERT_TRUE(launcher.launchApplication(desktop.write(
        "start me", "#!/bin/sh\nexec \"" + std::string{testProgram} + "\" \"report=" + fifo + "\"\n", 0700)));
    reportUntil("ready");
    EXPECT_TRUE(reported("mark none"));
    expectDetached();
}

TEST_F(LaunchOfFile, StartsTheProgramOfABundle) {
    desktop.write("Tester.app/tester", "#!/bin/sh\nexec \"" + std::string{testProgram} + "\" \"report=" + fifo + "\"\n",
                  0700);
    desktop.write("Tester.app/Resources/Info-gnustep.plist", "{ NSExecutable = tester; }");
    ASSERT_TRUE(launcher.launchApplication(desktop.home() + "/Tester.app"));
    reportUntil("ready");
    expectDetached();
}

TEST_F(LaunchOfFile, IsRefusedWithTheReason) {
    expectRefused(desktop.write("plain", "no program"), "no program");
    expectRefused(desktop.home(), "no application");
    expectRefused(desktop.home() + "/missing", "No such file");
    std::filesystem::create_directories(desktop.home() + "/Empty.app");
    expectRefused(desktop.home() + "/Empty.app", "bundle");
}

} // namespace letterloft
