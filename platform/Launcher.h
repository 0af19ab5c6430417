#pragma once

#include <string>

namespace letterloft {

// Starts applications. Owned by main; outlives the controllers. Main thread only.
class Launcher {
public:
    virtual ~Launcher() = default;

    // Asks for the start of the application at `path` (absolute; a bundle, a desktop entry or an executable) without
    // waiting for it. True means that the request was accepted; the reason of a refusal is in the log. What was started
    // outlives this program.
    [[nodiscard]] virtual bool launchApplication(const std::string& path) = 0;
};

} // namespace letterloft
