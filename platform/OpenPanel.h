#pragma once

#include "platform/Window.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace letterloft {

// A file chooser, for one item, set up first and then shown once. Main thread only.
class OpenPanel {
public:
    virtual ~OpenPanel() = default;

    static constexpr int okResult = 1;
    static constexpr int cancelResult = 0;

    // The title of the confirm button, and the text shown in the panel; both plain text.
    virtual void setPrompt(const std::string& prompt) = 0;
    virtual void setMessage(const std::string& message) = 0;

    // Only items of these types can be chosen. "app" stands for an application of this desktop.
    virtual void setAllowedFileTypes(const std::vector<std::string>& types) = 0;

    // Without a call files can be chosen and folders can't.
    virtual void setCanChooseFiles(bool can) = 0;
    virtual void setCanChooseDirectories(bool can) = 0;

    // Where it starts, if that folder exists; absolute.
    virtual void setDirectoryURL(const std::string& folder) = 0;

    // Shows the panel as a sheet and returns at once. The handler runs once, later, with okResult or cancelResult; not
    // at all if the sheet goes with its window or with the program. The panel keeps itself until then.
    virtual void beginSheetModalForWindow(Window& window, std::function<void(int result)> handler) = 0;

    // The chosen items: absolute paths, valid UTF-8, a link as chosen. Not empty when the result was okResult.
    virtual std::vector<std::string> urls() const = 0;
};

// Makes choosers. Owned by main; outlives the controllers.
class OpenPanels {
public:
    virtual ~OpenPanels() = default;

    virtual std::shared_ptr<OpenPanel> openPanel() = 0;
};

} // namespace letterloft
