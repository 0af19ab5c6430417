#pragma once

namespace letterloft {

// A window of the program, hidden until it is first ordered front. Main thread only.
class Window {
public:
    virtual ~Window() = default;

    // Shows the window, gives it the keyboard and puts it before the program's other windows.
    virtual void makeKeyAndOrderFront() = 0;

    // Hides the window, after telling the notification centre if it was visible; it can be shown again. An edit that
    // stands open in it is dropped. A sheet attached to it goes without an answer.
    virtual void close() = 0;

    // Takes away the sheet attached to the window, if there is one, without an answer.
    virtual void endSheet() = 0;
};

} // namespace letterloft
