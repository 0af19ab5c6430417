#include "platform/linux/XWindows.h"
#include "tests/contract/quitting/Desktop.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <xcb/xcb.h>

namespace letterloft {

namespace {

// What a window manager writes on the root window (EWMH), and no more.
class TestWindowManager {
public:
    explicit TestWindowManager(const std::vector<std::uint32_t>& clients) {
        const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(server_)).data;
        xcb_create_window(server_, 0, check_, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          XCB_COPY_FROM_PARENT, 0, nullptr);
        write(screen->root, "_NET_CLIENT_LIST", clients);
        write(screen->root, "_NET_SUPPORTING_WM_CHECK", {check_});
        write(check_, "_NET_SUPPORTING_WM_CHECK", {check_});
        settle();
    }
    ~TestWindowManager() { xcb_disconnect(server_); }
    TestWindowManager(const TestWindowManager&) = delete;
    TestWindowManager& operator=(const TestWindowManager&) = delete;

    void dieLeavingItsList() {
        xcb_destroy_window(server_, check_);
        settle();
    }

private:
    void write(xcb_window_t window, const std::string& name, const std::vector<std::uint32_t>& values) {
        auto* atom = xcb_intern_atom_reply(
            server_, xcb_intern_atom(server_, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr);
        xcb_change_property(server_, XCB_PROP_MODE_REPLACE, window, atom->atom, XCB_ATOM_WINDOW, 32,
                            static_cast<std::uint32_t>(values.size()), values.data());
        std::free(atom);
    }

    void settle() { std::free(xcb_get_input_focus_reply(server_, xcb_get_input_focus(server_), nullptr)); }

    xcb_connection_t* server_ = xcb_connect(nullptr, nullptr);
    xcb_window_t check_ = xcb_generate_id(server_);
};

TEST(WindowsAreListed, AsTheWindowManagerSaysWhileItLives) {
    Desktop desktop;
    desktop.startDisplay();
    Started program{{LETTERLOFT_TEST_PROGRAM, "windows=3"}};
    EXPECT_EQ(program.line(), "ready");
    XWindows windows;
    const auto asStacked = windows.clientWindows();
    ASSERT_EQ(asStacked.size(), 3U);
    EXPECT_EQ(asStacked[0].pid, program.pid()); // by the X server; the window itself tells another
    EXPECT_EQ(asStacked[0].className, "Tester");
    TestWindowManager manager{{asStacked[2].id, asStacked[0].id}};
    const auto asManaged = windows.clientWindows();
    ASSERT_EQ(asManaged.size(), 2U);
    EXPECT_EQ(asManaged[0].id, asStacked[2].id);
    EXPECT_EQ(asManaged[1].id, asStacked[0].id);
    manager.dieLeavingItsList();
    EXPECT_EQ(windows.clientWindows().size(), 3U);
}

} // namespace

} // namespace letterloft
