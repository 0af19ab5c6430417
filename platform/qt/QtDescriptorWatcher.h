#pragma once

#include "platform/linux/DescriptorWatcher.h"

namespace letterloft {

// Watches through Qt's event loop.
class QtDescriptorWatcher final : public DescriptorWatcher {
public:
    std::unique_ptr<Watch> watchReadable(int descriptor, std::function<void()> handler) override;
};

} // namespace letterloft
