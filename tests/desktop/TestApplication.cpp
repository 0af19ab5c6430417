// A small real program with one window. It ends when its window is asked to close, and keeps a journal of what
// happened: TestApplication JOURNAL ITEM [hold] With `hold` it stays until SIGUSR1.

#include <xcb/xcb.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <poll.h>
#include <string>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

xcb_atom_t atom(xcb_connection_t* display, const std::string& name) {
    const auto cookie = xcb_intern_atom(display, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply{xcb_intern_atom_reply(display, cookie, nullptr)};
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void showWindow(xcb_connection_t* display, xcb_atom_t protocols, xcb_atom_t deleteWindow) {
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(display)).data;
    const xcb_window_t window = xcb_generate_id(display);
    xcb_create_window(display, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 200, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    xcb_change_property(display, XCB_PROP_MODE_REPLACE, window, protocols, XCB_ATOM_ATOM, 32, 1, &deleteWindow);
    xcb_map_window(display, window);
    // The answer to a later request tells that the window is there.
    atom(display, "UTF8_STRING");
}

bool isAskedToClose(xcb_connection_t* display, xcb_atom_t deleteWindow) {
    bool asked = false;
    while (const std::unique_ptr<xcb_generic_event_t, Free> event{xcb_poll_for_event(display)}) {
        if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE) continue;
        const auto* message = reinterpret_cast<xcb_client_message_event_t*>(event.get());
        asked = asked || message->data.data32[0] == deleteWindow;
    }
    return asked;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    const auto note = [&](const std::string& word) { std::ofstream(argv[1], std::ios::app) << word + "\n"; };
    const bool holds = argc > 3;

    sigset_t told;
    sigemptyset(&told);
    sigaddset(&told, SIGUSR1);
    sigprocmask(SIG_BLOCK, &told, nullptr);

    xcb_connection_t* display = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(display)) return 1;
    const xcb_atom_t deleteWindow = atom(display, "WM_DELETE_WINDOW");
    showWindow(display, atom(display, "WM_PROTOCOLS"), deleteWindow);
    note("started");

    pollfd waits[] = {{xcb_get_file_descriptor(display), POLLIN, 0}, {signalfd(-1, &told, SFD_CLOEXEC), POLLIN, 0}};
    for (bool ends = false; !ends && (waits[1].revents & POLLIN) == 0;) {
        if (isAskedToClose(display, deleteWindow)) {
            note("asked");
            ends = !holds;
            continue;
        }
        if (xcb_connection_has_error(display) || (poll(waits, 2, -1) < 0 && errno != EINTR)) return 1;
    }
    // Nothing may have been moved away under a running program.
    note(std::filesystem::exists(argv[2]) ? "ended-with-item" : "ended-without-item");
    xcb_disconnect(display);
}
