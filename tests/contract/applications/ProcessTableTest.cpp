// Over a folder that looks like /proc: what the real one can't be made to show at will.
#include "platform/linux/ProcessTable.h"
#include "platform/linux/ApplicationMatcher.h"
#include "platform/linux/InstanceSearch.h"
#include "tests/contract/applications/ApplicationsFixture.h"

#include <filesystem>
#include <unistd.h>

namespace letterloft {

namespace {

class Table : public Applications {
protected:
    // The fields after the name, from the state on.
    static std::string fields(char state, pid_t parent, pid_t session, const std::string& startTime) {
        return std::string{state} + " " + std::to_string(parent) + " " + std::to_string(session) + " " +
               std::to_string(session) + " 0 -1 0 0 0 0 0 0 0 0 0 20 0 1 0 " + startTime + " 0 0\n";
    }

    void put(pid_t pid, const std::string& stat, const std::string& group = "") const {
        const std::string folder = "proc/" + std::to_string(pid) + "/";
        desktop.write(folder + "stat", stat);
        desktop.write(folder + "cgroup", "0::/user.slice/user@1000.service/app.slice/" + group + "\n");
    }

    ProcessTable table() const { return ProcessTable{::getuid(), desktop.home() + "/proc"}; }

    auto search(const std::string& applicationPath, const ProcessTable& read) {
        XWindows windows;
        return InstanceSearch{ApplicationMatcher{ApplicationEntry::at(applicationPath)}, read, bus, windows}
            .instances();
    }
};

TEST_F(Table, LeavesOutWhatIsNotWholeAndReadsOn) {
    put(10, "10 (a) R) 99 (b) " + fields('S', 1, 10, "777")); // a name may hold anything
    put(11, "11 (zombie) " + fields('Z', 1, 11, "5"));
    put(12, "12 (short) S 1 2");
    put(13, "");
    put(14, "14 (no number) " + fields('S', 1, 14, "never"));
    put(15, std::string(100000, 'x'));
    desktop.write("proc/16/nothing", "");
    desktop.write("proc/99999999999999999999/stat", "1 (x) " + fields('S', 1, 1, "1"));
    desktop.write("proc/10/environ",
                  std::string{"GIO_LAUNCHED_DESKTOP_FILE\0=\0GIO_LAUNCHED_DESKTOP_FILE=\xff\0\0", 58} +
                      "GIO_LAUNCHED_DESKTOP_FILE_PID=10");
    desktop.write("proc/10/cmdline", std::string{"\0\0\xff x\0", 6});
    const ProcessTable read = table();
    ASSERT_EQ(read.processes().size(), 1u);
    const Process& process = *read.find(10);
    EXPECT_EQ(process.identity.startTime, 777u);
    EXPECT_EQ(process.parent, 1);
    EXPECT_EQ(process.launchMark, "\xff");
    EXPECT_EQ(process.arguments.size(), 3u);
}

TEST_F(Table, EndsWhereParentsGoRoundInACircle) {
    put(10, "10 (a) " + fields('S', 11, 10, "1"));
    put(11, "11 (b) " + fields('S', 10, 10, "2"));
    const ProcessTable read = table();
    EXPECT_EQ(read.ancestorsOf(*read.find(10)).size(), 1u);
    EXPECT_EQ(read.lineageOf(10), (std::set<pid_t>{10, 11}));
}

TEST_F(Table, TellsWhatAUnitWasMadeFor) {
    const ApplicationMatcher plain{ApplicationEntry::at(entry("org.example.Mail", program("bin/mailer")))};
    const ApplicationMatcher wrapped{ApplicationEntry::at(
        entry("org.example.Mail", desktop.write("bin/wrapper", "#!/bin/sh\nexec $SOMETHING\n", 0755)))};
    put(5, "5 (panel) " + fields('S', 1, 5, "1"), "panel.service");
    const std::string own = "app-gnome-org.example.Mail-10.scope";
    put(10, "10 (main) " + fields('S', 5, 5, "10"), own);
    put(11, "11 (shell) " + fields('S', 10, 11, "11"), own);
    put(12, "12 (left behind by the shell) " + fields('S', 1, 11, "12"), own);
    const std::string other = "app-org.example.Mail@ab12.service";
    put(20, "20 (main) " + fields('S', 1, 20, "20"), other);
    put(21, "21 (child) " + fields('S', 20, 20, "21"), other);
    const ProcessTable read = table();
    const auto marked = [&](const ApplicationMatcher& matcher) {
        std::set<pid_t> pids;
        for (const auto& [pid, process] : read.processes())
            if (matcher.isMarked(process, read)) pids.insert(pid);
        return pids;
    };
    EXPECT_EQ(marked(plain), std::set<pid_t>{10}); // elsewhere its executable tells
    EXPECT_EQ(marked(wrapped), (std::set<pid_t>{10, 20}));
}

TEST_F(Table, TellsWhatRunsInASandbox) {
    put(10, "10 (bwrap) " + fields('S', 1, 10, "10"));
    put(11, "11 (mail) " + fields('S', 10, 10, "11"));
    for (const char* pid : {"10", "11"})
        desktop.write(std::string{"proc/"} + pid + "/root/.flatpak-info",
                      "[Application]\nname=org.example.Mail\ninstance-id=7\n");
    std::filesystem::create_symlink("/usr/bin/bwrap", desktop.home() + "/proc/10/exe");
    put(20, "20 (mail) " + fields('S', 1, 20, "20"), "snap.mail.mail-12ab.scope");
    put(21, "21 (other) " + fields('S', 1, 21, "21"), "snap.mail-other.mail-12ab.scope");
    const auto run = [this](const std::string& exec) {
        const ApplicationMatcher matcher{ApplicationEntry::at(entry("mail", exec))};
        const ProcessTable read = table();
        std::set<pid_t> pids;
        for (const auto& [pid, process] : read.processes())
            if (matcher.runsProgram(process, read)) pids.insert(pid);
        return pids;
    };
    EXPECT_EQ(run("flatpak run --branch=stable org.example.Mail"), std::set<pid_t>{11});
    EXPECT_EQ(run("env A=/b snap run mail.desktop"), std::set<pid_t>{20});
    const ProcessTable read = table();
    const auto found = search(entry("mail", "flatpak run org.example.Mail"), read);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].program, read.find(11));
    EXPECT_EQ(found[0].proxies, std::vector<pid_t>{10});
}

// As what keeps secrets, and as the pages of a browser behind its own sandbox, which are no instances of it.
TEST_F(Table, TellsWhatMayNotBeLookedIntoByItsName) {
    const std::string browser = program("bin/browser");
    put(10, "10 (browser) " + fields('S', 1, 10, "10"));
    put(11, "11 (sandbox) " + fields('S', 10, 10, "11"));
    put(12, "12 (browser) " + fields('S', 11, 10, "12"));
    desktop.write("proc/10/cmdline", browser + '\0');
    desktop.write("proc/11/cmdline", program("bin/sandbox") + '\0');
    desktop.write("proc/12/cmdline", browser + '\0' + "--page" + '\0');
    const ProcessTable read = table();
    const auto found = search(browser, read);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].program, read.find(10));
}

TEST(UnitOfApplication, IsNamedAsSystemdSays) {
    for (const char* unit : {"app-a\\x2dmail-1234.scope", "app-gnome-a\\x2dmail-1234.scope", "app-a\\x2dmail.service",
                             "app-kde-a\\x2dmail@0123.service", "app-flatpak-a\\x2dmail-12.scope",
                             "dbus-:1.2-a\\x2dmail@0.service", "app-a\\x2dmail-1.scope/deeper"})
        EXPECT_TRUE(isUnitOfApplication("0::/user.slice/" + std::string{unit} + "\n", "a-mail")) << unit;
    for (const char* unit :
         {"app-gnome-mail-1234.scope", "app-a\\x2dmailer-1.scope", "app-x-y-a\\x2dmail-1.scope", "a-mail-1.scope",
          "app-a\\x2dmail-1.slice", "app-", "app-.scope", "dbus-:1.2.service", "app-\\x2-1.scope"})
        EXPECT_FALSE(isUnitOfApplication("0::/user.slice/" + std::string{unit} + "\n", "a-mail")) << unit;
    EXPECT_FALSE(isUnitOfApplication("0::/app-.scope", ""));
}

} // namespace

} // namespace letterloft
