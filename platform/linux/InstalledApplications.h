#pragma once

#include <string>
#include <vector>

namespace letterloft {

// The applications that this desktop shows in its menus. Owned by main; outlives the choosers.
class InstalledApplications {
public:
    virtual ~InstalledApplications() = default;

    struct Application {
        std::string name;        // as the user's language has it
        std::string icon;        // a name in the icon theme or an absolute path; empty for none
        std::string desktopFile; // absolute and UTF-8
    };

    // Read anew at each call; in no order.
    virtual std::vector<Application> all() const = 0;
};

} // namespace letterloft
