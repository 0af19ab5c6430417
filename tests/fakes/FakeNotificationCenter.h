#pragma once

#include "platform/NotificationCenter.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace letterloft {

// Delivers, and counts what was posted.
class FakeNotificationCenter final : public NotificationCenter {
public:
    void addObserver(const std::string& name, const void* object, std::function<void()> handler) override {
        observers_.push_back({name, object, std::move(handler)});
    }

    void post(const std::string& name, const void* object) override {
        posted_.push_back(name);
        const auto observers = observers_; // a handler may add observers
        for (const Observer& observer : observers)
            if (observer.name == name && (!observer.object || observer.object == object)) observer.handler();
    }

    std::size_t countOf(const std::string& name) const {
        return static_cast<std::size_t>(std::count(posted_.begin(), posted_.end(), name));
    }

private:
    struct Observer {
        std::string name;
        const void* object;
        std::function<void()> handler;
    };

    std::vector<std::string> posted_;
    std::vector<Observer> observers_;
};

} // namespace letterloft
