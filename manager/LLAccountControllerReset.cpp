#include "manager/LLAccountController.h"

#include "storage/SettingsKeys.h"
#include "storage/SupportFolder.h"

namespace letterloft {

void LLAccountController::resetAllData(Sender*) {
    ask("Are you sure you want to reset all your data?",
        "WARNING: Data for all accounts other than the current one will be deleted!",
        [this](int) { sheetDidEndShouldResetData_returnCode_contextInfo(); });
}

void LLAccountController::sheetDidEndShouldResetData_returnCode_contextInfo() {
    const std::string folder = supportFolder(services.files.homeFolder());
    log("Deleting %@", {folder});
    if (const Status removed = services.files.removeItem(folder); !removed) {
        log("There was an error deleting the support folder at %@ - %@", {folder, removed.sentence()});
        return;
    }
    writeDefaultsOfReset();
    recreateDefaultUser();
    (void)defaults->synchronize();
    myView->reloadData();
    tableView->reloadData();
}

void LLAccountController::writeDefaultsOfReset() {
    for (const std::string& app : defaults->list(keys::apps))
        defaults->removeValue(app);
    const std::vector<std::string> apps{keys::mailApplication};
    defaults->setList(keys::apps, apps);
    defaults->setList(apps.front(), keys::mailItems(services.files.homeFolder()));
    // The key that is read after a switch, unlike the one the first run writes.
    defaults->setList(keys::autostartApps, apps);
}

void LLAccountController::recreateDefaultUser() {
    if (const Status created = services.files.createFolder(accountFolderOf(keys::defaultUser)); !created)
        log("There was an error creating a folder for the Default user:\n%@", {created.sentence()});
    defaults->setList(keys::accounts, {keys::defaultUser});
    defaults->setText(keys::currentUser, keys::defaultUser);
}

} // namespace letterloft
