#include "manager/LLAccountController.h"

#include "storage/SettingsKeys.h"
#include "storage/SupportFolder.h"

namespace letterloft {

void LLAccountController::removeAppOrFile(Sender*) {
    const std::optional<std::size_t> row = myView->selectedRow();
    const OutlineItem item = row ? myView->itemAtRow(*row) : std::nullopt;
    if (!item) return;
    // Not the test of the outline, which looks for the text in the list of applications.
    const bool isApp = defaults->hasValue(*item);
    const char* const question = isApp ? "Are you sure you want to stop managing the app %@?"
                                       : "Are you sure you want to stop managing the file/directory %@?";
    const auto completion = isApp ? &LLAccountController::sheetDidEndShouldDeleteApp_returnCode_contextInfo
                                  : &LLAccountController::sheetDidEndShouldDeleteFile_returnCode_contextInfo;
    ask(filled(question, {item}),
        "NOTE: Files for accounts other than the current user are located in your "
        "~/Library/Application Support/Letterloft directory!",
        [this, completion, item](int returnCode) { (this->*completion)(returnCode, item); });
}

void LLAccountController::sheetDidEndShouldDeleteApp_returnCode_contextInfo(int returnCode,
                                                                            const OutlineItem& contextInfo) {
    if (returnCode != Alerts::defaultReturn || !contextInfo) return;
    const std::string& app = *contextInfo;
    std::vector<std::string> apps = defaults->list(keys::apps);
    std::erase(apps, app);
    defaults->setList(keys::apps, apps);
    const std::vector<std::string> items = defaults->list(app);
    defaults->removeValue(app);
    std::vector<std::string> autostartApps = defaults->list(keys::autostartApps);
    if (std::erase(autostartApps, app) > 0) defaults->setList(keys::autostartApps, autostartApps);

    for (const std::string& account : otherAccounts()) {
        for (const std::string& item : items) {
            if (!backUpParkedItem(account, item)) return;
        }
    }
    (void)defaults->synchronize();
    myView->reloadData();
}

void LLAccountController::sheetDidEndShouldDeleteFile_returnCode_contextInfo(int returnCode,
                                                                             const OutlineItem& contextInfo) {
    if (returnCode != Alerts::defaultReturn || !contextInfo) return;
    const std::string& item = *contextInfo;
    const OutlineItem app = myView->parentForItem(item);
    if (!app) return; // an application without a list of items: there is no list that it could be taken from
    std::vector<std::string> items = defaults->list(*app);
    std::erase(items, item);
    defaults->setList(*app, items);

    for (const std::string& account : otherAccounts()) {
        if (!backUpParkedItem(account, item)) return;
    }
    (void)defaults->synchronize();
    tableView->reloadData();
    myView->reloadData();
}

std::vector<std::string> LLAccountController::otherAccounts() const {
    std::vector<std::string> accounts = defaults->list(keys::accounts);
    if (const std::optional<std::string> current = defaults->text(keys::currentUser)) std::erase(accounts, *current);
    return accounts;
}

bool LLAccountController::backUpParkedItem(const std::string& account, const std::string& item) {
    const std::string parked = parkedPath(accountFolderOf(account), item);
    if (!services.files.fileExists(parked)) return true;
    // A stamp of its own for each item, so one slow backup may spread over several folders.
    const std::string backup = backupFolder(services.files.homeFolder(), account, getCurrentDateAndTimeString());
    if (const Status created = services.files.createFolder(backup); !created) {
        log("There was an error creating a folder for backup: %@", {created.sentence()});
        return false;
    }
    const Status moved = services.files.moveItem(parked, parkedPath(backup, item));
    if (!moved) log("There was an error moving files/folders for backup: %@", {moved.sentence()});
    return moved.isOk();
}

} // namespace letterloft
