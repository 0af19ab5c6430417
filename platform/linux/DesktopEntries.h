#pragma once

#include "platform/linux/ApplicationEntry.h"

#include <set>
#include <string>
#include <vector>

namespace letterloft {

// The installed desktop entries (XDG Base Directory Specification: "applications" in the data folders) whose
// StartupWMClass is one of the names. Read anew at each call.
std::vector<ApplicationEntry> desktopEntriesOfWindows(const std::set<std::string>& classNames);

} // namespace letterloft
