#pragma once

#include "platform/RunLoop.h"

namespace letterloft {

// Qt's event loop. It can always wait, so it never answers that it could not.
class QtRunLoop final : public RunLoop {
public:
    bool runModeBeforeDate(std::chrono::steady_clock::time_point instant) override;
};

} // namespace letterloft
