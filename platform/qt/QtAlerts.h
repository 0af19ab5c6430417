#pragma once

#include "platform/Alerts.h"

namespace letterloft {

// Alerts as window-modal message boxes. The windows given are QtWindows.
class QtAlerts final : public Alerts {
public:
    void beginCriticalAlertSheet(const CriticalAlert& alert, Window& window, Completion completion) override;
    void beginAlertSheet(const std::string& messageText, const std::string& button, Window& window) override;
};

} // namespace letterloft
