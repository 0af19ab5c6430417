#pragma once

#include "platform/RunLoop.h"

#include <cassert>
#include <deque>
#include <functional>
#include <utility>

namespace letterloft {

// An event loop whose events a test queues. An empty queue stands for a slice in which nothing came.
class FakeRunLoop final : public RunLoop {
public:
    using Event = std::function<void()>;

    bool runModeBeforeDate([[maybe_unused]] std::chrono::steady_clock::time_point instant) override {
        assert(instant <= std::chrono::steady_clock::now() + std::chrono::seconds{1}); // slices of at most a second
        ++slices;
        assert(slices < 1000); // a wait that nothing will ever end
        if (!hasSources) return false;
        if (events.empty()) return true;
        const Event event = std::move(events.front());
        events.pop_front();
        event();
        return true;
    }

    std::deque<Event> events;
    bool hasSources = true;
    int slices = 0;
};

} // namespace letterloft
