#pragma once

#include "platform/FileManager.h"
#include "platform/SettingsStore.h"

namespace letterloft {

// Writes the first-run defaults; has no other duty.
class LetterloftAppDelegate final {
public:
    LetterloftAppDelegate(SettingsStore& defaults, const FileManager& files);

    // To be called once at each start, when the menu has been built. Any value under "Apps", an empty list included,
    // means that this is not the first run, and nothing is written.
    void applicationDidFinishLaunching();

private:
    SettingsStore& defaults;
    const FileManager& files;
};

} // namespace letterloft
