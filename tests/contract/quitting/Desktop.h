#pragma once

#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace letterloft {

// A program that a test has started, and ends with it. What it writes is read line by line.
class Started {
public:
    explicit Started(const std::vector<std::string>& command);
    ~Started();
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;

    pid_t pid() const { return pid_; }

    int output() const { return output_; }

    // Waits for the next line; empty at the end of the program's output.
    std::string line();

    // Waits for "ready PID", and gives the number: it may be that of another process.
    pid_t ready();

    // Waits for the end and takes the exit status; negative for the signal that ended it.
    int status();

private:
    pid_t pid_ = 0;
    int output_ = -1;
};

// A home, a display and a session bus for one test, told to everybody by the environment.
class Desktop {
public:
    Desktop();
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    const std::string& home() const { return home_; }

    // Writes a file in the home, parents included, and gives its absolute path.
    std::string write(const std::string& path, const std::string& text, unsigned mode = 0600) const;

    Started& startBus();
    Started& startDisplay();

private:
    std::string home_;
    std::vector<std::unique_ptr<Started>> services_;
};

} // namespace letterloft
