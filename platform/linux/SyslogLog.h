#pragma once

#include "platform/Log.h"

namespace letterloft {

// syslog(3), and so the journal where there is one, and standard error.
class SyslogLog final : public Log {
public:
    SyslogLog();
    ~SyslogLog() override;
    SyslogLog(const SyslogLog&) = delete;
    SyslogLog& operator=(const SyslogLog&) = delete;

    void write(const std::string& message) override;
};

} // namespace letterloft
