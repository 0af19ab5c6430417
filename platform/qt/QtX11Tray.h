#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>
#include <string>

#include <xcb/xcb.h>

namespace letterloft {

// Watches for a tray of the older protocol: whoever owns the X11 selection _NET_SYSTEM_TRAY_Sn (freedesktop.org System
// Tray Protocol Specification 0.3). Has a connection of its own to the display, and is woken by it alone.
class QtX11Tray final {
public:
    // `changed` runs from the event loop.
    explicit QtX11Tray(std::function<void()> changed);
    QtX11Tray(const QtX11Tray&) = delete;
    QtX11Tray& operator=(const QtX11Tray&) = delete;

    bool isThere() const { return owner_ != XCB_NONE; }

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    void watchRoot(int screenNumber);
    void findOwner();
    void readEvents();
    xcb_atom_t atom(const std::string& name) const;

    std::function<void()> changed_;
    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    std::unique_ptr<QSocketNotifier> readable_;
    xcb_atom_t selection_ = XCB_NONE;
    xcb_atom_t manager_ = XCB_NONE;
    xcb_window_t owner_ = XCB_NONE;
};

} // namespace letterloft
