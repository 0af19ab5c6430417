#pragma once

#include "platform/Log.h"
#include "platform/RunningApplications.h"
#include "platform/linux/DescriptorWatcher.h"
#include "platform/linux/SessionBus.h"

#include <memory>
#include <string>
#include <vector>

namespace letterloft {

// Finds instances in /proc, on the session bus and among the windows of the X11 display; each is looked at anew in each
// call, and one that is not there tells nothing. Of a bundle, desktop entry or executable that is gone or broken the
// log says so, and what still runs of it is found all the same.
class LinuxRunningApplications final : public RunningApplications {
public:
    LinuxRunningApplications(SessionBus& bus, DescriptorWatcher& watcher, Log& log);

    std::vector<std::unique_ptr<RunningApplication>> runningInstances(const std::string& applicationPath) override;

private:
    SessionBus& bus_;
    DescriptorWatcher& watcher_;
    Log& log_;
};

} // namespace letterloft
