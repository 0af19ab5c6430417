#pragma once

#include "platform/Log.h"
#include "platform/linux/FileSystemCalls.h"
#include "platform/linux/MoveMarks.h"

#include <string>
#include <vector>

namespace letterloft {

// Settles moves across file systems that were broken off, by their marks (MoveMarks.h). Names that are not marks are
// never touched.
class InterruptedMoves {
public:
    InterruptedMoves(Log& log, FileSystemCalls& calls) : log_{log}, calls_{calls} {}

    // Looks into the folders themselves, not below. Absolute paths; missing folders are passed over.
    void settle(const std::vector<std::string>& folders);

private:
    struct Place {
        std::string folder;
        FoundMark found;
    };
    enum class Presence { there, missing, unknown };

    void findIn(const std::string& folder, std::vector<Place>& places);
    void settleNote(const Place& place);
    bool isTrusted(int folder, const std::string& note);
    void settleByNote(const Place& place, int folder, const MoveNote& note);
    bool hadSetAside(int folder, const MoveMark& mark);
    void settleAside(const Place& place);
    void removeStaging(const std::string& folderPath, const MoveMark& mark);
    void putBack(const Place& place, int folder, const MoveNote& note);
    Presence presence(int folder, const std::string& name);

    Log& log_;
    FileSystemCalls& calls_;
};

} // namespace letterloft
