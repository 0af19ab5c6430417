#include "platform/qt/QtX11Tray.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

namespace letterloft {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

} // namespace

QtX11Tray::QtX11Tray(std::function<void()> changed) : changed_{std::move(changed)} {
    int screenNumber = 0;
    connection_.reset(xcb_connect(nullptr, &screenNumber));
    if (xcb_connection_has_error(connection_.get())) return;
    manager_ = atom("MANAGER");
    selection_ = atom("_NET_SYSTEM_TRAY_S" + std::to_string(screenNumber));
    watchRoot(screenNumber);
    findOwner();
    readable_ = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection_.get()), QSocketNotifier::Read);
    QObject::connect(readable_.get(), &QSocketNotifier::activated, [this] { readEvents(); });
    readEvents(); // what came with the replies wakes nobody
}

xcb_atom_t QtX11Tray::atom(const std::string& name) const {
    const auto asked = xcb_intern_atom(connection_.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    const Owned<xcb_intern_atom_reply_t> reply{xcb_intern_atom_reply(connection_.get(), asked, nullptr)};
    return reply ? reply->atom : XCB_NONE;
}

// A new owner tells all clients by a message to the root window.
void QtX11Tray::watchRoot(int screenNumber) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_.get()));
    for (int index = 0; index < screenNumber && screens.rem > 1; ++index)
        xcb_screen_next(&screens);
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_.get(), screens.data->root, XCB_CW_EVENT_MASK, &events);
}

// An owner that goes is told by the end of its window.
void QtX11Tray::findOwner() {
    const auto asked = xcb_get_selection_owner(connection_.get(), selection_);
    const Owned<xcb_get_selection_owner_reply_t> reply{
        xcb_get_selection_owner_reply(connection_.get(), asked, nullptr)};
    owner_ = reply ? reply->owner : XCB_NONE;
    if (!isThere()) return;
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    const auto watched = xcb_change_window_attributes_checked(connection_.get(), owner_, XCB_CW_EVENT_MASK, &events);
    const Owned<xcb_generic_error_t> goneAlready{xcb_request_check(connection_.get(), watched)};
    if (goneAlready) owner_ = XCB_NONE;
}

void QtX11Tray::readEvents() {
    const xcb_window_t before = owner_;
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        const auto type = event->response_type & 0x7F;
        const auto* const message = reinterpret_cast<const xcb_client_message_event_t*>(event.get());
        const auto* const destroyed = reinterpret_cast<const xcb_destroy_notify_event_t*>(event.get());
        const bool isNew =
            type == XCB_CLIENT_MESSAGE && message->type == manager_ && message->data.data32[1] == selection_;
        const bool isGone = type == XCB_DESTROY_NOTIFY && destroyed->window == owner_;
        if (isNew || isGone) findOwner();
    }
    // The display is gone, and the program goes with it.
    if (xcb_connection_has_error(connection_.get())) readable_->setEnabled(false);
    if (owner_ != before) changed_();
}

} // namespace letterloft
