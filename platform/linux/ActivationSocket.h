#pragma once

#include "platform/Status.h"
#include "platform/linux/DescriptorWatcher.h"

#include <functional>
#include <memory>
#include <string>

namespace letterloft {

// A Unix socket by which a second start of the program asks the first to show itself, with any session bus or none.
// Whoever of the same user connects has asked; nothing is read from them.
class ActivationSocket final {
public:
    // Listens at `path` (absolute, of any length), for this user alone. Only the holder of the instance lock may do
    // this: what stands there is the socket of a program that has ended, and is replaced.
    explicit ActivationSocket(std::string path);
    ~ActivationSocket();
    ActivationSocket(const ActivationSocket&) = delete;
    ActivationSocket& operator=(const ActivationSocket&) = delete;

    // Whether anybody can reach it.
    const Status& status() const { return status_; }

    // From now on `asked` runs from the event loop for those who ask, and for those who have asked before.
    void serve(DescriptorWatcher& watcher, std::function<void()> asked);

    // Whether somebody listens at `path`, and has now been asked; the answer does not wait for what comes of it.
    static bool ask(const std::string& path);

private:
    void acceptAll();

    std::string path_;
    int socket_ = -1;
    Status status_ = Status::ok();
    std::function<void()> asked_;
    std::unique_ptr<DescriptorWatcher::Watch> watch_;
};

} // namespace letterloft
