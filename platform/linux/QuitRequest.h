#pragma once

#include "platform/Log.h"
#include "platform/linux/DescriptorWatcher.h"
#include "platform/linux/HeldProcess.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/XWindows.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace letterloft {

// The request to quit that one program is given. The way is chosen once: its quit action on the session bus, else its
// windows, one after another, else SIGTERM where that is safe. Belongs to the instance, which outlives it.
class QuitRequest {
public:
    struct Addressee {
        std::string applicationPath; // for the log
        std::string applicationId;   // the desktop file id; may be empty
        const HeldProcess& program;  // the one that is asked
        std::vector<pid_t> proxies;  // speak for it on the session bus
    };

    QuitRequest(Addressee addressee, SessionBus& bus, DescriptorWatcher& watcher, Log& log);

    // Sends it and returns at once. `pids` are all living processes of the instance, the program's included.
    void send(const std::vector<pid_t>& pids);

    // Does what the program's behaviour since then calls for: closes its next window, or sends the one SIGTERM that a
    // program without windows may need. Never goes on against a question that the program asks its user.
    void followUp(const std::vector<pid_t>& pids);

private:
    using Windows = std::vector<XWindows::Window>;

    Windows windowsOf(const std::vector<pid_t>& pids);
    bool askOnBus(std::vector<pid_t> pids, const Windows& windows);
    bool askNextWindow(const Windows& windows);
    void askBySignal();
    void followWindows(const Windows& windows);
    void followDisappearance(const Windows& windows);
    void noteWindowsOfDialogs(const Windows& windows);
    bool anyDialogHasGone(const Windows& windows) const;
    bool keepsOnScreen(const XWindows::Window& window) const;
    void watchWindows();
    void finish();
    void say(const char* sentence) const;

    Addressee addressee_;
    SessionBus& bus_;
    DescriptorWatcher& watcher_;
    Log& log_;

    std::unique_ptr<XWindows> display_;
    std::unique_ptr<DescriptorWatcher::Watch> displayWatch_; // goes before the display it watches
    std::set<std::uint32_t> known_;                          // the windows there when the last one was asked
    std::set<std::uint32_t> dialogs_;                        // those of them that are dialogs
    std::set<std::uint32_t> ofDialogs_;                      // what those have opened since then
    std::set<std::uint32_t> asked_;
    std::uint32_t lastAsked_ = 0; // 0 while no window has been asked
    bool questionStood_ = false;
    bool refused_ = false;
    bool hadWindows_ = false;
    bool finished_ = false; // nothing more is to be sent, whatever happens
    std::optional<std::chrono::steady_clock::time_point> windowlessSince_;
};

} // namespace letterloft
