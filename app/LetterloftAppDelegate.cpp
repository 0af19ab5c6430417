#include "app/LetterloftAppDelegate.h"

#include "storage/SettingsKeys.h"

#include <string>
#include <vector>

namespace letterloft {

LetterloftAppDelegate::LetterloftAppDelegate(SettingsStore& store, const FileManager& fileManager)
    : defaults{store}, files{fileManager} {}

void LetterloftAppDelegate::applicationDidFinishLaunching() {
    if (defaults.hasValue(keys::apps)) return;
    const std::vector<std::string> apps{keys::mailApplication};
    defaults.setList(keys::apps, apps);
    defaults.setList(apps.front(), keys::mailItems(files.homeFolder()));
    defaults.setList(keys::firstRunAutostartApps, apps);
    // A failure is the store's to log; the defaults stand in memory and reach the disk at the next occasion.
    (void)defaults.synchronize();
}

} // namespace letterloft
