#pragma once

#include "platform/linux/FileSystemCalls.h"

namespace letterloft {

// rename(2), answer and errno included, that replaces nothing: not an empty folder, not a dangling link. Where the file
// system can't promise that in one call it is done by hand.
int renameNoReplace(FileSystemCalls& calls, int fromFolder, const char* from, int toFolder, const char* to);

} // namespace letterloft
