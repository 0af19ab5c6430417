#include "tests/contract/quitting/Desktop.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace letterloft {

Started::Started(const std::vector<std::string>& command) {
    int output[2];
    if (pipe2(output, O_CLOEXEC) != 0) throw std::runtime_error{"no pipe"};
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL); // also when the test is cut off
        dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        execvp(arguments.front(), arguments.data());
        _exit(127);
    }
    close(output[1]);
    output_ = output[0];
}

Started::~Started() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    close(output_);
}

std::string Started::line() {
    std::string text;
    for (char c = 0; read(output_, &c, 1) == 1 && c != '\n';)
        text += c;
    return text;
}

pid_t Started::ready() {
    const std::string told = line();
    if (!told.starts_with("ready ")) throw std::runtime_error{"it did not come up: " + told};
    return std::stoi(told.substr(6));
}

int Started::status() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

Desktop::Desktop() {
    std::string home = (std::filesystem::temp_directory_path() / "letterloft-quitting-XXXXXX").string();
    if (mkdtemp(home.data()) == nullptr) throw std::runtime_error{"no scratch folder"};
    home_ = home;
    for (const char* variable : {"WAYLAND_DISPLAY", "DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "SESSION_MANAGER"})
        unsetenv(variable);
    setenv("HOME", home_.c_str(), 1);
    setenv("XDG_RUNTIME_DIR", home_.c_str(), 1);
    setenv("XDG_DATA_HOME", (home_ + "/share").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home_ + "/config").c_str(), 1);
    std::signal(SIGPIPE, SIG_IGN); // as the program does
}

Desktop::~Desktop() {
    services_.clear();
    std::filesystem::remove_all(home_);
}

std::string Desktop::write(const std::string& path, const std::string& text, unsigned mode) const {
    const std::string file = home_ + "/" + path;
    std::filesystem::create_directories(std::filesystem::path{file}.parent_path());
    std::ofstream{file} << text;
    std::filesystem::permissions(file, std::filesystem::perms{mode});
    return file;
}

Started& Desktop::startBus() {
    services_.push_back(std::make_unique<Started>(
        std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"}));
    setenv("DBUS_SESSION_BUS_ADDRESS", services_.back()->line().c_str(), 1);
    return *services_.back();
}

Started& Desktop::startDisplay() {
    services_.push_back(std::make_unique<Started>(std::vector<std::string>{
        "Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp", "-noreset"}));
    setenv("DISPLAY", (":" + services_.back()->line()).c_str(), 1);
    return *services_.back();
}

} // namespace letterloft
