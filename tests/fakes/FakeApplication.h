#pragma once

#include "platform/Application.h"
#include "platform/Launcher.h"

#include <set>
#include <string>
#include <vector>

namespace letterloft {

// Stands for the end of the program, which does not return to whoever asked for it.
struct ProgramEnded {};

class FakeApplication final : public Application {
public:
    void activateIgnoringOtherApps() override { ++activations; }
    void terminate() override { throw ProgramEnded{}; }
    void terminateIfAskedTo() override {
        if (isAskedToEnd) throw ProgramEnded{};
    }

    int activations = 0;
    bool isAskedToEnd = false;
};

// Starts nothing, refuses what it is told to refuse.
class FakeLauncher final : public Launcher {
public:
    bool launchApplication(const std::string& path) override {
        asked.push_back(path);
        return refused.count(path) == 0;
    }

    std::vector<std::string> asked;
    std::set<std::string> refused;
};

} // namespace letterloft
