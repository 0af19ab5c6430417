// How soon the end of an application is noticed, by the wake-up of the event loop alone: from the instant at which the
// program writes down its end, to the answer that it has ended; the last look for processes of it is included.
#include "platform/Log.h"
#include "platform/linux/DescriptorWatcher.h"
#include "platform/linux/LinuxRunningApplications.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace letterloft {

namespace {

using std::chrono::steady_clock;

class SilentLog final : public Log {
public:
    void write(const std::string& /*message*/) override {}
};

// Waits for what is watched, without any time-out.
class BareWatcher final : public DescriptorWatcher {
public:
    std::unique_ptr<Watch> watchReadable(int descriptor, std::function<void()> handler) override {
        handlers_[descriptor] = std::move(handler);
        return std::make_unique<Listed>(handlers_, descriptor);
    }

    void serve() {
        std::vector<pollfd> descriptors;
        for (const auto& [descriptor, handler] : handlers_)
            descriptors.push_back({descriptor, POLLIN, 0});
        poll(descriptors.data(), descriptors.size(), -1);
        for (const pollfd& one : descriptors) {
            if (one.revents == 0) continue;
            const auto handler = handlers_.at(one.fd);
            return handler();
        }
    }

private:
    using Handlers = std::map<int, std::function<void()>>;

    class Listed final : public Watch {
    public:
        Listed(Handlers& handlers, int descriptor) : handlers_{handlers}, descriptor_{descriptor} {}
        ~Listed() override { handlers_.erase(descriptor_); }
        Listed(const Listed&) = delete;
        Listed& operator=(const Listed&) = delete;

    private:
        Handlers& handlers_;
        int descriptor_;
    };

    Handlers handlers_;
};

// The program: ends the moment it is asked to, after it has written down when.
int endWhenAsked() {
    sigset_t sigterm;
    sigemptyset(&sigterm);
    sigaddset(&sigterm, SIGTERM);
    sigprocmask(SIG_BLOCK, &sigterm, nullptr);
    const char ready = 0;
    int signal = 0;
    if (write(STDOUT_FILENO, &ready, 1) == 1) sigwait(&sigterm, &signal);
    const auto end = steady_clock::now();
    return write(STDOUT_FILENO, &end, sizeof end) == sizeof end ? 0 : 1;
}

pid_t startProgram(const std::string& program, int report) {
    const pid_t pid = fork();
    if (pid != 0) return pid;
    dup2(report, STDOUT_FILENO);
    execl(program.c_str(), program.c_str(), "--program", nullptr);
    _exit(127);
}

double millisecondsToNotice(RunningApplications& applications, BareWatcher& watcher, const std::string& program) {
    int report[2];
    if (pipe2(report, O_CLOEXEC) != 0) std::abort();
    const pid_t pid = startProgram(program, report[1]);
    char ready = 0;
    if (read(report[0], &ready, 1) != 1) std::abort();
    const auto instances = applications.runningInstances(program);
    if (instances.size() != 1) std::abort();
    instances.front()->terminate();
    while (!instances.front()->isTerminated())
        watcher.serve();
    const auto noticed = steady_clock::now();
    steady_clock::time_point end;
    if (read(report[0], &end, sizeof end) != sizeof end) std::abort();
    close(report[0]);
    close(report[1]);
    waitpid(pid, nullptr, 0);
    return std::chrono::duration<double, std::milli>(noticed - end).count();
}

} // namespace

} // namespace letterloft

int main(int count, char** arguments) {
    using namespace letterloft;
    const std::string last = count > 1 ? arguments[count - 1] : "";
    if (last == "--program") return endWhenAsked();
    // Neither display nor bus: what is measured is the end, not the asking.
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"}) {
        unsetenv(variable);
    }
    // A copy: what this program itself had started from its own file would be a part of it.
    const std::string program = "/tmp/letterloft-quitting-benchmark-" + std::to_string(getpid());
    std::filesystem::copy_file("/proc/self/exe", program);
    SilentLog log;
    SessionBus bus{log};
    BareWatcher watcher;
    LinuxRunningApplications applications{bus, watcher, log};
    std::vector<double> times;
    for (int i = 0; i < (last == "--long" ? 1000 : 100); ++i) {
        times.push_back(millisecondsToNotice(applications, watcher, program));
    }
    std::filesystem::remove(program);
    std::sort(times.begin(), times.end());
    const double median = times[times.size() / 2];
    std::printf("end of an application noticed after %.2f ms (median), %.2f ms (95th of 100)\n", median,
                times[times.size() * 95 / 100]);
    constexpr double mostInMilliseconds = 10;
    std::printf("end of an application noticed, median, against 10 ms\t%.3f\t1.0\t0.5\n", median / mostInMilliseconds);
}
