#include "platform/linux/ApplicationMatcher.h"

#include "platform/linux/Interpreter.h"
#include "storage/SupportFolder.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace letterloft {

namespace {

using Kind = StartedProgram::Kind;

bool runsFile(const Process& process, const std::string& file, const std::optional<ProgramFileIdentity>& identity) {
    if (identity && process.executableIdentity == identity) return true;
    return process.executableIsGone && process.executable == file;
}

bool isRunBy(const Process& process, const std::string& interpreter) {
    if (process.arguments.empty()) return false;
    const std::string called = interpreterName(process.arguments.front());
    const std::string file = interpreterName(process.executable);
    if (called == interpreter || file == interpreter) return true;
    return isShell(interpreter) && (isShell(called) || isShell(file));
}

std::vector<std::string> argumentsOf(const Process& process) {
    if (process.arguments.empty()) return {};
    return {process.arguments.begin() + 1, process.arguments.end()};
}

// The file the process gives its interpreter, as often as it can be meant; empty if it is no interpreter.
std::vector<std::string> scriptsOf(const Process& process, const std::string& interpreter, const ProcessTable& table) {
    const auto script = scriptArgument(interpreter, argumentsOf(process));
    if (!script) return {};
    if (script->starts_with('/')) return {canonicalPathOfMissing(*script)};
    std::vector<std::string> scripts;
    for (const auto& folder : table.startFolders(process))
        scripts.push_back(canonicalPathOfMissing(joined(folder, *script)));
    return scripts;
}

bool runsScript(const Process& process, const StartedProgram& program, const ProcessTable& table) {
    if (!isRunBy(process, program.interpreter)) return false;
    const auto scripts = scriptsOf(process, program.interpreter, table);
    return std::any_of(scripts.begin(), scripts.end(), [&](const auto& script) {
        return script == program.file || (program.identity && identityOfFile(script) == program.identity);
    });
}

bool startsWith(const std::vector<std::string>& whole, const std::vector<std::string>& start) {
    return whole.size() >= start.size() && std::equal(start.begin(), start.end(), whole.begin());
}

bool isInSnap(const Process& process, const std::string& name, const ProcessTable& table) {
    return table.controlGroup(process).value_or("").find("/snap." + name + ".") != std::string::npos;
}

bool holdsArgument(const Process& process, const std::string& argument) {
    return std::find(process.arguments.begin(), process.arguments.end(), argument) != process.arguments.end();
}

std::string unescapedUnitName(std::string_view text) {
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned value = 0;
        if (text.substr(i, 2) == "\\x" && i + 4 <= text.size() &&
            std::from_chars(text.data() + i + 2, text.data() + i + 4, value, 16).ptr == text.data() + i + 4) {
            name += static_cast<char>(value);
            i += 3;
        } else {
            name += text[i];
        }
    }
    return name;
}

// "app[-LAUNCHER]-ID": a dash of the id itself is escaped, by most.
bool isStemOfApplication(std::string_view stem, const std::string& id) {
    if (stem == id) return true;
    const auto dash = stem.find('-');
    if (unescapedUnitName(stem) == id && dash == std::string_view::npos) return true;
    return dash != std::string_view::npos && stem.find('-', dash + 1) == std::string_view::npos &&
           unescapedUnitName(stem.substr(dash + 1)) == id;
}

bool isUnitName(std::string_view name, const std::string& id) {
    const bool isScope = name.ends_with(".scope");
    if (!isScope && !name.ends_with(".service")) return false;
    name.remove_suffix(isScope ? 6 : 8);
    if (isScope)
        name = name.substr(0, std::min(name.rfind('-'), name.size()));
    else
        name = name.substr(0, std::min(name.rfind('@'), name.size()));
    if (name.starts_with("dbus-:")) { // what the bus started: "dbus-:1.2-ID@0.service"
        const auto dash = name.find('-', 6);
        return dash != std::string_view::npos && unescapedUnitName(name.substr(dash + 1)) == id;
    }
    return name.starts_with("app-") && isStemOfApplication(name.substr(4), id);
}

} // namespace

ApplicationMatcher::ApplicationMatcher(ApplicationEntry entry) : entry_{std::move(entry)} {
    programs_ = programsStartedBy(entry_.command);
    if (programs_.empty() && entry_.kind == ApplicationEntry::Kind::executable && !isSomething(entry_.path))
        programs_ = programsStartedBy({entry_.path});
}

bool ApplicationMatcher::isInBundle(const std::string& file) const {
    return entry_.kind == ApplicationEntry::Kind::bundle && file.starts_with(entry_.path + "/");
}

bool ApplicationMatcher::runs(const StartedProgram& program, const Process& process, const ProcessTable& table) const {
    switch (program.kind) {
    case Kind::executable:
        if (runsFile(process, program.file, program.identity)) return true;
        // The file can't be asked any more whether it was an AppImage.
        return !program.identity && !process.appImage.empty() &&
               canonicalPathOfMissing(process.appImage) == program.file;
    case Kind::script:
        return runsScript(process, program, table);
    case Kind::shellText:
        return isRunBy(process, "sh") && shellText(argumentsOf(process)) == program.name;
    case Kind::appImage:
        return !process.appImage.empty() && canonicalPath(process.appImage) == program.file;
    case Kind::flatpak:
        return !isSandboxer(process) && table.flatpakName(process) == program.name;
    case Kind::snap:
        return !isSandboxer(process) && isInSnap(process, program.name, table);
    case Kind::webApp:
        return holdsArgument(process, program.name) && !isRunBy(process, "sh");
    case Kind::commandLine:
        return isRunBy(process, program.interpreter) && startsWith(argumentsOf(process), program.arguments);
    }
    return false;
}

bool ApplicationMatcher::runsProgram(const Process& process, const ProcessTable& table) const {
    for (const auto& program : programs_)
        if (!program.isWrapper() && runs(program, process, table)) return true;
    if (entry_.kind != ApplicationEntry::Kind::bundle) return false;
    if (isInBundle(process.executable)) return !isWrapper(process, table);
    const std::string interpreter = interpreterName(process.executable);
    if (!isInterpreter(interpreter) || isShell(interpreter)) return false;
    const auto scripts = scriptsOf(process, interpreter, table);
    return std::any_of(scripts.begin(), scripts.end(), [&](const auto& script) { return isInBundle(script); });
}

bool ApplicationMatcher::isWrapper(const Process& process, const ProcessTable& table) const {
    return std::any_of(programs_.begin(), programs_.end(), [&](const auto& program) {
        if (program.kind == Kind::appImage) return runsFile(process, program.file, program.identity);
        return program.isWrapper() && runs(program, process, table);
    });
}

bool ApplicationMatcher::isMarked(const Process& process, const ProcessTable& table) const {
    if (entry_.kind != ApplicationEntry::Kind::desktopEntry) return false;
    if (!process.launchMark.empty() && entry_.isDesktopFile(process.launchMark)) return true;
    const auto group = table.controlGroup(process);
    if (!group || !isUnitOfApplication(*group, entry_.identifier)) return false;
    // All that was ever started from inside stays in the unit; the program is what the unit was made for.
    if (group->find("-" + std::to_string(process.identity.pid) + ".scope") != std::string::npos) return true;
    if (isFullyTold()) return false;
    const auto isElsewhere = [&](pid_t pid) {
        const Process* other = table.find(pid);
        return !other || other == &process || table.controlGroup(*other) != group;
    };
    const bool isOldest = std::none_of(table.processes().begin(), table.processes().end(), [&](const auto& entry) {
        return entry.second.identity.startTime < process.identity.startTime &&
               table.controlGroup(entry.second) == group;
    });
    return isOldest && isElsewhere(process.parent) && isElsewhere(process.session);
}

bool ApplicationMatcher::isMarkedForAnother(const Process& process) const {
    if (entry_.kind != ApplicationEntry::Kind::desktopEntry) return false;
    if (process.launchMark.empty() || entry_.isDesktopFile(process.launchMark)) return false;
    // An entry that has been removed or renamed since, as by an upgrade, says nothing.
    if (!isSomething(process.launchMark)) return false;
    return !startsTheSame(ApplicationEntry::at(process.launchMark));
}

bool ApplicationMatcher::isFullyTold() const {
    return !programs_.empty() && std::all_of(programs_.begin(), programs_.end(), [](const auto& program) {
        return program.identity && !program.isWrapper() &&
               (program.kind == Kind::executable || program.kind == Kind::script || program.kind == Kind::appImage);
    });
}

bool ApplicationMatcher::isGuest() const {
    return std::any_of(programs_.begin(), programs_.end(),
                       [](const auto& program) { return program.kind == Kind::webApp; });
}

bool ApplicationMatcher::startsTheSame(const ApplicationEntry& other) const {
    const auto others = programsStartedBy(other.command);
    return std::any_of(programs_.begin(), programs_.end(), [&](const auto& own) {
        return std::any_of(others.begin(), others.end(), [&](const auto& one) {
            return own.isSameProgramAs(one) && (other.noDisplay || own.arguments == one.arguments);
        });
    });
}

bool ApplicationMatcher::isOfApplication(const Process& process, const Process& main, const ProcessTable& table) const {
    if (runsProgram(process, table)) return true;
    if (!process.executableIdentity || process.executableIdentity != main.executableIdentity) return false;
    // One interpreter runs many programs: only a child without a script of its own belongs to its parent's.
    const std::string interpreter = interpreterName(process.executable);
    return !isInterpreter(interpreter) || scriptsOf(process, interpreter, table).empty() ||
           process.arguments == main.arguments;
}

bool isSandboxer(const Process& process) {
    const std::string name = lastComponent(process.executable);
    return name == "bwrap" || name == "xdg-dbus-proxy" || name == "flatpak" || name == "snap";
}

bool isUnitOfApplication(const std::string& controlGroup, const std::string& applicationId) {
    if (applicationId.empty()) return false;
    std::string_view rest = controlGroup;
    while (!rest.empty()) {
        const auto end = std::min(rest.find_first_of("/\n"), rest.size());
        if (isUnitName(rest.substr(0, end), applicationId)) return true;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return false;
}

} // namespace letterloft
