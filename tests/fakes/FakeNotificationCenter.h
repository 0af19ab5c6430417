#pragma once

#include "platform/NotificationCenter.h"

#include <string>
#include <utility>
#include <vector>

namespace letterloft {

// Delivers, and keeps what was posted.
class FakeNotificationCenter final : public NotificationCenter {
public:
    struct Post {
        std::string name;
        const void* object;
        bool operator==(const Post&) const = default;
    };

    void addObserver(const std::string& name, const void* object, std::function<void()> handler) override {
        observers_.push_back({{name, object}, std::move(handler)});
    }

    void post(const std::string& name, const void* object) override {
        posts.push_back({name, object});
        const auto observers = observers_; // a handler may add observers
        for (const auto& [wanted, handler] : observers) {
            if (wanted.name == name && (!wanted.object || wanted.object == object)) handler();
        }
    }

    std::size_t countOf(const std::string& name) const {
        std::size_t count = 0;
        for (const Post& post : posts)
            count += post.name == name ? 1 : 0;
        return count;
    }

    std::vector<Post> posts;

private:
    std::vector<std::pair<Post, std::function<void()>>> observers_;
};

} // namespace letterloft
