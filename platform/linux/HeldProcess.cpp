#include "platform/linux/HeldProcess.h"

#include "platform/linux/ProgramFiles.h"

extern "C" { // glibc 2.36 declares these without it
#include <sys/pidfd.h>
}

#include <cerrno>
#include <csignal>
#include <dirent.h>
#include <memory>
#include <poll.h>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace letterloft {

namespace {

std::string readProcessFile(pid_t pid, const std::string& name) {
    constexpr std::size_t longest = 65536;
    return headOfFile("/proc/" + std::to_string(pid) + "/" + name, longest).value_or(std::string{});
}

// The fields of proc(5) stat from the third one on, which is the state; the second, the name, may hold anything.
std::vector<std::string> statFieldsAfterName(pid_t pid) {
    const std::string stat = readProcessFile(pid, "stat");
    std::vector<std::string> fields;
    std::size_t from = stat.rfind(')');
    while (from != std::string::npos && (from = stat.find_first_not_of(" )\n", from)) != std::string::npos) {
        const std::size_t to = stat.find_first_of(" \n", from);
        fields.push_back(stat.substr(from, to - from));
        from = to;
    }
    return fields;
}

// A signal mask of proc(5) status, such as "SigCgt"; none if it can't be read.
std::optional<std::uint64_t> signalMask(const std::string& status, const std::string& field) {
    const std::size_t at = status.find("\n" + field + ":\t");
    if (at == std::string::npos) return std::nullopt;
    return std::stoull("0" + status.substr(at + field.size() + 3, 16), nullptr, 16);
}

bool masksSigterm(const std::string& status, const std::string& field) {
    return (signalMask(status, field).value_or(0) >> (SIGTERM - 1) & 1) != 0;
}

// A program that takes its signals from a signalfd blocks them in all of its threads.
bool allThreadsBlockSigterm(pid_t pid) {
    const std::unique_ptr<DIR, int (*)(DIR*)> tasks{opendir(("/proc/" + std::to_string(pid) + "/task").c_str()),
                                                    closedir};
    if (!tasks) return false;
    bool any = false;
    while (const dirent* task = readdir(tasks.get())) {
        if (task->d_name[0] == '.') continue;
        if (!masksSigterm(readProcessFile(pid, std::string{"task/"} + task->d_name + "/status"), "SigBlk"))
            return false;
        any = true;
    }
    return any;
}

// What can't be read, for want of descriptors, may well be there.
bool hasGone(const ProcessIdentity& identity) {
    if (kill(identity.pid, 0) != 0 && errno == ESRCH) return true;
    const auto now = ProcessIdentity::ofProcess(identity.pid);
    return now && *now != identity;
}

} // namespace

std::optional<ProcessIdentity> ProcessIdentity::ofProcess(pid_t pid) {
    constexpr std::size_t startTime = 22 - 3;
    const std::vector<std::string> fields = statFieldsAfterName(pid);
    if (fields.size() <= startTime) return std::nullopt;
    return ProcessIdentity{pid, std::stoull("0" + fields[startTime])};
}

std::optional<HeldProcess> HeldProcess::hold(const ProcessIdentity& identity) {
    const int descriptor = pidfd_open(identity.pid, 0); // close-on-exec by itself
    if (descriptor < 0 && errno == ESRCH) return std::nullopt;
    HeldProcess held{identity, descriptor};
    if (hasGone(identity)) return std::nullopt;
    return held;
}

HeldProcess::HeldProcess(HeldProcess&& other) noexcept
    : identity_{other.identity_}, descriptor_{std::exchange(other.descriptor_, -1)} {}

HeldProcess& HeldProcess::operator=(HeldProcess&& other) noexcept {
    std::swap(identity_, other.identity_);
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

HeldProcess::~HeldProcess() {
    if (descriptor_ >= 0) close(descriptor_);
}

bool HeldProcess::hasEnded() const {
    if (descriptor_ < 0) {
        const std::vector<std::string> fields = statFieldsAfterName(pid());
        return hasGone(identity_) || (!fields.empty() && (fields.front() == "Z" || fields.front() == "X"));
    }
    pollfd end{descriptor_, POLLIN, 0};
    return poll(&end, 1, 0) == 1;
}

HeldProcess::SigtermEffect HeldProcess::sigtermEffect() const {
    const std::string status = readProcessFile(pid(), "status");
    if (masksSigterm(status, "SigIgn")) return SigtermEffect::ignored;
    const bool handles = masksSigterm(status, "SigCgt") || allThreadsBlockSigterm(pid());
    return handles && !hasEnded() ? SigtermEffect::handled : SigtermEffect::deadly;
}

bool HeldProcess::isStopped() const {
    // A traced process shows "t".
    const std::vector<std::string> fields = statFieldsAfterName(pid());
    return !fields.empty() && fields.front() == "T" && !hasEnded();
}

bool HeldProcess::sendSignal(int signal) const {
    return descriptor_ >= 0 && pidfd_send_signal(descriptor_, signal, nullptr, 0) == 0;
}

bool HeldProcess::sendSigterm() const {
    if (!sendSignal(SIGTERM)) return false;
    if (isStopped()) sendSignal(SIGCONT);
    return true;
}

} // namespace letterloft
