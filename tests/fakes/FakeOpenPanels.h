#pragma once

#include "platform/OpenPanel.h"
#include "tests/fakes/FakeWindow.h"

#include <cassert>
#include <memory>
#include <string>
#include <vector>

namespace letterloft {

class FakeOpenPanel final : public OpenPanel, public std::enable_shared_from_this<FakeOpenPanel> {
public:
    void setPrompt(const std::string& text) override { prompt = text; }
    void setMessage(const std::string& text) override { message = text; }
    void setAllowedFileTypes(const std::vector<std::string>& types) override { allowedFileTypes = types; }
    void setCanChooseFiles(bool can) override { canChooseFiles = can; }
    void setCanChooseDirectories(bool can) override { canChooseDirectories = can; }
    void setDirectoryURL(const std::string& folder) override {
        assert(!folder.empty() && folder.front() == '/');
        directory = folder;
    }

    void beginSheetModalForWindow(Window& window, std::function<void(int)> handler) override {
        assert(!window_); // shown once
        window_ = dynamic_cast<FakeWindow*>(&window);
        assert(window_ && handler);
        window_->attach({.messageText = message,
                         .buttons = {{prompt, okResult}, {"Cancel", cancelResult}},
                         .escapeCode = cancelResult,
                         .completion = [self = shared_from_this(), handler](int result) { handler(result); }});
    }

    std::vector<std::string> urls() const override { return chosen; }

    // Ends the sheet as the user does, with that one item chosen.
    void choose(const std::string& path) {
        chosen = {path};
        window_->press(prompt);
    }

    std::string prompt;
    std::string message;
    std::vector<std::string> allowedFileTypes;
    bool canChooseFiles = true;
    bool canChooseDirectories = false;
    std::string directory;
    std::vector<std::string> chosen;

private:
    FakeWindow* window_ = nullptr;
};

class FakeOpenPanels final : public OpenPanels {
public:
    std::shared_ptr<OpenPanel> openPanel() override {
        auto panel = std::make_shared<FakeOpenPanel>();
        last = panel;
        return panel;
    }

    std::weak_ptr<FakeOpenPanel> last; // the latest one made, as long as it lives
};

} // namespace letterloft
