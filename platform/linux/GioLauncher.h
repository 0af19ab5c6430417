#pragma once

#include "platform/Launcher.h"
#include "platform/Log.h"
#include "platform/Status.h"
#include "platform/linux/SessionBus.h"

namespace letterloft {

// Starts desktop entries through GIO, bundles and executables directly. What is started has a session of its own (and,
// under a systemd user manager, a scope of its own), none of our descriptors, and is no child of ours.
class GioLauncher final : public Launcher {
public:
    GioLauncher(SessionBus& bus, Log& log);

    bool launchApplication(const std::string& path) override;

private:
    Status launch(const std::string& path);

    SessionBus& bus_;
    Log& log_;
};

} // namespace letterloft
