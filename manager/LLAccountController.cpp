#include "manager/LLAccountController.h"

#include "storage/SupportFolder.h"

#include <array>
#include <cstdio>
#include <utility>

namespace letterloft {

LLAccountController::LLAccountController(const Services& theServices) : services{theServices} {}

LLAccountController::~LLAccountController() = default;

std::unique_ptr<LLAccountController> LLAccountController::initWithWindow(const Services& services,
                                                                         const Window* window) {
    std::unique_ptr<LLAccountController> controller{new LLAccountController{services}};
    services.notifications.addObserver(NotificationCenter::windowWillClose, window,
                                       [self = controller.get()] { self->windowWillClose(); });
    controller->defaults = &services.settings;
    return controller;
}

void LLAccountController::awakeFromNib() { myView->setDelegate(this); }

void LLAccountController::windowDidLoad() {}

void LLAccountController::windowWillClose() { services.notifications.post("accountsDidChange", this); }

void LLAccountController::showWindow() {
    if (Window* shown = window()) shown->makeKeyAndOrderFront();
}

Window* LLAccountController::window() {
    if (!interfaceFile) loadWindow();
    return theWindow;
}

void LLAccountController::close() {
    if (theWindow) theWindow->close();
}

void LLAccountController::loadWindow() {
    using Operation = void (LLAccountController::*)(Sender*);
    const auto action = [this](Operation operation) {
        return [=, this](Sender* sender) { (this->*operation)(sender); };
    };
    std::unique_ptr<InterfaceFile> file = services.interfaceFiles.load(
        "LLAccountWindow", {{"insertAccount:", action(&LLAccountController::insertAccount)},
                            {"removeAccount:", action(&LLAccountController::removeAccount)},
                            {"resetAllData:", action(&LLAccountController::resetAllData)},
                            {"insertApp:", action(&LLAccountController::insertApp)},
                            {"insertFile:", action(&LLAccountController::insertFile)},
                            {"removeAppOrFile:", action(&LLAccountController::removeAppOrFile)}});
    if (!file || !file->tableView("tableView") || !file->outlineView("myView")) {
        services.log.write("The interface file LLAccountWindow is missing or lacks one of its views.");
        return;
    }
    interfaceFile = std::move(file);
    tableView = interfaceFile->tableView("tableView");
    theWindow = &interfaceFile->window();
    myView = interfaceFile->outlineView("myView");
    tableView->setDataSource(this);
    myView->setDataSource(this);
    awakeFromNib();
    windowDidLoad();
}

void LLAccountController::log(std::string_view text, std::initializer_list<TextValue> values) const {
    services.log.write(filledForLog(text, values));
}

void LLAccountController::refuse(const std::string& messageText, const std::string& informativeText) {
    services.alerts.beginCriticalAlertSheet(
        {.messageText = messageText, .defaultButton = "OK", .informativeText = informativeText}, *theWindow, {});
}

void LLAccountController::ask(const std::string& messageText, const std::string& informativeText,
                              Alerts::Completion completion) {
    services.alerts.beginCriticalAlertSheet({.messageText = messageText,
                                             .defaultButton = "OK",
                                             .otherButton = "Cancel",
                                             .informativeText = informativeText},
                                            *theWindow, std::move(completion));
}

std::string LLAccountController::accountFolderOf(const std::string& name) const {
    return accountFolder(services.files.homeFolder(), name);
}

std::string LLAccountController::getCurrentDateAndTimeString() const {
    const Calendar::Components now = services.calendar.currentDate();
    std::array<char, 80> text{}; // six numbers of at most eleven characters each, and the points
    std::snprintf(text.data(), text.size(), "%d%02d%02d-%02d.%02d.%d", now.year, now.month, now.day, now.hour,
                  now.minute, now.second);
    return text.data();
}

} // namespace letterloft
