#pragma once

#include "platform/Application.h"
#include "platform/Launcher.h"

#include <string>

namespace letterloft {

// Never ends.
class FakeApplication final : public Application {
public:
    void activateIgnoringOtherApps() override { ++activations; }
    void terminate() override {}
    void terminateIfAskedTo() override {}

    int activations = 0;
};

// Starts nothing.
class FakeLauncher final : public Launcher {
public:
    bool launchApplication(const std::string&) override { return true; }
};

} // namespace letterloft
