// What command lines and wrapper scripts come down to.
#include "platform/linux/StartedProgram.h"
#include "platform/linux/ApplicationEntry.h"
#include "tests/contract/applications/ApplicationsFixture.h"

namespace letterloft {

namespace {

class Resolved : public Applications {
protected:
    // The programs, without wrappers, by what follows the home in their paths.
    std::vector<std::string> of(const std::string& script) const {
        std::vector<std::string> found;
        const std::string wrapper = desktop.write("bin/wrapper", script, 0755);
        for (const auto& one : programsStartedBy({wrapper}))
            if (!one.isWrapper())
                found.push_back(one.file.starts_with(desktop.home()) ? one.file.substr(desktop.home().size() + 1)
                                                                     : one.name + one.file);
        return found;
    }
    using Names = std::vector<std::string>;
};

TEST_F(Resolved, FromTheWaysScriptsFindTheirProgram) {
    const std::string real = program("lib/real");
    for (const std::string& line : std::vector<std::string>{
             "exec " + real + " \"$@\"", "exec -a mailer " + real,
             "export A=1 LIB=" + desktop.home() + "/lib\nexec ${LIB}/real ${1+\"$@\"}",
             "LIB=${LIB:-" + desktop.home() + "/lib}; \"$LIB\"/real \"$@\"; exit $?", "exec \"${0%/*}/../lib/real\"",
             "here=`dirname \"$(readlink -f \"$0\")\"`\nexec \"$here/../lib/real\" \"$@\"",
             "cd \"$(dirname \"$0\")/../lib\" || exit 1\n./real \"$@\"",
             "DIR=$(cd \"$(dirname \"${BASH_SOURCE[0]}\")\" && pwd)\nexec $DIR/../lib/real",
             "if [ -n \"$DEBUG\" ]; then exec gdb --args nothing; else exec env A=1 " + real + "; fi",
             "[ -x /nowhere ] && exec /nowhere \"$@\"\n" + real + " >/dev/null 2>&1 &",
             "cat <<EOF >/dev/null\nexec /bin/ls \"$@\"\nEOF\nexec " + real + " # exec /bin/ls",
             "exec nice -n 1 " + real, "exec sh -c \"cd / && " + real + "\"", "exec /bin/sh -c '" + real + "; true'",
             "exec env -u LANG -- nohup \"" + real + "\"", "nohup setsid " + real + " &> /dev/null &",
             "/bin/ls &\n" + real + " & wait", "xterm -e \"" + real + " --folder=in; true\" &"})
        EXPECT_EQ(of("#!/bin/sh\n" + line + "\n"), Names{"lib/real"}) << line;
}

TEST_F(Resolved, ToNothingFromWhatAScriptDoesOnTheSide) {
    for (const std::string& script :
         {std::string{"mkdir -p x\n/bin/ls\necho \"$@\"\nzenity --info &\n[ \"$@\" ]\nexec 2>/dev/null"},
          std::string{"/bin/ls & sh -c '/bin/ls; $MAILER'\n/bin/ls &\nexec $MAILER"},
          std::string{"exec \"$0\""}, // starts itself for ever
          std::string{"\"'`$(${((\\"}})
        EXPECT_EQ(of("#!/bin/sh\n" + script + "\n"), Names{}) << script.substr(0, 80);
}

TEST_F(Resolved, ToTheTargetOfAGeneralLauncher) {
    const auto only = [](const std::vector<std::string>& command) {
        const auto programs = programsStartedBy(command);
        return programs.size() == 1 ? programs.front() : StartedProgram{};
    };
    EXPECT_EQ(only({"python3", "-m", "mailer", "--quiet"}).arguments,
              (std::vector<std::string>{"-m", "mailer", "--quiet"}));
    EXPECT_TRUE(programsStartedBy({"python3"}).empty());
    const std::string xterm = program("bin/xterm");
    const std::string mutt = program("bin/mutt");
    EXPECT_EQ(only({xterm}).file, xterm);
    EXPECT_EQ(only({xterm, "-class", "Mail"}).kind, StartedProgram::Kind::commandLine);
    for (const std::vector<std::string>& command :
         {Names{xterm, "-T", "Mail", "-e", mutt, "-y"}, Names{xterm, "--", "env", "A=1", mutt},
          Names{xterm, "-e", mutt + " -y"}, Names{"firejail", "--private", mutt}, Names{"pkexec", "--user", "me", mutt},
          Names{"systemd-run", "--user", "-p", "A=1", mutt}, Names{"bwrap", "--ro-bind", "/", "/", "--", mutt},
          Names{"bwrap", "--setenv", "A", "1", "--chdir", "/", mutt}})
        EXPECT_EQ(only(command).file, mutt) << command[1];
}

TEST_F(Resolved, ForADesktopEntryToTheSameIdInAnyFolder) {
    const auto mail = ApplicationEntry::at("/usr/share/applications/kde/mail.desktop");
    EXPECT_TRUE(mail.isDesktopFile("/home/user/.local/share/applications/kde-mail.desktop"));
    EXPECT_FALSE(mail.isDesktopFile("/usr/share/applications/kde-mail2.desktop"));
    EXPECT_FALSE(mail.isDesktopFile("/tmp/kde-mail.desktop"));
}

} // namespace

} // namespace letterloft
