#include "platform/linux/SystemCalendar.h"

#include <ctime>

namespace letterloft {

Calendar::Components SystemCalendar::currentDate() const {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    tzset(); // localtime_r need not look at a time zone that changed since the start
    localtime_r(&now, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

} // namespace letterloft
