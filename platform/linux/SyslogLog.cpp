#include "platform/linux/SyslogLog.h"

#include <cstdio>
#include <syslog.h>

namespace letterloft {

SyslogLog::SyslogLog() { openlog("letterloft", LOG_PID, LOG_USER); }

SyslogLog::~SyslogLog() { closelog(); }

void SyslogLog::write(const std::string& message) {
    syslog(LOG_NOTICE, "%s", message.c_str());
    // One call, so that a line is not torn by what other processes write to the same place.
    const std::string line = "letterloft: " + message + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace letterloft
