#include "platform/linux/ProcessTable.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <dirent.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace letterloft {

namespace {

constexpr std::size_t longestStat = 4096;
constexpr std::size_t longestArguments = std::size_t{1} << 17;
constexpr std::size_t longestEnvironment = std::size_t{1} << 21; // no execve(2) takes more by default
constexpr unsigned long kernelThreadFlag = 0x00200000;           // PF_KTHREAD of the kernel's sched.h
constexpr std::string_view goneSuffix = " (deleted)";

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

template <typename Number>
std::optional<Number> number(std::string_view text) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const auto end = std::min(text.find(separator), text.size());
        parts.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

std::string valueIn(std::string_view environment, std::string_view name) {
    for (const auto entry : split(environment, '\0'))
        if (entry.size() > name.size() && entry[name.size()] == '=' && entry.starts_with(name))
            return std::string{entry.substr(name.size() + 1)};
    return {};
}

std::string linkText(const std::string& path) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = ::readlink(path.c_str(), text.data(), text.size());
    return length < 0 ? std::string{} : std::string{text.data(), static_cast<std::size_t>(length)};
}

// The fields of /proc/PID/stat; the name in parentheses may itself hold blanks and parentheses.
bool readStat(std::string_view line, Process& process, char& state, bool& isKernelThread) {
    const auto nameEnd = line.rfind(')');
    if (nameEnd == std::string_view::npos || nameEnd + 2 > line.size()) return false;
    const auto fields = split(line.substr(nameEnd + 2), ' ');
    if (fields.size() < 20 || fields[0].size() != 1) return false;
    const auto parent = number<pid_t>(fields[1]);
    const auto group = number<pid_t>(fields[2]);
    const auto session = number<pid_t>(fields[3]);
    const auto flags = number<unsigned long>(fields[6]);
    const auto startTime = number<std::uint64_t>(fields[19]);
    if (!parent || !group || !session || !flags || !startTime) return false;
    isKernelThread = (*flags & kernelThreadFlag) != 0;
    state = fields[0].front();
    process.parent = *parent;
    process.group = *group;
    process.session = *session;
    process.identity.startTime = *startTime;
    return true;
}

// The real user, since the folder of a process that may not be looked into belongs to root.
bool belongsTo(uid_t user, const std::string& folder) {
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0) return false;
    if (status.st_uid == user) return true;
    if (status.st_uid != 0) return false;
    const std::string text = headOfFile(folder + "/status", longestStat).value_or("");
    const auto at = text.find("\nUid:\t");
    if (at == std::string::npos) return false;
    const std::string_view rest = std::string_view{text}.substr(at + 6);
    return number<uid_t>(rest.substr(0, rest.find('\t'))) == user;
}

void readEnvironment(const std::string& environment, Process& process) {
    if (const auto pid = number<pid_t>(valueIn(environment, "GIO_LAUNCHED_DESKTOP_FILE_PID"))) {
        process.launchMarkPid = *pid;
        if (*pid == process.identity.pid) process.launchMark = valueIn(environment, "GIO_LAUNCHED_DESKTOP_FILE");
    }
    const std::string folder = valueIn(environment, "APPDIR");
    if (!folder.empty() && process.executable.starts_with(folder + "/"))
        process.appImage = valueIn(environment, "APPIMAGE");
}

void readClosed(Process& process) {
    process.isClosed = true;
    const auto program = programInPath(process.arguments.front());
    if (!program) return;
    process.executable = canonicalPathOfMissing(*program);
    process.executableIdentity = identityOfFile(process.executable);
}

} // namespace

ProcessTable::ProcessTable(uid_t user, std::string root, const StartTimes& known) : root_{std::move(root)} {
    const std::unique_ptr<DIR, CloseFolder> folder{::opendir(root_.c_str())};
    couldBeRead_ = folder != nullptr;
    if (!folder) return;
    while (const dirent* entry = ::readdir(folder.get())) {
        const auto pid = number<pid_t>(entry->d_name);
        if (!pid || *pid <= 0) continue;
        if (auto process = read(*pid, user, known)) processes_.emplace(*pid, std::move(*process));
    }
}

std::string ProcessTable::file(pid_t pid, const char* name) const {
    return root_ + "/" + std::to_string(pid) + "/" + name;
}

std::optional<Process> ProcessTable::read(pid_t pid, uid_t user, const StartTimes& known) {
    Process process;
    process.identity.pid = pid;
    char state = '\0';
    const auto line = headOfFile(file(pid, "stat"), longestStat);
    bool isKernelThread = false;
    if (!line || !readStat(*line, process, state, isKernelThread)) return std::nullopt;
    seen_.emplace(pid, process.identity.startTime);
    if (state == 'Z' || state == 'X' || isKernelThread) return std::nullopt;
    if (const auto one = known.find(pid); one != known.end() && one->second == process.identity.startTime)
        return std::nullopt;
    if (!belongsTo(user, root_ + "/" + std::to_string(pid))) return std::nullopt;

    const std::string link = file(pid, "exe");
    process.executable = linkText(link);
    process.executableIdentity = identityOfFile(link);
    // A file may really be called "x (deleted)".
    if (process.executable.ends_with(goneSuffix) && identityOfFile(process.executable) != process.executableIdentity) {
        process.executable.resize(process.executable.size() - goneSuffix.size());
        process.executableIsGone = true;
    }
    const std::string arguments = headOfFile(file(pid, "cmdline"), longestArguments).value_or("");
    for (const auto argument : split(arguments, '\0'))
        process.arguments.emplace_back(argument);
    if (process.executable.empty() && !process.arguments.empty()) readClosed(process);
    readEnvironment(headOfFile(file(pid, "environ"), longestEnvironment).value_or(""), process);
    return process;
}

std::set<pid_t> ProcessTable::lineageOf(pid_t pid) const {
    std::set<pid_t> lineage;
    while (pid > 0 && lineage.insert(pid).second) {
        Process process;
        char state = '\0';
        bool isKernelThread = false;
        const auto line = headOfFile(file(pid, "stat"), longestStat);
        if (!line || !readStat(*line, process, state, isKernelThread)) break;
        pid = process.parent;
    }
    return lineage;
}

const Process* ProcessTable::find(pid_t pid) const {
    const auto found = processes_.find(pid);
    return found == processes_.end() ? nullptr : &found->second;
}

std::vector<const Process*> ProcessTable::childrenOf(pid_t pid) const {
    std::vector<const Process*> children;
    for (const auto& [number, process] : processes_)
        if (process.parent == pid && number != pid) children.push_back(&process);
    return children;
}

std::vector<const Process*> ProcessTable::ancestorsOf(const Process& process) const {
    std::vector<const Process*> ancestors;
    std::set<pid_t> seen{process.identity.pid};
    for (const Process* up = find(process.parent); up && seen.insert(up->identity.pid).second; up = find(up->parent))
        ancestors.push_back(up);
    return ancestors;
}

std::optional<std::string> ProcessTable::controlGroup(const Process& process) const {
    return headOfFile(file(process.identity.pid, "cgroup"), longestArguments);
}

std::vector<std::string> ProcessTable::startFolders(const Process& process) const {
    std::vector<std::string> folders;
    if (std::string folder = linkText(file(process.identity.pid, "cwd")); !folder.empty())
        folders.push_back(std::move(folder));
    // It may have gone elsewhere since; shells tell it where they started it.
    const std::string environment = headOfFile(file(process.identity.pid, "environ"), longestEnvironment).value_or("");
    if (std::string folder = valueIn(environment, "PWD"); folder.starts_with('/')) folders.push_back(std::move(folder));
    return folders;
}

std::string ProcessTable::flatpakInfo(const Process& process, std::string_view key) const {
    const std::string text =
        headOfFile(file(process.identity.pid, "root/.flatpak-info"), longestArguments).value_or("");
    for (const auto line : split(text, '\n'))
        if (line.starts_with(key)) return std::string{line.substr(key.size())};
    return {};
}

std::string ProcessTable::flatpakName(const Process& process) const { return flatpakInfo(process, "name="); }

std::string ProcessTable::flatpakInstance(const Process& process) const { return flatpakInfo(process, "instance-id="); }

} // namespace letterloft
