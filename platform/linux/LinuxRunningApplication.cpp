#include "platform/linux/LinuxRunningApplication.h"

#include "platform/linux/QuitRequest.h"

#include <utility>

namespace letterloft {

namespace {

// Looking through all processes takes milliseconds, and every event of the run loop may bring the question.
constexpr std::chrono::milliseconds timeBetweenSearches{200};

} // namespace

LinuxRunningApplication::LinuxRunningApplication(Instance instance, SessionBus& bus, DescriptorWatcher& watcher,
                                                 Log& log)
    : instance_{std::move(instance)}, bus_{bus}, watcher_{watcher}, log_{log} {
    heldSoFar_.push_back(instance_.program.identity());
    for (const HeldProcess& other : instance_.others)
        heldSoFar_.push_back(other.identity());
}

LinuxRunningApplication::~LinuxRunningApplication() = default;

void LinuxRunningApplication::terminate() {
    watchEnd(instance_.program);
    for (const HeldProcess& other : instance_.others)
        watchEnd(other);
    lastSearch_ = steady_clock::now(); // the instance has just been found
    if (instance_.isWithoutProgram) return;
    request_ = std::make_unique<QuitRequest>(QuitRequest::Addressee{instance_.applicationPath, instance_.applicationId,
                                                                    instance_.program, instance_.proxies},
                                             bus_, watcher_, log_);
    request_->send(livingPids());
}

bool LinuxRunningApplication::isTerminated() {
    const std::vector<pid_t> living = livingPids();
    if (request_) request_->followUp(living);
    if (living.empty() || steady_clock::now() - lastSearch_ >= timeBetweenSearches) takeInNewcomers();
    return livingPids().empty();
}

// The end of a process stays readable for ever, so the watch goes with the first notice of it.
void LinuxRunningApplication::watchEnd(const HeldProcess& process) {
    const int descriptor = process.descriptor();
    if (descriptor < 0) return; // looked at whenever it is asked about
    watches_[descriptor] = watcher_.watchReadable(descriptor, [this, descriptor] { watches_.erase(descriptor); });
}

void LinuxRunningApplication::takeInNewcomers() {
    if (!instance_.newcomers) return;
    for (HeldProcess& newcomer : instance_.newcomers(heldSoFar_)) {
        heldSoFar_.push_back(newcomer.identity());
        watchEnd(newcomer);
        instance_.others.push_back(std::move(newcomer));
    }
    lastSearch_ = steady_clock::now();
}

std::vector<pid_t> LinuxRunningApplication::livingPids() const {
    std::vector<pid_t> pids;
    if (!instance_.program.hasEnded()) pids.push_back(instance_.program.pid());
    for (const HeldProcess& other : instance_.others) {
        if (!other.hasEnded()) pids.push_back(other.pid());
    }
    return pids;
}

} // namespace letterloft
