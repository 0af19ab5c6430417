#pragma once

#include <functional>
#include <string>

namespace letterloft {

// What an action is sent by: a menu item, a button. Valid until the action returns.
class Sender {
public:
    virtual ~Sender() = default;

    // For the log: what kind of thing it is and what it shows.
    virtual std::string description() const = 0;
};

// An operation that a menu item or a control sets off; the sender may be absent.
using Action = std::function<void(Sender* sender)>;

} // namespace letterloft
