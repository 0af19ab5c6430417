#include "platform/linux/InstanceSearch.h"

#include "platform/linux/DesktopEntries.h"
#include "platform/linux/Interpreter.h"
#include "platform/linux/LaunchingPrograms.h"
#include "storage/SupportFolder.h"

#include <algorithm>

namespace letterloft {

namespace {

bool isNamed(const XWindows::Window& window, const std::string& name) {
    return window.className == name || window.instanceName == name;
}

} // namespace

InstanceSearch::InstanceSearch(const ApplicationMatcher& matcher, const ProcessTable& table, SessionBus& bus,
                               XWindows& windows)
    : matcher_{matcher}, table_{table} {
    collectWindows(windows);
    collectNamed(bus);
    collectPrograms();
}

std::vector<InstanceSearch::Found> InstanceSearch::instances() {
    leaveOutWrappers();
    takeProgramsOfWrappers();
    leaveOutChildren();
    std::vector<Found> all;
    std::set<pid_t> taken = programs_;
    for (const pid_t pid : programs_) {
        Found found;
        found.program = table_.find(pid);
        found.proxies = inSandboxOf(*found.program, SandboxSide::proxies);
        collectOthers(*found.program, *found.program, taken, found);
        all.push_back(std::move(found));
    }
    // A wrapper ends with the last program below it, so it is waited for with that one.
    for (const auto& [wrapper, program] : wrappers_) {
        const auto last =
            std::find_if(all.rbegin(), all.rend(), [&, id = wrapper, stead = program](const Found& found) {
                return found.program->identity.pid == stead || isBelow(*found.program, id);
            });
        if (last != all.rend() && taken.insert(wrapper).second) last->others.push_back(table_.find(wrapper));
    }
    return all;
}

bool InstanceSearch::isBelow(const Process& process, pid_t above) const {
    const auto ancestors = table_.ancestorsOf(process);
    return std::find(ancestors.begin(), ancestors.end(), table_.find(above)) != ancestors.end();
}

void InstanceSearch::collectWindows(XWindows& windows) {
    for (auto& window : windows.clientWindows())
        if (table_.find(window.pid)) windows_.emplace(window.pid, window);
}

// What the application itself, or whoever started it, says: nothing else may say so.
void InstanceSearch::collectNamed(SessionBus& bus) {
    const ApplicationEntry& entry = matcher_.entry();
    if (entry.kind == ApplicationEntry::Kind::desktopEntry) {
        // Only a name with a dot can be one of the bus (D-Bus Specification, "Bus names").
        if (entry.identifier.find('.') != std::string::npos)
            if (const Process* owner = table_.find(bus.ownerPid(entry.identifier).value_or(0))) {
                const std::vector<pid_t> meant = isSandboxer(*owner) ? inSandboxOf(*owner, SandboxSide::programs)
                                                                     : std::vector<pid_t>{owner->identity.pid};
                named_.insert(meant.begin(), meant.end());
            }
        for (const auto& [pid, window] : windows_)
            if (window.applicationId == entry.identifier) named_.insert(pid);
    }
    for (const auto& [pid, process] : table_.processes())
        if (matcher_.isMarked(process, table_)) named_.insert(pid);
    std::erase_if(named_, [&](pid_t pid) { return !table_.find(pid); });
}

std::vector<pid_t> InstanceSearch::inSandboxOf(const Process& member, SandboxSide side) const {
    const std::string sandbox = table_.flatpakInstance(member);
    std::vector<pid_t> found;
    if (sandbox.empty()) return found;
    for (const auto& [pid, process] : table_.processes())
        if (isSandboxer(process) == (side == SandboxSide::proxies) && table_.flatpakInstance(process) == sandbox)
            found.push_back(pid);
    return found;
}

void InstanceSearch::collectPrograms() {
    matched_ = named_;
    const std::string& windowClass = matcher_.entry().startupWMClass;
    for (const auto& [pid, process] : table_.processes()) {
        // The class is a name that anybody's windows may have; it counts where nothing better tells the program.
        const bool isMatch = matcher_.runsProgram(process, table_) ||
                             (!windowClass.empty() && !matcher_.isFullyTold() && showsItself(process, windowClass));
        if (isMatch && !matched_.contains(pid) && !isOfAnotherEntry(process)) matched_.insert(pid);
        if (matcher_.isWrapper(process, table_) && !matcher_.isMarkedForAnother(process)) wrappers_.emplace(pid, 0);
    }
    for (const auto& [wrapper, program] : wrappers_)
        matched_.erase(wrapper);
    programs_ = matched_;
}

// What was started in the application's name but is not its program, and has the program below it: a terminal, a
// sandbox, a launcher of its own.
void InstanceSearch::leaveOutWrappers() {
    std::set<pid_t> above;
    for (const pid_t pid : matched_)
        if (matcher_.runsProgram(*table_.find(pid), table_))
            for (const Process* ancestor : table_.ancestorsOf(*table_.find(pid)))
                if (!matcher_.runsProgram(*ancestor, table_)) above.insert(ancestor->identity.pid);
    std::erase_if(programs_, [&](pid_t pid) { return above.contains(pid); });
    std::erase_if(matched_, [&](pid_t pid) { return above.contains(pid); });
}

void InstanceSearch::takeProgramsOfWrappers() {
    std::vector<const Process*> deepestFirst;
    for (const auto& [wrapper, program] : wrappers_)
        deepestFirst.push_back(table_.find(wrapper));
    std::stable_sort(deepestFirst.begin(), deepestFirst.end(), [&](const Process* a, const Process* b) {
        return table_.ancestorsOf(*a).size() > table_.ancestorsOf(*b).size();
    });
    for (const Process* wrapper : deepestFirst)
        wrappers_[wrapper->identity.pid] = programBelow(*wrapper);
}

// The program to be asked in the wrapper's stead, which is one from now on; 0 for none.
pid_t InstanceSearch::programBelow(const Process& wrapper) {
    for (const pid_t pid : programs_)
        if (isBelow(*table_.find(pid), wrapper.identity.pid)) return pid;
    const Process* parent = table_.find(wrapper.parent);
    if (parent && isSubshell(wrapper, *parent)) return 0; // the shell it came from is looked at
    // What serves an AppImage its files ends with the program.
    const bool isLoader = !isInterpreter(interpreterName(wrapper.executable));
    if (isLoader && !programs_.empty()) return 0;

    auto started = startedBy(wrapper);
    std::stable_sort(started.begin(), started.end(), [&](const Process* a, const Process* b) {
        if (ownsWindow(*a) != ownsWindow(*b)) return ownsWindow(*a);
        return a->identity.startTime < b->identity.startTime;
    });
    // A script that started nothing of the kind is the program itself.
    const pid_t program = started.empty() ? wrapper.identity.pid : started.front()->identity.pid;
    programs_.insert(program);
    matched_.insert(program);
    return program;
}

bool InstanceSearch::isSubshell(const Process& child, const Process& shell) {
    return child.executableIdentity == shell.executableIdentity && child.arguments == shell.arguments;
}

// The children of a wrapper, through its subshells, that a script would be written for.
std::vector<const Process*> InstanceSearch::startedBy(const Process& wrapper) const {
    std::vector<const Process*> started;
    for (const Process* child : table_.childrenOf(wrapper.identity.pid)) {
        if (isSubshell(*child, wrapper)) {
            const auto deeper = startedBy(*child);
            started.insert(started.end(), deeper.begin(), deeper.end());
        } else if (!isBystander(lastComponent(child->executable))) {
            started.push_back(child);
        }
    }
    return started;
}

// The highest process that this one comes from by a chain of processes of the application.
const Process* InstanceSearch::topOf(const Process& process) const {
    const Process* top = &process;
    for (const Process* ancestor : table_.ancestorsOf(process)) {
        const bool isLink =
            matched_.contains(ancestor->identity.pid) || ancestor->isClosed ||
            (ancestor->executableIdentity && ancestor->executableIdentity == process.executableIdentity);
        if (!isLink) break;
        if (matched_.contains(ancestor->identity.pid)) top = ancestor;
    }
    return top;
}

void InstanceSearch::leaveOutChildren() {
    const std::set<pid_t> candidates = programs_;
    for (const pid_t pid : candidates) {
        const Process& process = *table_.find(pid);
        const Process& top = *topOf(process);
        if (&top == &process) continue;
        if (!ownsWindow(process)) {
            programs_.erase(pid);
        } else if (!ownsWindow(top) && top.executableIdentity != process.executableIdentity) {
            // A starter that stays, without anything to show.
            programs_.erase(top.identity.pid);
            wrappers_[top.identity.pid] = pid;
        }
    }
}

void InstanceSearch::collectOthers(const Process& program, const Process& parent, std::set<pid_t>& taken,
                                   Found& found) const {
    for (const Process* child : table_.childrenOf(parent.identity.pid)) {
        const pid_t pid = child->identity.pid;
        if (!matched_.contains(pid) && !matcher_.isOfApplication(*child, program, table_)) continue;
        if (wrappers_.contains(pid) || !taken.insert(pid).second) continue;
        found.others.push_back(child);
        collectOthers(program, *child, taken, found);
    }
}

bool InstanceSearch::isOfAnotherEntry(const Process& process) const {
    return matcher_.isMarkedForAnother(process) || showsWindowOfAnotherEntry(process);
}

bool InstanceSearch::showsWindowOfAnotherEntry(const Process& process) const {
    const ApplicationEntry& entry = matcher_.entry();
    if (entry.kind != ApplicationEntry::Kind::desktopEntry || !ownsWindow(process)) return false;
    if (!entry.startupWMClass.empty() && hasWindowNamed(process, entry.startupWMClass)) return false;
    const auto [first, last] = windows_.equal_range(process.identity.pid);
    std::set<std::string> names;
    std::for_each(first, last, [&](const auto& window) {
        names.insert(window.second.className);
        names.insert(window.second.instanceName);
    });
    const auto others = desktopEntriesOfWindows(names);
    return std::any_of(others.begin(), others.end(), [&](const ApplicationEntry& other) {
        // Who only borrows the program, such as a web page in a browser's window, has no say in what it is.
        const ApplicationMatcher another{other};
        return !entry.isDesktopFile(other.path) && !matcher_.startsTheSame(other) &&
               another.runsProgram(process, table_) && !another.isGuest();
    });
}

// A browser that shows a guest beside windows of its own is not the guest's to end.
bool InstanceSearch::showsItself(const Process& process, const std::string& name) const {
    if (!matcher_.isGuest()) return hasWindowNamed(process, name);
    const auto [first, last] = windows_.equal_range(process.identity.pid);
    return first != last && std::all_of(first, last, [&](const auto& window) { return isNamed(window.second, name); });
}

bool InstanceSearch::hasWindowNamed(const Process& process, const std::string& name) const {
    const auto [first, last] = windows_.equal_range(process.identity.pid);
    return std::any_of(first, last, [&](const auto& window) { return isNamed(window.second, name); });
}

bool InstanceSearch::ownsWindow(const Process& process) const {
    const auto [first, last] = windows_.equal_range(process.identity.pid);
    return std::any_of(first, last,
                       [](const auto& window) { return !window.second.isDialog && window.second.transientFor == 0; });
}

} // namespace letterloft
