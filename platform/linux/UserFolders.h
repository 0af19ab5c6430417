#pragma once

#include "platform/Status.h"

#include <string>

namespace letterloft {

// The user's folders as the environment gives them (XDG Base Directory Specification 0.8). Read once, at the start:
// what a test or a launched program does to the environment later changes nothing. Absolute paths without a trailing
// slash; nothing is looked up or created.
class UserFolders final {
public:
    // HOME decides where it is absolute, else the password file. Fails when neither names a home.
    static Result<UserFolders> fromEnvironment();

    const std::string& home() const { return home_; }

    // XDG_CONFIG_HOME where it is absolute, else ".config" in the home folder.
    const std::string& configuration() const { return configuration_; }

    // The property list that holds the settings.
    std::string settingsFile() const;

    // What one running program of this user holds locked. It lies beside the support folder, because the reset deletes
    // that folder whole.
    std::string lockFile() const;

private:
    UserFolders(std::string home, std::string configuration);

    std::string home_;
    std::string configuration_;
};

} // namespace letterloft
