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
        FakeSheet sheet;
        sheet.messageText = alert.messageText;
        sheet.informativeText = alert.informativeText;
        sheet.buttons.push_back({alert.defaultButton, defaultReturn});
        if (alert.alternateButton) sheet.buttons.push_back({*alert.alternateButton, alternateReturn});
        if (alert.otherButton) sheet.buttons.push_back({*alert.otherButton, otherReturn});
        sheet.escapeCode = sheet.buttons.size() == 1 ? defaultReturn : otherReturn;
        sheet.completion = std::move(completion);
        attach(std::move(sheet), window);
    }

    void beginAlertSheet(const std::string& messageText, const std::string& button, Window& window) override {
        FakeSheet sheet;
        sheet.messageText = messageText;
        sheet.buttons.push_back({button, defaultReturn});
        sheet.escapeCode = defaultReturn;
        attach(std::move(sheet), window);
    }

private:
    void attach(FakeSheet sheet, Window& window) {
        auto* fake = dynamic_cast<FakeWindow*>(&window);
        assert(fake && !sheet.messageText.empty() && !sheet.buttons.front().title.empty());
        fake->attach(std::move(sheet));
    }
};

} // namespace letterloft
