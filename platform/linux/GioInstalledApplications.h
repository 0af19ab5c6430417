#pragma once

#include "platform/linux/InstalledApplications.h"

namespace letterloft {

// The desktop entries that GIO finds in the user's and the system's "applications" folders, without the hidden ones
// (Desktop Entry Specification: NoDisplay, Hidden, OnlyShowIn, TryExec).
class GioInstalledApplications final : public InstalledApplications {
public:
    std::vector<Application> all() const override;
};

} // namespace letterloft
