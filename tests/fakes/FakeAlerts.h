#pragma once

#include "platform/Alerts.h"
#include "tests/fakes/FakeWindow.h"

#include <cassert>
#include <string>
#include <utility>

namespace letterloft {

// Attaches the alerts to a FakeWindow, where a test answers them.
class FakeAlerts final : public Alerts {
public:
    void beginCriticalAlertSheet(const CriticalAlert& alert, Window& window, Completion completion) override {
        auto* fake = dynamic_cast<FakeWindow*>(&window);
        assert(fake && !alert.messageText.empty() && !alert.defaultButton.empty());
        FakeSheet sheet{alert.messageText, alert.informativeText, {{alert.defaultButton, defaultReturn}}};
        if (alert.alternateButton) sheet.buttons.push_back({*alert.alternateButton, alternateReturn});
        if (alert.otherButton) sheet.buttons.push_back({*alert.otherButton, otherReturn});
        sheet.escapeCode = alert.otherButton ? otherReturn : defaultReturn;
        sheet.completion = std::move(completion);
        fake->attach(std::move(sheet));
    }

    void beginAlertSheet(const std::string& messageText, const std::string& button, Window& window) override {
        beginCriticalAlertSheet({.messageText = messageText, .defaultButton = button, .informativeText = {}}, window,
                                {});
    }
};

} // namespace letterloft
