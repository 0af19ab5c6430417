#pragma once

#include "platform/linux/CopyProgress.h"

#include <cassert>
#include <vector>

namespace letterloft {

// Copies are told of one at a time, and never have more bytes than were announced.
class FakeCopyProgress final : public CopyProgress {
public:
    void began(const std::string& item, std::uint64_t) override {
        assert(!open);
        open = true;
        items.push_back(item);
        bytes = 0;
    }
    void progressed(std::uint64_t soFar) override {
        assert(open && soFar >= bytes);
        bytes = soFar;
    }
    void ended() override {
        assert(open);
        open = false;
    }

    std::vector<std::string> items;
    std::uint64_t bytes = 0;
    bool open = false;
};

} // namespace letterloft
