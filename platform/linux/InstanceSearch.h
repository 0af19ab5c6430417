#pragma once

#include "platform/linux/ApplicationMatcher.h"
#include "platform/linux/ProcessTable.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/XWindows.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace letterloft {

// One look at everything that runs, for the instances of one application. Used once.
class InstanceSearch {
public:
    InstanceSearch(const ApplicationMatcher& matcher, const ProcessTable& table, SessionBus& bus, XWindows& windows);

    // The program, and the other processes that have to end with it.
    struct Found {
        const Process* program = nullptr;
        std::vector<const Process*> others;
        std::vector<pid_t> proxies; // speak for it on the session bus, and end by themselves
    };

    std::vector<Found> instances();

private:
    enum class SandboxSide { programs, proxies };

    void collectWindows(XWindows& windows);
    void collectNamed(SessionBus& bus);
    void collectPrograms();
    void leaveOutWrappers();
    void takeProgramsOfWrappers();
    pid_t programBelow(const Process& wrapper);
    bool isBelow(const Process& process, pid_t above) const;
    static bool isSubshell(const Process& child, const Process& shell);
    std::vector<const Process*> startedBy(const Process& wrapper) const;
    void leaveOutChildren();
    const Process* topOf(const Process& process) const;
    bool isOfAnotherEntry(const Process& process) const;
    bool showsWindowOfAnotherEntry(const Process& process) const;
    bool showsItself(const Process& process, const std::string& name) const;
    bool hasWindowNamed(const Process& process, const std::string& name) const;
    bool ownsWindow(const Process& process) const;
    std::vector<pid_t> inSandboxOf(const Process& member, SandboxSide side) const;
    void collectOthers(const Process& program, const Process& parent, std::set<pid_t>& taken, Found& found) const;

    const ApplicationMatcher& matcher_;
    const ProcessTable& table_;
    std::multimap<pid_t, XWindows::Window> windows_;
    std::set<pid_t> named_;           // positively of this application and no other
    std::set<pid_t> matched_;         // all that are
    std::set<pid_t> programs_;        // those of them that are asked
    std::map<pid_t, pid_t> wrappers_; // a wrapper, and the program that is asked in its stead; 0 for none
};

} // namespace letterloft
