// What belongs to one instance, when it has ended, and what is never asked.
#include "platform/linux/ProcessTable.h"
#include "tests/contract/applications/ApplicationsFixture.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace letterloft {

namespace {

using Instance = Applications;
using Pids = std::set<pid_t>;

TEST_F(Instance, HoldsTheProcessesItStartedOfItself) {
    const std::string browser = program("bin/browser");
    start({browser, "children=3"}, 4);
    start({browser, "children=1"}, 2);
    EXPECT_EQ(instances(browser).size(), 2u);
    EXPECT_EQ(quit(browser).size(), 6u);
}

TEST_F(Instance, IsOneOfItsOwnWhenAnotherProgramStandsBetween) {
    const std::string terminal = program("bin/terminal");
    start({"sh", "-c", terminal + " & sh -c '" + terminal + "; true'; wait"}, 2);
    EXPECT_EQ(instances(terminal).size(), 2u);
}

TEST_F(Instance, HasNotEndedBeforeWhatCameWhileItEnded) {
    const std::string mailer = program("bin/mailer");
    start({mailer, "heir"});
    auto found = instances(mailer);
    ASSERT_EQ(found.size(), 1u);
    found[0]->terminate();
    // The first process ends, its heir is there by then and stays.
    EXPECT_TRUE(watcher.serve(20000));
    EXPECT_FALSE(found[0]->isTerminated());
    const ProcessTable table{::getuid()};
    for (const auto& [pid, process] : table.processes())
        if (process.executable == mailer) kill(pid, SIGTERM);
    waitForEnd(*found[0]);
}

TEST_F(Instance, IsWaitedForWithTheWrapperAboveIt) {
    const std::string mailer = program("lib/mailer-bin");
    const std::string done = desktop.home() + "/done";
    mkfifo(done.c_str(), 0600);
    const std::string wrapper =
        desktop.write("bin/mailer", "#!/bin/sh\n" + mailer + " \"$@\"\nread tidied < " + done + "\n", 0755);
    start({wrapper});
    auto found = instances(entry("mail", wrapper));
    ASSERT_EQ(found.size(), 1u);
    found[0]->terminate();
    EXPECT_TRUE(watcher.serve(20000)); // the program
    EXPECT_FALSE(found[0]->isTerminated());
    std::ofstream{done} << "yes\n";
    waitForEnd(*found[0]);
}

TEST_F(Instance, IsTheScriptItselfWhereItStartsNothingButPauses) {
    const std::string script =
        desktop.write("bin/notifier", "#!/bin/sh\ntrap 'kill $!; exit' TERM\necho ready $$\nsleep 1000 & wait\n", 0755);
    const pid_t running = started({script});
    EXPECT_EQ(quit(script), Pids{running});
}

TEST_F(Instance, IsNeverThisProgram) {
    const std::string own = std::filesystem::read_symlink("/proc/self/exe");
    instances(own);
    EXPECT_TRUE(logSays(own + " (" + std::to_string(getpid()) + ") of " + own + " is not asked to quit"));
}

} // namespace

} // namespace letterloft
