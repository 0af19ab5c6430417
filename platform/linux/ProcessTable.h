#pragma once

#include "platform/linux/HeldProcess.h"
#include "platform/linux/ProgramFiles.h"

#include <sys/types.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace letterloft {

// One process as it was when the table was read. Texts are bytes, and what its owner can write (arguments,
// environment) may be anything.
struct Process {
    ProcessIdentity identity;
    pid_t parent = 0;
    pid_t group = 0;
    pid_t session = 0;

    // Where the executable's file was when it was last seen under a name; empty if the kernel does not tell.
    std::string executable;
    std::optional<ProgramFileIdentity> executableIdentity;
    bool executableIsGone = false; // removed or replaced since, as by an upgrade
    bool isClosed = false;         // may not be looked into (prctl(2), PR_SET_DUMPABLE): told by its own name alone

    std::vector<std::string> arguments; // the program's own name first

    // GIO_LAUNCHED_DESKTOP_FILE where GIO_LAUNCHED_DESKTOP_FILE_PID is this process's own number, so that it was not
    // inherited.
    std::string launchMark;
    pid_t launchMarkPid = 0; // as it stands, inherited or not
    std::string appImage;    // APPIMAGE where the executable lies in APPDIR

    bool operator==(const ProcessIdentity& other) const { return identity == other; }
};

// The processes of one user, read in one walk over /proc; those that have ended (zombies) left out, and those that
// vanish meanwhile. A value: what happens later does not change it.
class ProcessTable {
public:
    using StartTimes = std::map<pid_t, std::uint64_t>; // of processes, by their numbers

    // `root` is where proc(5) is mounted. Those `known` are left out: no more than their start time is read.
    explicit ProcessTable(uid_t user, std::string root = "/proc", const StartTimes& known = {});

    // False: nothing is known of any process.
    bool couldBeRead() const { return couldBeRead_; }

    const std::map<pid_t, Process>& processes() const { return processes_; }

    // All that the walk came upon, whoever they belong to.
    const StartTimes& seen() const { return seen_; }

    const Process* find(pid_t pid) const;
    std::vector<const Process*> childrenOf(pid_t pid) const;

    // From the parent upwards, those of this table only; each once even if the numbers go round in a circle.
    std::vector<const Process*> ancestorsOf(const Process& process) const;

    // The process and all it descends from, whoever they belong to.
    std::set<pid_t> lineageOf(pid_t pid) const;

    // Asked of the system when needed; none if the process has ended since.
    std::optional<std::string> controlGroup(const Process& process) const;

    // The folders that a relative path on its command line may have been meant from.
    std::vector<std::string> startFolders(const Process& process) const;

    // The sandboxed application the process runs in (flatpak-metadata(5)); empty if in none.
    std::string flatpakName(const Process& process) const;

    // Which of that application's sandboxes it is.
    std::string flatpakInstance(const Process& process) const;

private:
    std::optional<Process> read(pid_t pid, uid_t user, const StartTimes& known);
    std::string file(pid_t pid, const char* name) const;
    std::string flatpakInfo(const Process& process, std::string_view key) const;

    std::string root_;
    bool couldBeRead_ = false;
    std::map<pid_t, Process> processes_;
    StartTimes seen_;
};

} // namespace letterloft
