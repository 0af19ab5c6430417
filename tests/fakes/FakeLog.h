#pragma once

#include "platform/Log.h"

#include <string>
#include <vector>

namespace letterloft {

// Keeps every message, oldest first.
class FakeLog final : public Log {
public:
    void write(const std::string& message) override { lines.push_back(message); }

    std::vector<std::string> lines;
};

} // namespace letterloft
