#pragma once

#include "platform/linux/ApplicationEntry.h"
#include "platform/linux/ProcessTable.h"
#include "platform/linux/StartedProgram.h"

#include <string>
#include <vector>

namespace letterloft {

// Whether a process is one of an application, as far as the process alone can tell. A value.
class ApplicationMatcher {
public:
    explicit ApplicationMatcher(ApplicationEntry entry);

    const ApplicationEntry& entry() const { return entry_; }

    // Runs what the application's command line comes down to.
    bool runsProgram(const Process& process, const ProcessTable& table) const;

    // Is a shell, or the loader of an AppImage, that stands above the program.
    bool isWrapper(const Process& process, const ProcessTable& table) const;

    // Was started by the desktop for this application and none else, or runs in the unit that systemd keeps for it.
    bool isMarked(const Process& process, const ProcessTable& table) const;

    // Was started by the desktop for an application that starts something else than this one does.
    bool isMarkedForAnother(const Process& process) const;

    // Whether what it starts is fully told by a file of its own. Otherwise there may be programs that only their
    // windows give away.
    bool isFullyTold() const;

    // Whether it is something that another program, a browser, shows in a window of its own.
    bool isGuest() const;

    // Whether `other` starts the same program in the same way, as a copy of the entry in another folder does; or in any
    // way where it is in no menu, and so only there for what the program opens.
    bool startsTheSame(const ApplicationEntry& other) const;

    // Whether `process`, a child of a process of the application whose program is `main`, is of the application too.
    bool isOfApplication(const Process& process, const Process& main, const ProcessTable& table) const;

private:
    bool runs(const StartedProgram& program, const Process& process, const ProcessTable& table) const;
    bool isInBundle(const std::string& file) const;

    ApplicationEntry entry_;
    std::vector<StartedProgram> programs_;
};

// Whether a process only keeps the sandbox that an application runs in, or speaks for it on the session bus.
bool isSandboxer(const Process& process);

// Whether the control group (cgroups(7), the text of /proc/PID/cgroup) is a unit that systemd's "Desktop Environment
// Integration" names after the application id.
bool isUnitOfApplication(const std::string& controlGroup, const std::string& applicationId);

} // namespace letterloft
