// Which processes are the application's, and which only look like it. Each promise is checked by what is left running.
#include "tests/contract/applications/ApplicationsFixture.h"

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace letterloft {

namespace {

using Found = Applications;
using Pids = std::set<pid_t>;

std::vector<std::string> withMark(const std::string& desktopFile, const std::string& command) {
    return {"sh", "-c",
            "GIO_LAUNCHED_DESKTOP_FILE='" + desktopFile + "' GIO_LAUNCHED_DESKTOP_FILE_PID=$$ exec " + command};
}

TEST_F(Found, ByTheExecutableHoweverItIsCalled) {
    const std::string mailer = program("bin/mailer");
    std::filesystem::create_hard_link(mailer, desktop.home() + "/bin/linked");
    std::filesystem::create_symlink(mailer, desktop.home() + "/bin/pointing");
    const pid_t direct = started({mailer});
    const pid_t second = started({mailer, "--again"});
    const pid_t linked = started({desktop.home() + "/bin/linked"});
    const pid_t pointing = started({desktop.home() + "/bin/pointing"});
    started({program("elsewhere/mailer")}); // the same bytes are not the same program
    EXPECT_EQ(instances(mailer).size(), 4u);
    EXPECT_EQ(quit(entry("mail", mailer + " %u")), (Pids{direct, second, linked, pointing}));
}

TEST_F(Found, WhenItsProgramHasBeenUpgradedOrRemovedMeanwhile) {
    const std::string mailer = program("bin/mailer");
    const pid_t upgraded = started({mailer});
    std::filesystem::rename(program("bin/mailer.new"), mailer);
    const pid_t latest = started({mailer});
    EXPECT_EQ(quit(entry("mail", mailer)), (Pids{upgraded, latest}));
    const pid_t before = started({mailer});
    std::filesystem::remove(mailer);
    started({program("bin/other")});
    EXPECT_EQ(quit(mailer), (Pids{upgraded, latest, before}));
    EXPECT_TRUE(logSays("There is no application at " + mailer));
}

// The kernel puts the name in parentheses.
TEST_F(Found, WhenItsNameLooksLikeThatOfARemovedProgram) {
    const std::string odd = program("bin/mailer) R 1 (deleted)");
    const pid_t running = started({odd});
    EXPECT_EQ(quit(program("bin/mailer) R 1")), Pids{});
    EXPECT_EQ(quit(odd), Pids{running});
}

TEST_F(Found, ThroughALauncherInItsExecLineButNotWhatElseThatRuns) {
    const std::string mailer = program("bin/mailer");
    const pid_t direct = started({mailer});
    started({"env", "MODE=quiet", program("bin/other")});
    started({"nice", "-n", "1", program("bin/third")});
    EXPECT_EQ(quit(entry("mail", "env MODE=quiet nice -n 1 " + mailer + " %U")), Pids{direct});
}

TEST_F(Found, BelowAWrapperThatStartsItAndWaits) {
    const std::string hidden = program("lib/odd-name");
    desktop.write("lib/name", hidden);
    const std::string wrapper = desktop.write(
        "bin/mailer", "#!/bin/sh\nread name < " + desktop.home() + "/lib/name\n\"$name\"\necho over\n", 0755);
    const pid_t below = started({wrapper});
    started({hidden});                                               // nothing says that it has to do with the wrapper
    started({"sh", "-c", program("bin/other") + "; true", wrapper}); // nor that the wrapper as an argument is run
    EXPECT_EQ(quit(entry("mail", wrapper)), Pids{below});
}

TEST_F(Found, AsWhatAnAppImageHolds) {
    const std::string image = desktop.write("mail.AppImage", "\177ELF\2\1\1 AI\2 ", 0755);
    const std::string folder = desktop.home() + "/mount";
    const std::string inside = program("mount/usr/bin/mailer");
    const auto startFrom = [&](const std::string& file) {
        return started({"env", "APPDIR=" + folder, "APPIMAGE=" + file, inside});
    };
    startFrom(desktop.home() + "/other.AppImage");
    started({"env", "APPDIR=" + folder, "APPIMAGE=" + image, program("bin/browser")}); // started from inside
    const pid_t before = startFrom(image);
    EXPECT_EQ(quit(image), Pids{before});
    const pid_t left = startFrom(image);
    std::filesystem::remove(image);
    EXPECT_EQ(quit(entry("mail", image)), (Pids{before, left}));
}

TEST_F(Found, AsTheScriptThatAnInterpreterRuns) {
    const std::string text = "#!/usr/bin/env python3\nimport os, sys, time\n"
                             "print('ready', os.getpid(), flush=True)\nos.chdir('/')\ntime.sleep(1000)\n";
    const std::string mailer = desktop.write("bin/mailer", text, 0755);
    const std::string namesake = desktop.write("elsewhere/mailer", text, 0755);
    const pid_t direct = started({mailer});
    const pid_t byInterpreter = started({"python3", "-W", "ignore", mailer, "--debug"});
    const pid_t relative = started({"sh", "-c", "cd " + desktop.home() + "/bin && exec python3 ./mailer"});
    started({namesake});
    started({namesake, mailer});
    started({"python3", "-c", "import os, time; print('ready', os.getpid(), flush=True); time.sleep(1000)", mailer});
    started({program("bin/other"), mailer});
    EXPECT_EQ(quit(entry("mail", mailer + " %U")), (Pids{direct, byInterpreter, relative}));
}

TEST_F(Found, ByTheDesktopsMarkWithItsOwnNumber) {
    const std::string unknown = program("lib/unknown");
    const std::string mail = entry("mail", desktop.write("bin/mailer", "#!/usr/bin/perl\nexec $ENV{MAILER};\n", 0755));
    const pid_t marked = started(withMark(mail, unknown));
    // A mark that was inherited says only who started the one above.
    started({"env", "GIO_LAUNCHED_DESKTOP_FILE=" + mail, "GIO_LAUNCHED_DESKTOP_FILE_PID=1", unknown});
    started({"env", "GIO_LAUNCHED_DESKTOP_FILE=" + mail, unknown});
    EXPECT_EQ(quit(mail), Pids{marked});
}

TEST_F(Found, ExceptWhatIsMarkedForAnotherEntry) {
    const std::string mailer = program("bin/mailer");
    const std::string mail = entry("mail", mailer);
    const std::string other = entry("other", mailer + " --profile other");
    const std::string handler = entry("handler", mailer + " --compose %u", "NoDisplay=true"); // of links
    const std::string copy =
        desktop.write("autostart/copy.desktop", "[Desktop Entry]\nType=Application\nExec=" + mailer);
    const pid_t own = started(withMark(mail, mailer));
    const pid_t copied = started(withMark(copy, mailer)); // another file, but the very same thing
    const pid_t handling = started(withMark(handler, mailer));
    const pid_t renamed = started(withMark(desktop.home() + "/share/applications/former.desktop", mailer));
    const pid_t unmarked = started({mailer});
    const pid_t others = started(withMark(other, mailer));
    const Pids all{own, copied, handling, renamed, unmarked};
    EXPECT_EQ(quit(mail), all);
    EXPECT_FALSE(all.contains(others));
    EXPECT_TRUE(quit(other).contains(others));
}

TEST_F(Found, InABundleWhicheverOfItsProgramsRuns) {
    const std::string main = program("Mail.app/Contents/MacOS/Mail");
    const std::string helper = program("Mail.app/Contents/Helpers/Indexer");
    desktop.write("Mail.app/Contents/Info.plist",
                  "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>CFBundleIdentifier</key>"
                  "<string>org.example.Mail</string><key>CFBundleExecutable</key><string>Mail</string></dict></plist>");
    const pid_t one = started({main});
    const pid_t two = started({helper});
    started({program("Mail.app.old/Contents/MacOS/Mail")});
    EXPECT_EQ(quit(desktop.home() + "/Mail.app/"), (Pids{one, two}));
}

TEST_F(Found, ByWhatCanBeReadWhenTheEntryIsBroken) {
    const pid_t untried = started({program("bin/untried")});
    EXPECT_EQ(quit(entry("broken", "'" + desktop.home() + "/bin/untried")), Pids{});
    EXPECT_TRUE(logSays("can't be read"));
    EXPECT_EQ(quit(desktop.home()), Pids{}); // a folder
    EXPECT_EQ(quit(entry("untried", desktop.home() + "/bin/untried", "TryExec=/nowhere/untried")), Pids{untried});
}

TEST_F(Found, ByNameOrClassWhereTheProgramCanNotBeTold) {
    desktop.startBus();
    desktop.startDisplay();
    const std::string unknown = program("lib/unknown");
    const pid_t owner = started({unknown, "bus=org.example.Mail", "name", "on-quit=quit"});
    started({unknown, "bus=org.example.Other", "name", "on-quit=quit"});
    started({program("bin/xdg-dbus-proxy"), "bus=org.example.Sandboxed", "name"}); // what it speaks for can't be told
    EXPECT_TRUE(instances(entry("org.example.Sandboxed", "", "DBusActivatable=true")).empty());
    EXPECT_EQ(quit(entry("org.example.Mail", "", "DBusActivatable=true")), Pids{owner});
    const std::string wrapper =
        desktop.write("bin/mailer", "#!/bin/sh\n. /dev/null\nexec \"$UNKNOWN\" windows=1 on-close=close\n", 0755);
    const pid_t shown = started({"env", "UNKNOWN=" + unknown, wrapper});
    started({unknown}); // shows nothing
    EXPECT_EQ(quit(entry("mail", wrapper, "StartupWMClass=Tester")), (Pids{owner, shown}));
}

TEST_F(Found, NeverByTheClassAloneWhereItIsKnownOrAPageInABrowser) {
    desktop.startDisplay();
    const std::string mailer = program("bin/mailer");
    const pid_t own = started({mailer, "windows=1", "on-close=close"});
    const std::string browser = program("bin/browser");
    started({browser, "windows=2", "class=Browser", "on-close=close"});
    const pid_t page = started({browser, "windows=1", "on-close=close"});
    EXPECT_EQ(quit(entry("mail", mailer, "StartupWMClass=Tester")), Pids{own});
    EXPECT_EQ(quit(entry("page", browser + " --app-id=abc", "StartupWMClass=Tester")), (Pids{own, page}));
}

TEST_F(Found, ExceptWhatShowsTheWindowsOfAnotherEntry) {
    desktop.startDisplay();
    const std::string mailer = program("bin/mailer");
    const std::string mail = entry("mail", mailer, "StartupWMClass=Mailer");
    entry("other", mailer + " --profile other", "StartupWMClass=Tester");
    const pid_t hidden = started({mailer});
    started({mailer, "windows=1", "on-close=close"});
    EXPECT_EQ(quit(mail), Pids{hidden});
}

} // namespace

} // namespace letterloft
