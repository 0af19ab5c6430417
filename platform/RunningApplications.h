#pragma once

#include <memory>
#include <string>
#include <vector>

namespace letterloft {

// One running instance of an application: the program itself together with the processes it started.
class RunningApplication {
public:
    virtual ~RunningApplication() = default;

    // Asks the instance to quit in the ordinary way, so that it may ask about unsaved work or refuse. Returns at once.
    // Called once for each instance.
    virtual void terminate() = 0;

    // Whether the instance has ended, all of its processes included.
    virtual bool isTerminated() = 0;
};

// The applications that run on this desktop. Owned by main; outlives the controllers. Main thread only.
// The end of an instance that was asked to quit is an event of the run loop (platform/RunLoop.h).
class RunningApplications {
public:
    virtual ~RunningApplications() = default;

    // Every running instance, of this user, of the application at `applicationPath` (absolute; a bundle, a desktop
    // entry or an executable), in no particular order. Empty when none runs, or when the path is no application.
    virtual std::vector<std::unique_ptr<RunningApplication>> runningInstances(const std::string& applicationPath) = 0;
};

} // namespace letterloft
