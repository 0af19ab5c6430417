#pragma once

#include "platform/NotificationCenter.h"

#include <vector>

namespace letterloft {

// A plain list of observers.
class LocalNotificationCenter final : public NotificationCenter {
public:
    void addObserver(const std::string& name, const void* object, std::function<void()> handler) override;
    void post(const std::string& name, const void* object) override;

private:
    struct Observer {
        std::string name;
        const void* object;
        std::function<void()> handler;
    };

    std::vector<Observer> observers_;
};

} // namespace letterloft
