#pragma once

namespace letterloft {

// A window of the program, hidden until it is first ordered front. Main thread only.
class Window {
public:
    virtual ~Window() = default;

    // Shows the window, gives it the keyboard and puts it before the program's other windows.
    virtual void makeKeyAndOrderFront() = 0;

    // Drops an edit that stands open in the window, takes the sheet attached to it away without an answer, tells the
    // notification centre if the window is visible, and then hides it; it can be shown again.
    virtual void close() = 0;

    // Takes away the sheet attached to the window, if there is one, without an answer.
    virtual void endSheet() = 0;
};

} // namespace letterloft
