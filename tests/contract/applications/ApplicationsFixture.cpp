#include "tests/contract/applications/ApplicationsFixture.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <unistd.h>

namespace letterloft {

Applications::~Applications() {
    for (const auto& [pid, process] : known_)
        if (!process.hasEnded()) (void)process.sendSignal(SIGKILL);
}

std::string Applications::program(const std::string& place) const {
    const std::filesystem::path file = desktop.home() + "/" + place;
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::copy_file(LETTERLOFT_TEST_PROGRAM, file, std::filesystem::copy_options::overwrite_existing);
    return file;
}

std::string Applications::entry(const std::string& id, const std::string& exec, const std::string& more) const {
    const bool isName = id.find('.') != std::string::npos;
    const std::string own = isName ? id : id + "-" + std::to_string(getpid());
    return desktop.write("share/applications/" + own + ".desktop",
                         "[Desktop Entry]\nType=Application\nName=Mail\nExec=" + exec + "\n" + more + "\n");
}

std::vector<pid_t> Applications::start(const std::vector<std::string>& command, std::size_t processes) {
    started_.push_back(std::make_unique<Started>(command));
    std::vector<pid_t> pids;
    while (pids.size() < processes) {
        pids.push_back(started_.back()->ready());
        auto held = HeldProcess::hold(ProcessIdentity::ofProcess(pids.back()).value());
        known_.emplace(pids.back(), std::move(*held));
    }
    return pids;
}

std::vector<std::unique_ptr<RunningApplication>> Applications::instances(const std::string& applicationPath) {
    return LinuxRunningApplications{bus, watcher, log}.runningInstances(applicationPath);
}

void Applications::serveUntil(const std::function<bool()>& condition) {
    while (!condition())
        watcher.serve(500);
}

void Applications::waitForEnd(RunningApplication& instance) {
    serveUntil([&] { return instance.isTerminated(); });
}

bool Applications::logSays(const std::string& words) const {
    return std::any_of(log.lines.begin(), log.lines.end(),
                       [&](const std::string& line) { return line.find(words) != std::string::npos; });
}

std::set<pid_t> Applications::quit(const std::string& applicationPath) {
    for (const auto& instance : instances(applicationPath)) {
        instance->terminate();
        waitForEnd(*instance);
    }
    std::set<pid_t> ended;
    for (const auto& [pid, process] : known_)
        if (process.hasEnded()) ended.insert(pid);
    return ended;
}

} // namespace letterloft
