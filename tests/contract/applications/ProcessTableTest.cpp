// Over a folder that looks like /proc: what the real one can't be made to show at will.
#include "platform/linux/ProcessTable.h"
#include "platform/linux/ApplicationMatcher.h"
#include "platform/linux/InstanceSearch.h"
#include "storage/Text.h"
#include "tests/contract/applications/ApplicationsFixture.h"

#include <filesystem>
#include <unistd.h>

namespace letterloft {

namespace {

class Table : public Applications {
protected:
    // A process that started at the time of its own number.
    void put(pid_t pid, pid_t parent, pid_t session, const std::string& group = "") const {
        const std::string number = std::to_string(pid);
        const std::string in = std::to_string(session);
        desktop.write("proc/" + number + "/stat",
                      filled("%@ (name) S %@ %@ %@ 0 -1 0 0 0 0 0 0 0 0 0 20 0 1 0 %@ 0 0\n",
                             {number, std::to_string(parent), in, in, number}));
        desktop.write("proc/" + number + "/cgroup", "0::/user.slice/user@1000.service/app.slice/" + group + "\n");
    }

    ProcessTable table() const { return ProcessTable{::getuid(), desktop.home() + "/proc"}; }

    // The programs of the instances there, whose proxies are kept.
    std::set<pid_t> found(const std::string& applicationPath) {
        const ProcessTable read = table();
        const ApplicationMatcher matcher{ApplicationEntry::at(applicationPath)};
        XWindows windows;
        std::set<pid_t> pids;
        for (const auto& instance : InstanceSearch{matcher, read, bus, windows}.instances()) {
            pids.insert(instance.program->identity.pid);
            proxies = instance.proxies;
        }
        return pids;
    }

    std::vector<pid_t> proxies;
};

TEST_F(Table, TellsWhatAUnitWasMadeFor) {
    put(5, 1, 5, "panel.service");
    const std::string own = "app-gnome-org.example.Mail-10.scope";
    put(10, 5, 5, own);
    put(11, 10, 11, own); // shell
    put(12, 1, 11, own);  // left behind by the shell
    const std::string other = "app-org.example.Mail@ab12.service";
    put(20, 1, 20, other);
    put(21, 20, 20, other); // child
    const std::string wrapper = desktop.write("bin/wrapper", "#!/bin/sh\nexec $SOMETHING\n", 0755);
    // Where its executable tells, only the process that the scope is named after.
    EXPECT_EQ(found(entry("org.example.Mail", program("bin/mailer"))), std::set<pid_t>{10});
    EXPECT_EQ(found(entry("org.example.Mail", wrapper)), (std::set<pid_t>{10, 20}));
}

TEST_F(Table, TellsWhatRunsInASandbox) {
    put(10, 1, 10); // bwrap
    put(11, 10, 10);
    for (const char* pid : {"10", "11"})
        desktop.write(std::string{"proc/"} + pid + "/root/.flatpak-info",
                      "[Application]\nname=org.example.Mail\ninstance-id=7\n");
    std::filesystem::create_symlink("/usr/bin/bwrap", desktop.home() + "/proc/10/exe");
    put(20, 1, 20, "snap.mail.mail-12ab.scope");
    put(21, 1, 21, "snap.mail-other.mail-12ab.scope"); // other
    EXPECT_EQ(found(entry("mail", "env A=/b snap run mail.desktop")), std::set<pid_t>{20});
    EXPECT_EQ(found(entry("mail", "flatpak run --branch=stable org.example.Mail")), std::set<pid_t>{11});
    EXPECT_EQ(proxies, std::vector<pid_t>{10});
}

// As what keeps secrets, and as the pages of a browser behind its own sandbox, which are no instances of it.
TEST_F(Table, TellsWhatMayNotBeLookedIntoByItsName) {
    const std::string browser = program("bin/browser");
    put(10, 1, 10);  // browser
    put(11, 10, 10); // sandbox
    put(12, 11, 10); // browser
    desktop.write("proc/10/cmdline", browser + '\0');
    desktop.write("proc/11/cmdline", program("bin/sandbox") + '\0');
    desktop.write("proc/12/cmdline", browser + '\0' + "--page" + '\0');
    EXPECT_EQ(found(browser), std::set<pid_t>{10});
    EXPECT_EQ(table().lineageOf(12), (std::set<pid_t>{1, 10, 11, 12})); // none of which is ever asked by the last
}

TEST(UnitOfApplication, IsNamedAsSystemdSays) {
    for (const char* unit : {"app-a\\x2dmail-1234.scope", "app-gnome-a\\x2dmail-1234.scope", "app-a\\x2dmail.service",
                             "app-kde-a\\x2dmail@0123.service", "app-flatpak-a\\x2dmail-12.scope",
                             "dbus-:1.2-a\\x2dmail@0.service", "app-a\\x2dmail-1.scope/deeper"})
        EXPECT_TRUE(isUnitOfApplication("0::/user.slice/" + std::string{unit} + "\n", "a-mail")) << unit;
    for (const char* unit :
         {"app-gnome-mail-1234.scope", "app-a\\x2dmailer-1.scope", "app-x-y-a\\x2dmail-1.scope", "a-mail-1.scope",
          "app-a\\x2dmail-1.slice", "app-.scope", "dbus-:1.2.service", "app-\\x2-1.scope"})
        EXPECT_FALSE(isUnitOfApplication("0::/user.slice/" + std::string{unit} + "\n", "a-mail")) << unit;
}

} // namespace

} // namespace letterloft
