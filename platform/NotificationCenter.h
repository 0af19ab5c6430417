#pragma once

#include <functional>
#include <string>

namespace letterloft {

// Delivers notices inside the program. Owned by main; outlives the controllers. Main thread only.
class NotificationCenter {
public:
    virtual ~NotificationCenter() = default;

    // Told, with the window as the object, before a window of this program disappears: the manager, the help and the
    // small menu window, once for each closing of a visible one. Sheets, choosers, menus and tool tips do not count,
    // nor does the end of the program.
    static constexpr const char* windowWillClose = "NSWindowWillCloseNotification";

    // From now on every notice of that name whose object is `object` runs `handler`; with no object, whoever posts it.
    // There is no end to it: what the handler uses has to outlive the last post.
    virtual void addObserver(const std::string& name, const void* object, std::function<void()> handler) = 0;

    // Runs the handlers one after another, in the order they were added, before it returns.
    virtual void post(const std::string& name, const void* object) = 0;
};

} // namespace letterloft
