#pragma once

#include "platform/linux/DescriptorWatcher.h"

#include <list>
#include <poll.h>
#include <utility>
#include <vector>

namespace letterloft {

// An event loop of poll(2) alone. It reads nothing but what is watched, and knows no time but its own time-outs.
class PollWatcher final : public DescriptorWatcher {
public:
    std::unique_ptr<Watch> watchReadable(int descriptor, std::function<void()> handler) override {
        watched_.emplace_back(descriptor, std::move(handler));
        return std::make_unique<Listed>(watched_, std::prev(watched_.end()));
    }

    // Serves until one descriptor has been handled, or nothing came for that long; tells which.
    bool serve(int timeoutInMilliseconds) {
        std::vector<pollfd> descriptors;
        for (const auto& [descriptor, handler] : watched_)
            descriptors.push_back({descriptor, POLLIN, 0});
        if (poll(descriptors.data(), descriptors.size(), timeoutInMilliseconds) <= 0) return false;
        auto watched = watched_.begin();
        for (auto one = descriptors.begin(); one->revents == 0; ++one)
            ++watched;
        const auto handler = watched->second; // may end its own watch
        handler();
        return true;
    }

    std::size_t count() const { return watched_.size(); }

private:
    using Watches = std::list<std::pair<int, std::function<void()>>>;

    class Listed final : public Watch {
    public:
        Listed(Watches& all, Watches::iterator own) : all_{all}, own_{own} {}
        ~Listed() override { all_.erase(own_); }
        Listed(const Listed&) = delete;
        Listed& operator=(const Listed&) = delete;

    private:
        Watches& all_;
        Watches::iterator own_;
    };

    Watches watched_;
};

} // namespace letterloft
