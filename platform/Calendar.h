#pragma once

namespace letterloft {

// The current instant in the user's calendar and time zone. Owned by main; outlives the controllers.
class Calendar {
public:
    virtual ~Calendar() = default;

    // Month and day count from 1, hour, minute and second from 0; the year is the calendar's own, unabridged.
    struct Components {
        int year = 0;
        int month = 0;
        int day = 0;
        int hour = 0;
        int minute = 0;
        int second = 0;
    };

    virtual Components currentDate() const = 0;
};

} // namespace letterloft
