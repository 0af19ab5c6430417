#pragma once

#include <chrono>

namespace letterloft {

// The main thread's event loop, served from inside an action. Owned by main; outlives the controllers.
class RunLoop {
public:
    virtual ~RunLoop() = default;

    // Serves the event loop in its default mode until one event has been handled or `instant` has come, whichever is
    // first. False when there is nothing it can wait on. Whatever is delivered meanwhile runs nested inside this call;
    // the end of the program, asked for meanwhile, takes place inside it, and the call does not return.
    virtual bool runModeBeforeDate(std::chrono::steady_clock::time_point instant) = 0;
};

} // namespace letterloft
