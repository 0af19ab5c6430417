#pragma once

#include "platform/linux/CopyProgress.h"

#include <chrono>
#include <memory>

namespace letterloft {

// Shows a copy that takes longer than two seconds as a desktop notification (Desktop Notifications Specification 1.2),
// brought up to date every second and withdrawn at the end. It has a connection and a main context of its own and never
// waits for the service but at the end, a second at most: no event of anybody else is delivered meanwhile. Without
// session bus or service there is no notice.
class CopyNotice final : public CopyProgress {
public:
    CopyNotice();
    ~CopyNotice() override;

    void began(const std::string& item, std::uint64_t totalBytes) override;
    void progressed(std::uint64_t bytes) override;
    void ended() override;

private:
    class Service;

    std::string name_;
    std::uint64_t totalBytes_ = 0;
    std::chrono::steady_clock::time_point nextShown_;
    std::unique_ptr<Service> service_;
};

} // namespace letterloft
