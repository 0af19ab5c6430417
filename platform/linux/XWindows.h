#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace letterloft {

// The windows of the X11 display that DISPLAY names, seen over a connection of its own, which lasts as long as this
// object. Without a display, and once the connection is broken, every answer is empty. Texts are bytes as they stand.
class XWindows {
public:
    struct Window {
        std::uint32_t id = 0;
        pid_t pid = 0;            // in our own numbering, told by the X server (XRes 1.2); 0 if it can't tell
        std::string instanceName; // the two halves of WM_CLASS (ICCCM 4.1.2.5)
        std::string className;
        std::uint32_t transientFor = 0;  // 0 for none; not always a window of this list
        bool isDialog = false;           // _NET_WM_WINDOW_TYPE
        bool takesDeleteRequest = false; // lists WM_DELETE_WINDOW in WM_PROTOCOLS
        std::string applicationId;       // what GTK says of itself; empty for others
        std::string uniqueBusName;
        std::string applicationObjectPath;
    };

    XWindows();
    ~XWindows();
    XWindows(const XWindows&) = delete;
    XWindows& operator=(const XWindows&) = delete;

    bool isConnected() const;

    // The top-level windows of programs that are shown or iconified, in the order in which they were first shown. The
    // window manager's list; where there is none, the root window's own children without menus and tool tips.
    std::vector<Window> clientWindows();

    // Asks the window's program to close it, as the close button does (ICCCM 4.2.8.1). Only for windows that take such
    // a request: for others a close would cut the program off from the display.
    void requestClose(const Window& window);

    // From now on descriptor() becomes readable whenever a window comes or goes, and when the connection breaks.
    // takeNotices() makes it unreadable again; false once the connection is broken.
    void noticeChanges();
    int descriptor() const;
    bool takeNotices();

private:
    struct Connection;
    std::unique_ptr<Connection> connection_;
};

} // namespace letterloft
