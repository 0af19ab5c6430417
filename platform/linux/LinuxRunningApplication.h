#pragma once

#include "platform/Log.h"
#include "platform/RunningApplications.h"
#include "platform/linux/DescriptorWatcher.h"
#include "platform/linux/HeldProcess.h"
#include "platform/linux/SessionBus.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace letterloft {

class QuitRequest;

// One instance of an application, asked to quit in one way that is chosen once: the quit action on the session bus,
// else its windows, else SIGTERM. What has to follow is done whenever isTerminated() is asked. Never SIGKILL.
class LinuxRunningApplication final : public RunningApplication {
public:
    // What whoever found the instance knows of it.
    struct Instance {
        std::string applicationPath; // for the log
        std::string applicationId;   // the desktop file id, without ".desktop"; empty if it has none

        // The program itself, the only one that is asked; and the processes of the same application it started.
        HeldProcess program;
        std::vector<HeldProcess> others;

        // The processes of this instance that are not among those held so far, which may all have ended by now.
        std::function<std::vector<HeldProcess>(const std::vector<ProcessIdentity>& heldSoFar)> newcomers;

        // The program has ended, and one of the others stands in its place: they are waited for, and none is asked.
        bool isWithoutProgram = false;

        // What speaks on the session bus in the program's place, as for one in a sandbox; asked there, never signalled.
        std::vector<pid_t> proxies = {};
    };

    LinuxRunningApplication(Instance instance, SessionBus& bus, DescriptorWatcher& watcher, Log& log);
    ~LinuxRunningApplication() override;

    void terminate() override;
    bool isTerminated() override;

private:
    using steady_clock = std::chrono::steady_clock;

    void watchEnd(const HeldProcess& process);
    void takeInNewcomers();
    std::vector<pid_t> livingPids() const;

    Instance instance_;
    SessionBus& bus_;
    DescriptorWatcher& watcher_;
    Log& log_;
    std::vector<ProcessIdentity> heldSoFar_;
    steady_clock::time_point lastSearch_;
    std::map<int, std::unique_ptr<DescriptorWatcher::Watch>> watches_; // by pidfd
    std::unique_ptr<QuitRequest> request_;
};

} // namespace letterloft
