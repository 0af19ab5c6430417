#pragma once

#include "platform/Window.h"

namespace letterloft {

// Whoever keeps a window made from an interface file. The file is loaded when the window is first needed.
class WindowController {
public:
    virtual ~WindowController() = default;

    // Loads the interface file if that has not happened yet, and orders the window front.
    virtual void showWindow() = 0;

    // The window, loaded if it was not yet; none if its interface file is missing or incomplete.
    virtual Window* window() = 0;

    // Closes the window, if it is loaded.
    virtual void close() = 0;
};

} // namespace letterloft
