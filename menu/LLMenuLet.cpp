#include "menu/LLMenuLet.h"

#include "storage/SettingsKeys.h"
#include "storage/SupportFolder.h"
#include "storage/Text.h"

#include <algorithm>

namespace letterloft {

namespace {

constexpr const char* manageAccountsTitle = "Manage Accounts...";
constexpr const char* helpTitle = "Letterloft Help";
constexpr const char* quitTitle = "Quit";

// Told by the title alone: an account that carries a fixed item's title is kept too.
bool survivesClearing(const MenuItem& item) {
    const std::string title = item.title();
    return title == manageAccountsTitle || title == helpTitle || title == quitTitle || item.isSeparatorItem();
}

} // namespace

LLMenuLet::LLMenuLet(const Services& theServices, Menu& menu) : services{theServices}, statusMenu{menu} {}

LLMenuLet::~LLMenuLet() = default;

void LLMenuLet::awakeFromNib() {
    defaults = &services.settings;
    statusItem = services.statusBar.statusItemWithLength(StatusBar::variableLength);
    statusItem->setHighlightMode(true);
    statusItem->setEnabled(true);
    statusItem->setToolTip("Letterloft Menu");
    statusItem->setMenu(statusMenu);
    statusImage = services.images.imageNamed("letter_icon");
    alternateImage = services.images.imageNamed("letter_alternate_icon");
    statusItem->setImage(statusImage);
    statusItem->setAlternateImage(alternateImage);
    statusMenu.insertItem(statusMenu.makeSeparatorItem(), 0);
    populateMenuWithAccounts();
}

void LLMenuLet::populateMenuWithAccounts() {
    const std::vector<std::string> snapshot = defaults->list(keys::accounts);
    if (!pruneAccounts(snapshot)) {
        populateMenuWithAccounts();
        return;
    }
    removeAccountItems();
    createSupportFolderIfMissing();
    if (!defaults->hasValue(keys::accounts)) {
        createDefaultAccount();
        populateMenuWithAccounts();
    }
    // The snapshot, not the pruned list: an account that has just been dropped is shown once more.
    for (const std::string& name : snapshot)
        insertItemForAccount(name);
}

bool LLMenuLet::pruneAccounts(const std::vector<std::string>& snapshot) {
    const std::string home = services.files.homeFolder();
    for (const std::string& name : snapshot) {
        if (services.files.folderExists(accountFolder(home, name))) continue;
        std::vector<std::string> accounts = defaults->list(keys::accounts);
        std::erase(accounts, name);
        defaults->setList(keys::accounts, accounts);
        if (defaults->text(keys::currentUser) != name) continue;
        if (accounts.empty()) return false;
        // The last entry may be an account without a folder too; it is then dropped in its turn.
        defaults->setText(keys::currentUser, accounts.back());
    }
    return true;
}

void LLMenuLet::removeAccountItems() {
    for (const auto& item : statusMenu.itemArray()) {
        if (!survivesClearing(*item)) statusMenu.removeItem(item);
    }
}

void LLMenuLet::createSupportFolderIfMissing() {
    const std::string folder = supportFolder(services.files.homeFolder());
    if (services.files.fileExists(folder)) return;
    if (const Status created = services.files.createFolder(folder); !created) {
        services.log.write(filledForLog("There was an error creating the support folder:\n%@", {created.sentence()}));
    }
}

void LLMenuLet::createDefaultAccount() {
    services.log.write("We have no accounts present!  Creating a default user now...");
    const std::string folder = accountFolder(services.files.homeFolder(), keys::defaultUser);
    if (const Status created = services.files.createFolder(folder); !created) {
        services.log.write(
            filledForLog("There was an error creating a folder for the Default user:\n%@", {created.sentence()}));
    }
    defaults->setList(keys::accounts, {keys::defaultUser});
    defaults->setText(keys::currentUser, keys::defaultUser);
    (void)defaults->synchronize(); // a failure is logged by the store, and tried again at its next occasion
}

void LLMenuLet::insertItemForAccount(const std::string& name) {
    const std::shared_ptr<MenuItem> item = statusMenu.makeItem(name);
    if (defaults->text(keys::currentUser) == name) {
        item->setImage(services.images.imageNamed("mailbox"));
    } else {
        item->setAction([this](Sender* sender) { switchAccounts(sender); });
    }
    statusMenu.insertItem(item, 0);
}

void LLMenuLet::manageAccounts(Sender*) {
    if (accountController) {
        services.application.activateIgnoringOtherApps();
        if (Window* window = accountController->window()) window->makeKeyAndOrderFront();
        return;
    }
    accountController = services.makeAccountController();
    if (!accountController) {
        services.log.write("The account manager could not be made.");
        return;
    }
    services.notifications.addObserver("accountsDidChange", accountController.get(),
                                       [this] { populateMenuWithAccounts(); });
    services.application.activateIgnoringOtherApps();
    accountController->showWindow();
}

} // namespace letterloft
