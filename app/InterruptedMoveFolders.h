#pragma once

#include "platform/FileManager.h"
#include "platform/SettingsStore.h"

#include <string>
#include <vector>

namespace letterloft {

// Every folder that some move may have left something in when the program died in it: where managed items live, where
// they are parked, and where backups go. In no order; a folder may be missing, or stand there twice.
std::vector<std::string> interruptedMoveFolders(const SettingsStore& defaults, const FileManager& files);

} // namespace letterloft
