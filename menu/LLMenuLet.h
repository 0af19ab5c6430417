#pragma once

#include "platform/Application.h"
#include "platform/FileManager.h"
#include "platform/Image.h"
#include "platform/Launcher.h"
#include "platform/Log.h"
#include "platform/Menu.h"
#include "platform/NotificationCenter.h"
#include "platform/RunLoop.h"
#include "platform/RunningApplications.h"
#include "platform/SettingsStore.h"
#include "platform/StatusItem.h"
#include "platform/WindowController.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace letterloft {

// The program's face: the status item, its menu of accounts, and the switch from one account to another.
// Made once by main, together with its menu; lives as long as the program.
class LLMenuLet final {
public:
    // All outlive the controller.
    struct Services {
        SettingsStore& settings;
        FileManager& files;
        RunningApplications& runningApplications;
        Launcher& launcher;
        RunLoop& runLoop;
        Application& application;
        StatusBar& statusBar;
        ImageResources& images;
        NotificationCenter& notifications;
        Log& log;
        std::function<std::unique_ptr<WindowController>()> makeAccountController;
    };

    // `menu` holds the fixed items of the main interface file.
    LLMenuLet(const Services& services, Menu& menu);
    ~LLMenuLet();
    LLMenuLet(const LLMenuLet&) = delete;
    LLMenuLet& operator=(const LLMenuLet&) = delete;

    // Called once, when the main interface file has been loaded: sets up the status item and builds the menu.
    void awakeFromNib();

    // Rebuilds the account items from the settings, and repairs the settings on the way.
    void populateMenuWithAccounts();

    // The action of "Manage Accounts...".
    void manageAccounts(Sender* sender);

    // The action of an account's item; its title names the account to switch to. Waits, with the run loop served, until
    // every managed application has ended; there is no limit, and what is delivered meanwhile runs nested.
    void switchAccounts(Sender* sender);

private:
    // False when the current account went as the last of all: then everything starts over.
    bool pruneAccounts(const std::vector<std::string>& snapshot);
    void removeAccountItems();
    void createSupportFolderIfMissing();
    void createDefaultAccount();
    void insertItemForAccount(const std::string& name);

    bool areValidUsers(const std::optional<std::string>& currentName, const std::string& chosenName);
    void quitApplications(const std::vector<std::string>& apps);
    void parkItems(const std::vector<std::string>& apps, const std::string& currentName);
    void restoreItems(const std::vector<std::string>& apps, const std::string& chosenName);
    void launchAutostartApps();

    Services services;
    std::unique_ptr<StatusItem> statusItem;
    std::shared_ptr<const Image> statusImage;
    std::shared_ptr<const Image> alternateImage;
    Menu& statusMenu;
    SettingsStore* defaults = nullptr;
    std::unique_ptr<WindowController> accountController;
};

} // namespace letterloft
