#include "platform/linux/LocalNotificationCenter.h"

#include <utility>

namespace letterloft {

void LocalNotificationCenter::addObserver(const std::string& name, const void* object, std::function<void()> handler) {
    observers_.push_back({name, object, std::move(handler)});
}

void LocalNotificationCenter::post(const std::string& name, const void* object) {
    // A copy: a handler may add observers, or post in its turn.
    const std::vector<Observer> observers = observers_;
    for (const Observer& observer : observers) {
        if (observer.name == name && (observer.object == nullptr || observer.object == object)) observer.handler();
    }
}

} // namespace letterloft
