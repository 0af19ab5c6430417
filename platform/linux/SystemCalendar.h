#pragma once

#include "platform/Calendar.h"

namespace letterloft {

// The C library's calendar, which is the Gregorian one, in the local time zone.
class SystemCalendar final : public Calendar {
public:
    Components currentDate() const override;
};

} // namespace letterloft
