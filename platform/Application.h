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

    // Serves what has arrived while the run loop was not served, without waiting for more. So it ends the program, as
    // terminate() does, if its end has been asked for meanwhile: by a signal, from the menu, by the end of the session.
    virtual void terminateIfAskedTo() = 0;
};

} // namespace letterloft
