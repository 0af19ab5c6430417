#pragma once

#include "platform/linux/HeldProcess.h"
#include "platform/linux/LinuxRunningApplications.h"
#include "tests/contract/quitting/Desktop.h"
#include "tests/contract/quitting/PollWatcher.h"

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
    struct KeptLog final : Log {
        void write(const std::string& message) override { text += message + "\n"; }
        std::string text;
    };

    ~Applications() override;

    // A copy of the test's application, or another, at that place in the home; never the same file twice.
    std::string program(const std::string& place, const std::string& original = LETTERLOFT_TEST_APPLICATION) const;

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

    // Serves events until the instance has ended; false if that takes unreasonably long.
    bool waitForEnd(RunningApplication& instance);

    Desktop desktop_;
    KeptLog log_;
    PollWatcher watcher_;
    std::unique_ptr<SessionBus> bus_;

private:
    std::vector<std::unique_ptr<Started>> started_;
    std::map<pid_t, HeldProcess> known_;
};

} // namespace letterloft
