#pragma once

#include "platform/linux/DescriptorWatcher.h"

#include <algorithm>
#include <list>
#include <poll.h>
#include <vector>

namespace letterloft {

// An event loop of poll(2) alone. It reads nothing but what is watched, and knows no time but its own time-outs.
class PollWatcher final : public DescriptorWatcher {
public:
    std::unique_ptr<Watch> watchReadable(int descriptor, std::function<void()> handler) override {
        watched_.push_back({descriptor, std::move(handler)});
        return std::make_unique<Listed>(watched_, std::prev(watched_.end()));
    }

    // Serves until one descriptor has been handled, or nothing came for that long; tells which.
    bool serve(int timeoutInMilliseconds) {
        std::vector<pollfd> descriptors;
        for (const Watched& watched : watched_)
            descriptors.push_back({watched.descriptor, POLLIN, 0});
        if (poll(descriptors.data(), descriptors.size(), timeoutInMilliseconds) <= 0) return false;
        const auto ready =
            std::find_if(descriptors.begin(), descriptors.end(), [](const pollfd& one) { return one.revents != 0; });
        const auto watched = std::find_if(watched_.begin(), watched_.end(),
                                          [&](const Watched& one) { return one.descriptor == ready->fd; });
        const auto handler = watched->handler; // may end its own watch
        handler();
        return true;
    }

    std::size_t count() const { return watched_.size(); }

private:
    struct Watched {
        int descriptor;
        std::function<void()> handler;
    };

    class Listed final : public Watch {
    public:
        Listed(std::list<Watched>& all, std::list<Watched>::iterator own) : all_{all}, own_{own} {}
        ~Listed() override { all_.erase(own_); }
        Listed(const Listed&) = delete;
        Listed& operator=(const Listed&) = delete;

    private:
        std::list<Watched>& all_;
        std::list<Watched>::iterator own_;
    };

    std::list<Watched> watched_;
};

} // namespace letterloft
