#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>

namespace letterloft {

// A process and no later one of the same number. The start time is in clock ticks since the boot (proc(5), stat).
struct ProcessIdentity {
    pid_t pid = 0;
    std::uint64_t startTime = 0;

    // None if no such process is there; a zombie still is.
    static std::optional<ProcessIdentity> ofProcess(pid_t pid);

    bool operator==(const ProcessIdentity&) const = default;
};

// One process, held by a descriptor (pidfd_open(2)), so that nothing done here can reach another process that has been
// given its number since. It need not be a child of ours. Movable; letting go of it changes nothing for the process.
class HeldProcess {
public:
    // None if the process is gone or its number belongs to another one by now: the identity is read again once the
    // descriptor is open. Where the system gives no descriptor, for want of them, the process is held by its start time
    // alone: whether it has ended is still told, but no signal is sent to it.
    static std::optional<HeldProcess> hold(const ProcessIdentity& identity);

    HeldProcess(HeldProcess&& other) noexcept;
    HeldProcess& operator=(HeldProcess&& other) noexcept;
    ~HeldProcess();

    pid_t pid() const { return identity_.pid; }
    const ProcessIdentity& identity() const { return identity_; }

    // Readable from the end of the process on, and ever after. Stays ours. -1 where there is none.
    int descriptor() const { return descriptor_; }

    // With all of its threads; a zombie has ended.
    bool hasEnded() const;

    // What SIGTERM would do to it now. Deadly also when that can't be told.
    enum class SigtermEffect { handled, ignored, deadly };
    SigtermEffect sigtermEffect() const;

    // Whether job control has stopped it; one that a debugger holds does not count.
    bool isStopped() const;

    // False if it has ended, there is no descriptor, or the signal is not ours to send.
    bool sendSignal(int signal) const;

    // Sends SIGTERM, and SIGCONT to a stopped process, which would not see it otherwise.
    bool sendSigterm() const;

private:
    HeldProcess(const ProcessIdentity& identity, int descriptor) : identity_{identity}, descriptor_{descriptor} {}

    ProcessIdentity identity_;
    int descriptor_ = -1;
};

} // namespace letterloft
