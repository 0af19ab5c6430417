#include "manager/LLAccountController.h"

#include "manager/NewAccountName.h"
#include "storage/SettingsKeys.h"

namespace letterloft {

void LLAccountController::insertAccount(Sender*) {
    std::vector<std::string> accounts = defaults->list(keys::accounts);
    const std::string name = newAccountName(accounts);
    if (const Status created = services.files.createFolder(accountFolderOf(name)); !created) {
        log("There was an error creating a folder for user %@:\n%@", {name, created.sentence()});
        return;
    }
    accounts.push_back(name);
    defaults->setList(keys::accounts, accounts);
    (void)defaults->synchronize(); // here and elsewhere: a failure is logged by the store, and tried again later
    tableView->reloadData();
}

std::size_t LLAccountController::numberOfRowsInTableView(TableView&) { return defaults->countOfList(keys::accounts); }

CellValue LLAccountController::tableView_objectValueForTableColumn_row(TableView&, TableColumn*, std::size_t row) {
    return defaults->textInList(keys::accounts, row).value_or(std::string{});
}

void LLAccountController::tableView_setObjectValue_forTableColumn_row(TableView&, const CellValue& value, TableColumn*,
                                                                      std::size_t row) {
    const auto* newName = std::get_if<std::string>(&value);
    if (!newName) {
        services.log.write("Error with tableView type pass!");
        return;
    }
    std::vector<std::string> accounts = defaults->list(keys::accounts);
    if (row >= accounts.size()) return;
    const std::string oldName = accounts[row];
    if (defaults->isInList(keys::accounts, *newName)) { // the row's own name too
        refuse(filled("ERROR! Account name %@ already exists!!", {*newName}),
               "You can not have 2 accounts with the same name.");
        return;
    }
    if (const Status moved = services.files.moveItem(accountFolderOf(oldName), accountFolderOf(*newName)); !moved) {
        log("There was an error moving the folder for user %@ (renamed %@):\n%@",
            {oldName, *newName, moved.sentence()});
        return;
    }
    accounts[row] = *newName;
    defaults->setList(keys::accounts, accounts);
    if (defaults->text(keys::currentUser) == oldName) defaults->setText(keys::currentUser, *newName);
    (void)defaults->synchronize();
}

} // namespace letterloft
