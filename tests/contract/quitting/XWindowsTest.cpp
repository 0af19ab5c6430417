#include "platform/linux/XWindows.h"
#include "tests/contract/quitting/Desktop.h"

#include <csignal>
#include <gtest/gtest.h>

namespace letterloft {

namespace {

TEST(WindowsAreListed, AsTheWindowManagerSaysWhileItLives) {
    Desktop desktop;
    desktop.startDisplay();
    Started program{{LETTERLOFT_TEST_PROGRAM, "windows=3"}};
    program.ready();
    Started manager{{LETTERLOFT_TEST_PROGRAM, "windows=1", "sigterm=handle"}};
    manager.ready();
    XWindows windows;
    const auto asStacked = windows.clientWindows();
    ASSERT_EQ(asStacked.size(), 4U);
    EXPECT_EQ(asStacked[0].pid, program.pid()); // by the X server; the window itself tells another
    EXPECT_EQ(asStacked[0].className, "Tester");
    // What a window manager writes (EWMH), and no more.
    const std::string check = std::to_string(asStacked[3].id);
    const std::string clients = std::to_string(asStacked[2].id) + "," + std::to_string(asStacked[0].id);
    const std::string setCheck = " -f _NET_SUPPORTING_WM_CHECK 32c -set _NET_SUPPORTING_WM_CHECK " + check;
    for (const std::string& options : {" -root -f _NET_CLIENT_LIST 32c -set _NET_CLIENT_LIST " + clients,
                                       " -root" + setCheck, " -id " + check + setCheck})
        ASSERT_EQ((Started{{"sh", "-c", "xprop" + options}}.status()), 0);
    const auto asManaged = windows.clientWindows();
    ASSERT_EQ(asManaged.size(), 2U);
    EXPECT_EQ(asManaged[0].id, asStacked[2].id);
    EXPECT_EQ(asManaged[1].id, asStacked[0].id);
    kill(manager.pid(), SIGTERM); // which leaves its list
    EXPECT_EQ(manager.status(), 0);
    EXPECT_EQ(windows.clientWindows().size(), 3U);
}

} // namespace

} // namespace letterloft
