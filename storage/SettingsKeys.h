#pragma once

#include <string>
#include <vector>

// The settings keys, and the first-run defaults. The list of a managed application's items stands under the
// application's own path as the key.
namespace letterloft::keys {

inline constexpr const char* accounts = "Accounts";
inline constexpr const char* currentUser = "Current User";
inline constexpr const char* apps = "Apps";

// What is launched after a switch. The first run writes another key, without the blank, that nothing reads: nothing is
// launched until the user has ticked an application. The two stay different on purpose.
inline constexpr const char* autostartApps = "Autostart Apps";
inline constexpr const char* firstRunAutostartApps = "AutostartApps";

inline constexpr const char* defaultUser = "Default User";
inline constexpr const char* mailApplication = "/Applications/Mail.app";

// The items that are managed for mailApplication by default: absolute paths inside `home`.
std::vector<std::string> mailItems(const std::string& home);

} // namespace letterloft::keys
