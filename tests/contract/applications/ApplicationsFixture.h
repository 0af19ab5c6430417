#pragma once

#include "platform/linux/HeldProcess.h"
#include "platform/linux/LinuxRunningApplications.h"
#include "tests/contract/quitting/Desktop.h"
#include "tests/contract/quitting/PollWatcher.h"
#include "tests/fakes/FakeLog.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace letterloft {

// Small applications in a home of their own, started in every way, and what becomes of them when one is asked to quit.
class Applications : public testing::Test {
protected:
    ~Applications() override;

    // A copy of the test program at that place in the home; never the same file twice.
    std::string program(const std::string& place) const;

    // A desktop entry in the home's applications folder. Its id is not that of another test's, running meanwhile,
    // unless it is a name on the bus.
    std::string entry(const std::string& id, const std::string& exec, const std::string& more = "") const;

    // Starts a command and waits until `processes` of it are up; gives their process ids, in the order they told them.
    std::vector<pid_t> start(const std::vector<std::string>& command, std::size_t processes = 1);
    pid_t started(const std::vector<std::string>& command) { return start(command).front(); }

    // Takes the list once, asks every instance in it to quit, waits for all to end, and tells which of all processes
    // that were ever started here have ended by then.
    std::set<pid_t> quit(const std::string& applicationPath);

    std::vector<std::unique_ptr<RunningApplication>> instances(const std::string& applicationPath);

    // Serves events until it holds, which is asked again every half second.
    void serveUntil(const std::function<bool()>& condition);
    void waitForEnd(RunningApplication& instance);

    bool logSays(const std::string& words) const;

    Desktop desktop;
    FakeLog log;
    SessionBus bus{log};
    PollWatcher watcher;

private:
    std::vector<std::unique_ptr<Started>> started_;
    std::map<pid_t, HeldProcess> known_;
};

} // namespace letterloft
