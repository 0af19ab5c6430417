#include "platform/linux/LinuxRunningApplications.h"

#include "platform/linux/ApplicationMatcher.h"
#include "platform/linux/HeldProcess.h"
#include "platform/linux/InstanceSearch.h"
#include "platform/linux/LinuxRunningApplication.h"
#include "platform/linux/ProcessTable.h"
#include "platform/linux/XWindows.h"
#include "storage/Text.h"

#include <algorithm>
#include <optional>
#include <set>
#include <unistd.h>
#include <utility>

namespace letterloft {

namespace {

// What comes while an instance is ending: the children of its processes, and what has been left an orphan since.
class Newcomers {
public:
    Newcomers(std::shared_ptr<const ApplicationMatcher> matcher, const ProcessTable& table,
              const InstanceSearch::Found& instance)
        : matcher_{std::move(matcher)}, program_{*instance.program}, strangers_{table.seen()} {
        strangers_.erase(instance.program->identity.pid);
        for (const Process* other : instance.others)
            strangers_.erase(other->identity.pid);
    }

    std::vector<HeldProcess> operator()(const std::vector<ProcessIdentity>& heldSoFar) const {
        const ProcessTable table{::getuid(), "/proc", strangers_};
        const std::set<pid_t> own = table.lineageOf(::getpid());
        std::vector<ProcessIdentity> ours = heldSoFar;
        std::vector<HeldProcess> newcomers;
        // Again after each find, for its own children.
        for (bool isMore = true; std::exchange(isMore, false);) {
            for (const auto& [pid, process] : table.processes()) {
                if (own.contains(pid) || holds(ours, process.identity)) continue;
                if (!isNewcomer(process, ours, table)) continue;
                ours.push_back(process.identity);
                isMore = true;
                if (auto held = HeldProcess::hold(process.identity)) newcomers.push_back(std::move(*held));
            }
        }
        return newcomers;
    }

private:
    static bool holds(const std::vector<ProcessIdentity>& list, const ProcessIdentity& identity) {
        return std::find(list.begin(), list.end(), identity) != list.end();
    }

    bool isNewcomer(const Process& process, const std::vector<ProcessIdentity>& ours, const ProcessTable& table) const {
        const Process* parent = table.find(process.parent);
        if (parent && holds(ours, parent->identity))
            return matcher_->isOfApplication(process, program_, table) || matcher_->isWrapper(*parent, table);
        // One whose parent has ended already keeps that one's group, or the launch mark it inherited; one that the user
        // starts meanwhile has a group or a mark of its own.
        const bool isKin = (process.group == program_.group && process.session == program_.session) ||
                           process.launchMarkPid == program_.identity.pid;
        return isKin && process.launchMark.empty() && matcher_->isOfApplication(process, program_, table);
    }

    std::shared_ptr<const ApplicationMatcher> matcher_;
    Process program_;
    ProcessTable::StartTimes strangers_;
};

std::string nameOf(const Process& process) {
    return process.executable + " (" + std::to_string(process.identity.pid) + ")";
}

std::optional<HeldProcess> held(const Process& process, Log& log) {
    auto held = HeldProcess::hold(process.identity);
    if (held && held->descriptor() < 0)
        log.write(filledForLog("The end of %@ can only be looked for, and no signal be sent to it: the system gives no "
                               "descriptor for it",
                               {nameOf(process)}));
    return held;
}

bool holdsOneOf(const std::set<pid_t>& pids, const InstanceSearch::Found& found) {
    return pids.contains(found.program->identity.pid) ||
           std::any_of(found.others.begin(), found.others.end(),
                       [&](const Process* other) { return pids.contains(other->identity.pid); });
}

} // namespace

LinuxRunningApplications::LinuxRunningApplications(SessionBus& bus, DescriptorWatcher& watcher, Log& log)
    : bus_{bus}, watcher_{watcher}, log_{log} {}

std::vector<std::unique_ptr<RunningApplication>>
LinuxRunningApplications::runningInstances(const std::string& applicationPath) {
    const auto matcher = std::make_shared<const ApplicationMatcher>(ApplicationEntry::at(applicationPath));
    const ApplicationEntry& entry = matcher->entry();
    if (!entry.usable) log_.write(escaped(entry.usable.sentence()));
    const ProcessTable table{::getuid()};
    if (!table.couldBeRead()) log_.write("The processes can't be looked at: /proc can't be read");
    XWindows windows;
    const std::set<pid_t> own = table.lineageOf(::getpid());

    std::vector<std::unique_ptr<RunningApplication>> instances;
    for (const auto& found : InstanceSearch{*matcher, table, bus_, windows}.instances()) {
        if (holdsOneOf(own, found)) {
            log_.write(filledForLog("%@ of %@ is not asked to quit, because this program was started from it",
                                    {nameOf(*found.program), applicationPath}));
            continue;
        }
        auto program = held(*found.program, log_);
        std::vector<HeldProcess> others;
        for (const Process* other : found.others)
            if (auto one = held(*other, log_)) others.push_back(std::move(*one));
        // One that ended just now leaves its instance to those that are still there.
        const bool isWithoutProgram = !program;
        if (isWithoutProgram && !others.empty()) {
            program = std::move(others.back());
            others.pop_back();
        }
        if (!program) continue;
        const bool hasId = entry.kind == ApplicationEntry::Kind::desktopEntry;
        instances.push_back(std::make_unique<LinuxRunningApplication>(
            LinuxRunningApplication::Instance{applicationPath, hasId ? entry.identifier : std::string{},
                                              std::move(*program), std::move(others), Newcomers{matcher, table, found},
                                              isWithoutProgram, found.proxies},
            bus_, watcher_, log_));
    }
    return instances;
}

} // namespace letterloft
