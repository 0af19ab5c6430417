#pragma once

#include "platform/Log.h"
#include "platform/Status.h"
#include "platform/linux/CopyProgress.h"
#include "platform/linux/FileSystemCalls.h"
#include "platform/linux/MoveMarks.h"
#include "platform/linux/TreeCopy.h"

#include <string>

namespace letterloft {

// One move from one file system to another. Before the copy bears the item's name it is complete and durable; before
// anything of the source goes, so is that name.
class MoveAcross {
public:
    // Absolute paths without trailing slashes.
    MoveAcross(Log& log, FileSystemCalls& calls, CopyProgress& progress, std::string from, std::string to);

    // A failure leaves the source whole and nothing at the target, and says why without naming the two paths.
    Status run();

private:
    Status open();
    Status checkRoom(const CopiedItems& items) const;
    Status writeNote();
    Status makeDurable();
    Status publish();
    void retract();

    Log& log_;
    FileSystemCalls& calls_;
    CopyProgress& progress_;
    std::string from_;
    std::string to_;
    MoveMark mark_;
    OpenFile sourceFolder_;
    OpenFile targetFolder_;
    ItemPlace source_;
    ItemPlace staging_;
    std::string targetName_;
};

} // namespace letterloft
