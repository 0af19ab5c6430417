#pragma once

namespace letterloft {

// This program itself, as one application of the desktop. Owned by main; outlives the controllers. Main thread only.
class Application {
public:
    virtual ~Application() = default;

    // Brings the program's windows before those of other applications, as far as the desktop allows.
    virtual void activateIgnoringOtherApps() = 0;

    // Ends the program, with the settings saved, no question answered and no window told of its closing. Does not
    // return to an action that is waiting in the run loop.
    virtual void terminate() = 0;

    // Ends the program, as terminate() does, if its end has been asked for (a signal, the end of the session) since
    // the run loop was last served; otherwise does nothing.
    virtual void terminateIfAskedTo() = 0;
};

} // namespace letterloft
