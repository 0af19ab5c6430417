#include "menu/LLMenuLet.h"

#include "storage/SettingsKeys.h"
#include "storage/SupportFolder.h"
#include "storage/Text.h"

#include <chrono>

namespace letterloft {

namespace {

constexpr const char* moveFailed = "There was an error moving the file at %@ to %@:\n%@";

TextValue descriptionOf(const Sender* sender) { return sender ? TextValue{sender->description()} : std::nullopt; }

} // namespace

void LLMenuLet::switchAccounts(Sender* sender) {
    const auto* item = dynamic_cast<MenuItem*>(sender);
    if (!item) {
        services.log.write(filledForLog("ERROR! Sender %@  is not an NSMenuItem!", {descriptionOf(sender)}));
        return;
    }
    const std::optional<std::string> currentName = defaults->text(keys::currentUser);
    const std::string chosenName = item->title(); // the item may be gone from the menu when the wait is over
    if (!areValidUsers(currentName, chosenName)) return;

    const std::vector<std::string> apps = defaults->list(keys::apps);
    quitApplications(apps);
    parkItems(apps, *currentName);
    restoreItems(apps, chosenName);
    defaults->setText(keys::currentUser, chosenName);
    (void)defaults->synchronize(); // a failure is logged by the store, and tried again at its next occasion
    services.application.terminateIfAskedTo();
    launchAutostartApps();
    populateMenuWithAccounts();
}

bool LLMenuLet::areValidUsers(const std::optional<std::string>& currentName, const std::string& chosenName) {
    bool currentFound = false;
    bool chosenFound = false;
    for (const std::string& name : defaults->list(keys::accounts)) {
        currentFound = currentFound || name == currentName;
        chosenFound = chosenFound || name == chosenName;
    }
    const auto refuse = [&](const TextValue& name) {
        services.log.write(filledForLog("Error!  %@ is not a valid user!", {name}));
    };
    if (!currentFound) refuse(currentName);
    if (!chosenFound) refuse(chosenName);
    return currentFound && chosenFound;
}

void LLMenuLet::quitApplications(const std::vector<std::string>& apps) {
    using namespace std::chrono_literals;
    for (const std::string& app : apps) {
        // One after another, each awaited before the next is asked, and without a limit: an application that asks about
        // unsaved work holds the switch until it has its answer.
        for (const auto& instance : services.runningApplications.runningInstances(app)) {
            instance->terminate();
            while (true) {
                const auto instant = std::chrono::steady_clock::now() + 1s;
                if (instance->isTerminated() || !services.runLoop.runModeBeforeDate(instant)) break;
            }
        }
    }
}

void LLMenuLet::parkItems(const std::vector<std::string>& apps, const std::string& currentName) {
    const std::string folder = accountFolder(services.files.homeFolder(), currentName);
    for (const std::string& app : apps) {
        for (const std::string& item : defaults->list(app)) {
            if (!services.files.fileExists(item)) continue;
            const Status moved = services.files.moveItem(item, parkedPath(folder, item));
            // The log names the account's folder, not the place inside it, here and on the way back.
            if (!moved) services.log.write(filledForLog(moveFailed, {item, folder, moved.sentence()}));
        }
    }
}

void LLMenuLet::restoreItems(const std::vector<std::string>& apps, const std::string& chosenName) {
    const std::string folder = accountFolder(services.files.homeFolder(), chosenName);
    for (const std::string& app : apps) {
        for (const std::string& item : defaults->list(app)) {
            const std::string parked = parkedPath(folder, item);
            if (!services.files.fileExists(parked)) continue;
            const Status moved = services.files.moveItem(parked, item);
            if (!moved) services.log.write(filledForLog(moveFailed, {folder, item, moved.sentence()}));
        }
    }
}

void LLMenuLet::launchAutostartApps() {
    for (const std::string& app : defaults->list(keys::autostartApps)) {
        if (!services.launcher.launchApplication(app)) services.log.write(filledForLog("ERROR LAUNCHING %@", {app}));
    }
}

} // namespace letterloft
