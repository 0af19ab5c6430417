#pragma once

#include "platform/linux/CopyProgress.h"

#include <cassert>

namespace letterloft {

// Copies are told of one at a time, and never have more bytes than were announced.
class FakeCopyProgress final : public CopyProgress {
public:
    void began(const std::string&, std::uint64_t) override {
        assert(!open);
        open = true;
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

    std::uint64_t bytes = 0;
    bool open = false;
};

} // namespace letterloft
