#include "manager/LLAccountController.h"

#include "storage/SettingsKeys.h"
#include "storage/SupportFolder.h"

namespace letterloft {

void LLAccountController::insertApp(Sender*) {
    const std::shared_ptr<OpenPanel> panel = services.openPanels.openPanel();
    panel->setPrompt("OK");
    panel->setAllowedFileTypes({"app"});
    panel->setMessage("Select a new app to switch.");
    panel->setDirectoryURL("/Applications");
    // The panel lives until its handler has run; a handler that kept it would keep itself.
    panel->beginSheetModalForWindow(*theWindow, [this, shown = panel.get()](int result) {
        if (result == OpenPanel::okResult) addApp(shown->urls().front());
    });
}

void LLAccountController::addApp(const std::string& path) {
    if (defaults->isInList(keys::apps, path)) {
        noticeAlreadyManaged(filled("We're already managing %@!", {path}));
        return;
    }
    std::vector<std::string> apps = defaults->list(keys::apps);
    apps.push_back(path);
    defaults->setList(keys::apps, apps);
    defaults->setList(path, {}); // counts as an application before it has any item
    (void)defaults->synchronize();
    myView->reloadData();
}

void LLAccountController::insertFile(Sender*) {
    const std::optional<std::size_t> row = myView->selectedRow();
    const OutlineItem item = row ? myView->itemAtRow(*row) : std::nullopt;
    const OutlineItem parent = myView->parentForItem(item);
    if (!item) {
        refuse("Nothing selected!", "You must select an app to add a file or folder to...");
        return;
    }
    const std::shared_ptr<OpenPanel> panel = services.openPanels.openPanel();
    panel->setPrompt("OK");
    panel->setCanChooseFiles(true);
    panel->setCanChooseDirectories(true);
    panel->setMessage("Select File Or Folder...");
    panel->setDirectoryURL(expandedTilde("~/", services.files.homeFolder()));
    panel->beginSheetModalForWindow(*theWindow,
                                    [this, shown = panel.get(), app = parent ? *parent : *item](int result) {
                                        if (result == OpenPanel::okResult) addFile(shown->urls().front(), app);
                                    });
}

void LLAccountController::addFile(const std::string& path, const std::string& app) {
    std::string owner;
    for (const std::string& managed : defaults->list(keys::apps)) {
        if (defaults->isInList(managed, path)) owner = managed; // the last one is named
    }
    if (!owner.empty()) {
        noticeAlreadyManaged(filled("%@ is already managing %@!", {owner, path}));
        return;
    }
    std::vector<std::string> items = defaults->list(app);
    items.push_back(path);
    defaults->setList(app, items);
    (void)defaults->synchronize();
    myView->reloadData();
}

void LLAccountController::noticeAlreadyManaged(const std::string& messageText) {
    // Closed before the notice is shown, on purpose.
    close();
    theWindow->endSheet();
    services.alerts.beginAlertSheet(messageText, "OK", *theWindow);
}

} // namespace letterloft
