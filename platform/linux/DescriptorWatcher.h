#pragma once

#include <functional>
#include <memory>

namespace letterloft {

// Lets a service without a window be woken by the program's event loop. Owned by main; outlives what watches.
class DescriptorWatcher {
public:
    virtual ~DescriptorWatcher() = default;

    // The watching ends when this is destroyed, which the handler itself may do.
    class Watch {
    public:
        virtual ~Watch() = default;
    };

    // Runs `handler` from the event loop, and counts as one of its events, whenever `descriptor` can be read.
    virtual std::unique_ptr<Watch> watchReadable(int descriptor, std::function<void()> handler) = 0;
};

} // namespace letterloft
