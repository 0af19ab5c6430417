#pragma once

#include "platform/Status.h"
#include "platform/linux/FileSystemCalls.h"

#include <string>

namespace letterloft {

// Creates what is missing of the folder at `path` (absolute) and of those above it, durably and with mode 0700 whatever
// the umask; folders that are there, and links to folders, stay as they are. A failure names the folder that could not
// be made.
Status createPrivateFolders(FileSystemCalls& calls, const std::string& path);

} // namespace letterloft
