#pragma once

#include "platform/OpenPanel.h"
#include "platform/linux/InstalledApplications.h"
#include "platform/qt/QtFileChooser.h"

#include <memory>

namespace letterloft {

// With the type "app" a chooser of applications, otherwise one of files and folders. The windows given are QtWindows.
class QtOpenPanel final : public OpenPanel, public std::enable_shared_from_this<QtOpenPanel> {
public:
    explicit QtOpenPanel(const InstalledApplications& applications) : applications_{applications} {}

    void setPrompt(const std::string& prompt) override;
    void setMessage(const std::string& message) override;
    void setAllowedFileTypes(const std::vector<std::string>& types) override { types_ = types; }
    void setCanChooseFiles(bool can) override { canChooseFiles_ = can; }
    void setCanChooseDirectories(bool can) override { canChooseDirectories_ = can; }
    void setDirectoryURL(const std::string& folder) override;
    void beginSheetModalForWindow(Window& window, std::function<void(int result)> handler) override;
    std::vector<std::string> urls() const override { return urls_; }

private:
    template <typename Chooser>
    void begin(std::unique_ptr<Chooser> chooser, Window& window, std::function<void(int result)> handler);

    const InstalledApplications& applications_;
    QtFileChooser::Wanted wanted_;
    std::vector<std::string> types_;
    bool canChooseFiles_ = true;
    bool canChooseDirectories_ = false;
    std::vector<std::string> urls_;
};

// Makes choosers that list these applications.
class QtOpenPanels final : public OpenPanels {
public:
    explicit QtOpenPanels(const InstalledApplications& applications) : applications_{applications} {}

    std::shared_ptr<OpenPanel> openPanel() override { return std::make_shared<QtOpenPanel>(applications_); }

private:
    const InstalledApplications& applications_;
};

} // namespace letterloft
