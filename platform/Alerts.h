#pragma once

#include "platform/Window.h"

#include <functional>
#include <optional>
#include <string>

namespace letterloft {

// Questions and notices, shown as sheets on a window. Every text is plain text, shown exactly as given.
// Owned by main; outlives the controllers. Main thread only.
class Alerts {
public:
    virtual ~Alerts() = default;

    static constexpr int defaultReturn = 1;
    static constexpr int alternateReturn = 0;
    static constexpr int otherReturn = -1;

    struct CriticalAlert {
        std::string messageText;
        std::string defaultButton;
        std::optional<std::string> alternateButton = {};
        std::optional<std::string> otherButton = {};
        std::string informativeText;
    };

    // Runs once, later, with the code of the button that ended the sheet; Escape and the sheet's own close count as
    // the other button (with one button only, as that one). A sheet that goes with its window or with the program has
    // no answer, and this does not run.
    using Completion = std::function<void(int returnCode)>;

    // Shows the alert as a sheet on the window and returns at once. The rest of the program stays usable. A window that
    // already has a sheet takes no second one: that alert is dropped, with its completion.
    virtual void beginCriticalAlertSheet(const CriticalAlert& alert, Window& window, Completion completion) = 0;

    // The same for a plain notice with one button, which tells nobody of its end. Is seen even when the window has just
    // been closed, and does not bring the window back.
    virtual void beginAlertSheet(const std::string& messageText, const std::string& button, Window& window) = 0;
};

} // namespace letterloft
