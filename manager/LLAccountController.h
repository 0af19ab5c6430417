#pragma once

#include "platform/Alerts.h"
#include "platform/Calendar.h"
#include "platform/FileManager.h"
#include "platform/InterfaceFile.h"
#include "platform/Log.h"
#include "platform/NotificationCenter.h"
#include "platform/OpenPanel.h"
#include "platform/OutlineView.h"
#include "platform/Sender.h"
#include "platform/SettingsStore.h"
#include "platform/TableView.h"
#include "platform/WindowController.h"
#include "storage/Text.h"

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace letterloft {

// The account-manager window: the table of accounts, the outline of managed applications, and all that is done there.
// Made when the window is first asked for and kept to the end of the program; it never stops observing. Keeps no list
// of its own: every question is answered from the settings, every change is written back whole.
class LLAccountController final : public WindowController,
                                  public TableViewDataSource,
                                  public OutlineViewDataSource,
                                  public OutlineViewDelegate {
public:
    // All outlive the controller; the notification centre's last post comes before its end.
    struct Services {
        SettingsStore& settings;
        FileManager& files;
        InterfaceFiles& interfaceFiles;
        Alerts& alerts;
        OpenPanels& openPanels;
        NotificationCenter& notifications;
        const Calendar& calendar;
        Log& log;
    };

    // `window` is whose closing is observed: none, as the window's file is loaded later, stands for every window of the
    // program.
    static std::unique_ptr<LLAccountController> initWithWindow(const Services& services, const Window* window);
    void awakeFromNib();
    void windowDidLoad();
    void windowWillClose();
    ~LLAccountController() override;
    LLAccountController(const LLAccountController&) = delete;
    LLAccountController& operator=(const LLAccountController&) = delete;

    void showWindow() override;
    Window* window() override;
    void close() override;

    // Adds an account under the next generated name.
    void insertAccount(Sender* sender);

    // The sheet's completions get no sheet to look at: it is gone by then. The context is what the question was about;
    // for an account the row, whose name is looked up again.
    void removeAccount(Sender* sender);
    void sheetDidEndShouldDeleteAccount_returnCode_contextInfo(int returnCode,
                                                               const std::optional<std::size_t>& contextInfo);

    // Resets whichever button was pressed.
    void resetAllData(Sender* sender);
    void sheetDidEndShouldResetData_returnCode_contextInfo();

    void insertApp(Sender* sender);
    void insertFile(Sender* sender);

    void removeAppOrFile(Sender* sender);
    void sheetDidEndShouldDeleteApp_returnCode_contextInfo(int returnCode, const OutlineItem& contextInfo);
    void sheetDidEndShouldDeleteFile_returnCode_contextInfo(int returnCode, const OutlineItem& contextInfo);

    // The stamp of a backup made now, such as 20110305-09.07.3; the second is not padded.
    std::string getCurrentDateAndTimeString() const;

    std::size_t outlineView_numberOfChildrenOfItem(OutlineView& outline, const OutlineItem& item) override;
    OutlineItem outlineView_child_ofItem(OutlineView& outline, std::size_t index, const OutlineItem& item) override;
    bool outlineView_isItemExpandable(OutlineView& outline, const OutlineItem& item) override;
    CellValue outlineView_objectValueForTableColumn_byItem(OutlineView& outline, TableColumn* column,
                                                           const OutlineItem& item) override;
    void outlineView_setObjectValue_forTableColumn_byItem(OutlineView& outline, const CellValue& value,
                                                          TableColumn* column, const OutlineItem& item) override;
    std::optional<Cell> outlineView_dataCellForTableColumn_item(OutlineView& outline, TableColumn* column,
                                                                const OutlineItem& item) override;
    bool outlineView_shouldExpandItem(OutlineView& outline, const OutlineItem& item) override;
    bool outlineView_shouldCollapseItem(OutlineView& outline, const OutlineItem& item) override;

    std::size_t numberOfRowsInTableView(TableView& table) override;
    CellValue tableView_objectValueForTableColumn_row(TableView& table, TableColumn* column, std::size_t row) override;
    void tableView_setObjectValue_forTableColumn_row(TableView& table, const CellValue& value, TableColumn* column,
                                                     std::size_t row) override;

private:
    explicit LLAccountController(const Services& services);

    void loadWindow();
    void log(std::string_view text, std::initializer_list<TextValue> values) const;
    // A notice with "OK" alone, and a question with "OK" and "Cancel"; critical sheets on the manager window.
    void refuse(const std::string& messageText, const std::string& informativeText);
    void ask(const std::string& messageText, const std::string& informativeText, Alerts::Completion completion);
    std::string accountFolderOf(const std::string& name) const;

    // Each is true when the account's folder is out of the way; a failure is in the log.
    bool removeEmptyFolderOfAccount(const std::string& name);
    bool backUpFolderOfAccount(const std::string& name, const std::vector<std::string>& contents);

    void writeDefaultsOfReset();
    void recreateDefaultUser();

    void addApp(const std::string& path);
    void addFile(const std::string& path, const std::string& app);
    void noticeAlreadyManaged(const std::string& messageText);

    std::vector<std::string> otherAccounts() const;
    // Moves what the account has parked of the item, if anything, into a backup. False, with a line in the log, if that
    // failed.
    bool backUpParkedItem(const std::string& account, const std::string& item);

    Services services;
    std::unique_ptr<InterfaceFile> interfaceFile;
    SettingsStore* defaults = nullptr;
    TableView* tableView = nullptr;
    Window* theWindow = nullptr;
    OutlineView* myView = nullptr;
};

} // namespace letterloft
