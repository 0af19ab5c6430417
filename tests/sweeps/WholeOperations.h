#pragma once

#include "platform/linux/PlistSettingsStore.h"
#include "platform/linux/PosixFileManager.h"
#include "tests/contract/files/ScratchFolders.h"
#include "tests/controllers/World.h"
#include "tests/fakes/FakeCopyProgress.h"
#include "tests/sweeps/FaultyCalls.h"

#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace letterloft {

// The accounts "A", which is current, "B" and "C" on two file systems. Two applications have six items; two of those
// live on the second file system, everything else, with what is parked, on the first.
class ManagedHome {
public:
    // With `backsUpFar`, "OldData" leads to the second file system.
    ManagedHome(std::string near, std::string far, bool backsUpFar);

    // Makes everything anew, with nothing left of what was there.
    void make() const;

    std::string folder() const { return near_ + "/home"; }
    std::string settingsFile() const { return near_ + "/settings/settings.plist"; }
    std::string settings() const { return contentsOf(settingsFile()); }
    std::string currentUser() const; // as the settings file has it

    // Every file and link, wherever it stands: what it holds, with mode, owner and time.
    using Places = std::map<std::string, std::string>;
    Places places() const;

    // The same without the places, and without what is hidden under a mark.
    using Files = std::multiset<std::string>;
    static Files filesOf(const Places& places);
    Files liveFiles() const;

private:
    std::string near_;
    std::string far_;
    bool backsUpFar_;
};

struct RealDisk {
    RealDisk(const ManagedHome& home, FileSystemCalls& calls);

    FakeLog diskLog;
    FakeCopyProgress progress;
    PosixFileManager files;
    std::unique_ptr<PlistSettingsStore> settings;
};

// The controllers over real settings and real files, started as main starts them.
struct RealProgram : RealDisk, ProgramOverFakes {
    RealProgram(const ManagedHome& home, FileSystemCalls& calls);
};

struct Operation {
    const char* name;
    void (*run)(ProgramOverFakes& program); // the manager is open
    bool isReset = false;                   // so that what is parked may go
    bool backsUpFar = false;
};
inline void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

extern const std::vector<Operation> wholeOperations;

// One operation of the program that goes wrong in many ways, always from the same beginning.
class OperationTrial {
public:
    // Runs it once to its end, to know what is to be expected.
    OperationTrial(const Operation& operation, const std::string& near, const std::string& far);

    int points() const { return points_; } // its system calls
    const std::vector<int>& cuttable() const { return cuttable_; }
    const ManagedHome& home() const { return home_; }

    // Runs it from the beginning in a process of its own that dies before that call; false if it came to its end.
    bool diesAt(int at, bool syncs = false) const;

    // The same with the start of the program, from wherever things are.
    bool startDiesAt(int at) const;

    // Runs it from the beginning with a fault at that call. With failsFromThenOn the disk stays as a program leaves it
    // that dies there; with fails, some moves may not have been made, and what could not be removed may be there twice,
    // and the log names it.
    struct Outcome {
        bool mayLackMoves = false;
        bool mayHaveCopies = false;
    };
    Outcome failsAt(FaultyCalls::Fault fault, int at) const;

    // Every file is there, and the settings are the old or the new ones, which are not newer than the moves.
    void expectNothingLost(const Outcome& outcome) const;
    void expectNothingLost() const { expectNothingLost({}); }

    // It has come to its end.
    void expectDone() const;

    // After a new start every file is there once; and the next switches, of which so many are tried, run to their ends.
    void expectRecovery(int switches, const Outcome& outcome) const;
    void expectRecovery(int switches) const { expectRecovery(switches, {}); }

private:
    void expectFiles(const Outcome& outcome) const;
    void expectNextSwitches(RealProgram& program, int switches, const Outcome& outcome) const;
    void expectNextReset(RealProgram& program, const Outcome& outcome) const;

    Operation operation_;
    ManagedHome home_;
    int points_ = 0;
    std::vector<int> cuttable_;
    ManagedHome::Files required_;
    ManagedHome::Files allowed_;
    std::string settingsBefore_;
    std::string settingsAfter_;
    ManagedHome::Places placesAfter_;
};

} // namespace letterloft
