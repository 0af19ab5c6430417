#pragma once

#include "app/LetterloftAppDelegate.h"
#include "manager/LLAccountController.h"
#include "menu/LLMenuLet.h"
#include "storage/SettingsKeys.h"
#include "storage/SupportFolder.h"
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeCalendar.h"
#include "tests/fakes/FakeFileManager.h"
#include "tests/fakes/FakeImages.h"
#include "tests/fakes/FakeInterfaceFiles.h"
#include "tests/fakes/FakeLog.h"
#include "tests/fakes/FakeMenu.h"
#include "tests/fakes/FakeNotificationCenter.h"
#include "tests/fakes/FakeOpenPanels.h"
#include "tests/fakes/FakeRunLoop.h"
#include "tests/fakes/FakeRunningApplications.h"
#include "tests/fakes/FakeSettingsStore.h"
#include "tests/fakes/FakeStatusBar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace letterloft {

using Texts = std::vector<std::string>;

inline const std::string home = "/home/user";
inline const std::string support = home + "/Library/Application Support/Letterloft";
inline const std::string mailFolder = home + "/Library/Mail";

// The program with all that is around it faked, but for its settings and files. Tests go through its doors: items of
// the menu, controls and sheets of the window.
struct ProgramOverFakes {
    ProgramOverFakes(SettingsStore& settings, FileManager& files)
        : delegate{settings, files},
          menuLet{{settings, files, running, launcher, runLoop, application, statusBar, images, notifications, log,
                   [this, &settings, &files] {
                       auto made = LLAccountController::initWithWindow(
                           {settings, files, interfaceFiles, alerts, panels, notifications, calendar, log}, nullptr);
                       controller = made.get();
                       return made;
                   }},
                  menu} {
        int row = 0;
        for (const char* title : {"Manage Accounts...", "Letterloft Help", "Quit"}) {
            auto item = menu.makeItem(title);
            item->setAction([this, manages = row == 0](Sender* sender) {
                if (manages) menuLet.manageAccounts(sender);
            });
            menu.insertItem(item, static_cast<std::size_t>(row++));
        }
    }

    void start() {
        menuLet.awakeFromNib();
        delegate.applicationDidFinishLaunching();
    }

    void openManager() { EXPECT_TRUE(menu.choose("Manage Accounts...")); }

    void press(const std::string& operation) { interfaceFiles.press(operation); }
    FakeWindow& window() { return interfaceFiles.file->manager; }
    FakeTableView& table() { return interfaceFiles.file->accounts; }
    FakeOutlineView& outline() { return interfaceFiles.file->outline; }
    std::shared_ptr<FakeSheet> sheet() { return window().sheet; }

    FakeRunLoop runLoop;
    FakeRunningApplications running{runLoop};
    FakeLauncher launcher;
    FakeApplication application;
    FakeStatusBar statusBar;
    FakeImages images;
    FakeNotificationCenter notifications;
    FakeLog log;
    FakeCalendar calendar;
    FakeAlerts alerts;
    FakeOpenPanels panels;
    FakeInterfaceFiles interfaceFiles{notifications};
    FakeMenu menu;
    LLAccountController* controller = nullptr; // once the manager has been opened
    LetterloftAppDelegate delegate;
    LLMenuLet menuLet;
};

struct FakeDisk {
    FakeSettingsStore settings;
    FakeFileManager files{home};
};

// The whole program over fakes.
struct World : FakeDisk, ProgramOverFakes {
    World() : ProgramOverFakes{FakeDisk::settings, FakeDisk::files} {}

    // Accounts with their folders; the first is the current one. Apps is left empty, so no defaults are written.
    explicit World(const Texts& accounts) : World() {
        settings.setList(keys::accounts, accounts);
        settings.setText(keys::currentUser, accounts.front());
        settings.setList(keys::apps, {});
        for (const std::string& name : accounts)
            files.addFolder(folderOf(name));
    }

    World& start() { return ProgramOverFakes::start(), *this; }
    World& openManager() { return ProgramOverFakes::openManager(), *this; }

    void manage(const std::string& app, const Texts& items) {
        Texts apps = settings.list(keys::apps);
        apps.push_back(app);
        settings.setList(keys::apps, apps);
        settings.setList(app, items);
    }

    static std::string folderOf(const std::string& account) { return accountFolder(home, account); }
    Texts accounts() const { return settings.list(keys::accounts); }
    std::string currentUser() const { return settings.text(keys::currentUser).value_or("(none)"); }
    std::string textAt(const std::string& path) const { return files.textAt(path).value_or("(nothing)"); }
    bool isSaved() const { return settings.saved == settings.values; }
};

} // namespace letterloft
