#include "tests/contract/applications/ApplicationsFixture.h"

#include <csignal>
#include <filesystem>
#include <unistd.h>

namespace letterloft {

Applications::~Applications() {
    for (const auto& [pid, process] : known_)
        if (!process.hasEnded()) (void)process.sendSignal(SIGKILL);
}

std::string Applications::program(const std::string& place, const std::string& original) const {
    const std::filesystem::path file = desktop_.home() + "/" + place;
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::copy_file(original, file, std::filesystem::copy_options::overwrite_existing);
    return file;
}

std::string Applications::entry(const std::string& id, const std::string& exec, const std::string& more) const {
    const bool isName = id.find('.') != std::string::npos;
    const std::string own = isName ? id : id + "-" + std::to_string(getpid());
    return desktop_.write("share/applications/" + own + ".desktop",
                          "[Desktop Entry]\nType=Application\nName=Mail\nExec=" + exec + "\n" + more + "\n");
}

std::vector<pid_t> Applications::start(const std::vector<std::string>& command, std::size_t processes) {
    started_.push_back(std::make_unique<Started>(command));
    std::vector<pid_t> pids;
    while (pids.size() < processes) {
        const std::string line = started_.back()->line();
        if (line.empty()) throw std::runtime_error{"the application did not come up: " + command.front()};
        // What tells no process of its own is one of the other test programs.
        pids.push_back(line.starts_with("ready ") ? std::stoi(line.substr(6)) : started_.back()->pid());
        auto held = HeldProcess::hold(ProcessIdentity::ofProcess(pids.back()).value());
        known_.emplace(pids.back(), std::move(*held));
    }
    return pids;
}

std::vector<std::unique_ptr<RunningApplication>> Applications::instances(const std::string& applicationPath) {
    if (!bus_) bus_ = std::make_unique<SessionBus>(log_);
    return LinuxRunningApplications{*bus_, watcher_, log_}.runningInstances(applicationPath);
}

bool Applications::waitForEnd(RunningApplication& instance) {
    for (int idle = 0; idle < 60;) {
        if (instance.isTerminated()) return true;
        if (!watcher_.serve(500)) ++idle;
    }
    return false;
}

std::set<pid_t> Applications::quit(const std::string& applicationPath) {
    for (const auto& instance : instances(applicationPath)) {
        instance->terminate();
        EXPECT_TRUE(waitForEnd(*instance)) << log_.text;
    }
    std::set<pid_t> ended;
    for (const auto& [pid, process] : known_)
        if (process.hasEnded()) ended.insert(pid);
    return ended;
}

} // namespace letterloft
