#include "manager/LLAccountController.h"

#include "storage/SettingsKeys.h"
#include "storage/SupportFolder.h"

namespace letterloft {

void LLAccountController::removeAccount(Sender*) {
    const std::optional<std::size_t> row = tableView->selectedRow();
    if (!row) return;
    const std::vector<std::string> accounts = defaults->list(keys::accounts);
    if (*row >= accounts.size()) return;
    const std::string& name = accounts[*row];
    if (accounts.size() == 1) {
        refuse("You must have at least one account!", "Add another account to enable deleting this one...");
    } else if (defaults->text(keys::currentUser) == name) {
        refuse("You can't delete the currently active account!", "Change to another user then try again...");
    } else {
        ask(filled("Are you sure you want to delete account %@ and all of it's files & data?", {name}),
            "WARNING: Deleted accounts cannot be restored!",
            [this, row](int returnCode) { sheetDidEndShouldDeleteAccount_returnCode_contextInfo(returnCode, row); });
    }
}

void LLAccountController::sheetDidEndShouldDeleteAccount_returnCode_contextInfo(
    int returnCode, const std::optional<std::size_t>& contextInfo) {
    if (!contextInfo) {
        services.log.write("Error deleting account - no context info passed!");
        return;
    }
    if (returnCode != Alerts::defaultReturn) return;
    // The row counts, not the name that was asked about: the list may have changed under the sheet.
    std::vector<std::string> accounts = defaults->list(keys::accounts);
    if (*contextInfo >= accounts.size()) return;
    const std::string name = accounts[*contextInfo];
    accounts.erase(accounts.begin() + static_cast<std::ptrdiff_t>(*contextInfo));

    const std::string folder = accountFolderOf(name);
    const Result<std::vector<std::string>> contents = services.files.contentsOfFolder(folder);
    if (!contents) {
        log("There was an error checking path contents at %@: %@", {folder, contents.status().sentence()});
        return;
    }
    if (contents->empty() ? !removeEmptyFolderOfAccount(name) : !backUpFolderOfAccount(name, *contents)) return;
    defaults->setList(keys::accounts, accounts);
    (void)defaults->synchronize();
    tableView->reloadData();
}

bool LLAccountController::removeEmptyFolderOfAccount(const std::string& name) {
    // The list itself, which is empty, stands where the path is announced. Kept so.
    log("Nothing was found at the path: %@\nNo backup will be performed!", {listDescription({})});
    const Status removed = services.files.removeItem(accountFolderOf(name));
    if (!removed) log("There was an error deleting a folder for user %@:\n%@", {name, removed.sentence()});
    return removed.isOk();
}

bool LLAccountController::backUpFolderOfAccount(const std::string& name, const std::vector<std::string>& contents) {
    const std::string backup = backupFolder(services.files.homeFolder(), name, getCurrentDateAndTimeString());
    const Status created = services.files.createFolder(backup);
    // Said before the outcome is looked at, so of a backup that failed too. Kept so.
    log("The following from the deleted account was backed up to %@:%@", {backup, listDescription(contents)});
    if (!created) {
        log("There was an error creating a folder for backup: %@", {created.sentence()});
        return false;
    }
    const Status moved = services.files.moveItem(accountFolderOf(name), joined(backup, "Account"));
    if (!moved) log("There was an error moving folders for backup: %@", {moved.sentence()});
    return moved.isOk();
}

} // namespace letterloft
