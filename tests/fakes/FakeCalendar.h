#pragma once

#include "platform/Calendar.h"

namespace letterloft {

// A clock that stands still, or goes on by some seconds each time it is looked at (within one minute).
class FakeCalendar final : public Calendar {
public:
    Components currentDate() const override {
        const Components shown = now;
        now.second += secondsPerLook;
        return shown;
    }

    mutable Components now{2011, 3, 5, 9, 7, 3};
    int secondsPerLook = 0;
};

} // namespace letterloft
