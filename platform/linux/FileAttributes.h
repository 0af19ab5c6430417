#pragma once

#include "platform/Log.h"
#include "platform/linux/FileSystemCalls.h"

#include <set>
#include <string>
#include <vector>

namespace letterloft {

// Gives copies what their originals have besides contents: owner, user attributes, access control lists, mode, times.
// What the copy can't have is logged once for each kind; only an error with a mode or a time is a failure (-1 with
// errno). The attributes of links and fifos are set by name.
class FileAttributes {
public:
    // `item` is what is being copied, for the log.
    FileAttributes(Log& log, FileSystemCalls& calls, std::string item);

    // Takes away what the topmost copy has inherited from the folder it was made in, and says whether all of it went.
    // What is made inside of it afterwards belongs to this process's user and group.
    bool removeInherited(int copy);

    // `made` says with which mode the copy was made.
    int copy(int original, int copy, const struct statx& info, mode_t made);
    int copyByName(int folder, const char* name, const struct statx& info);

private:
    mode_t modeFor(const struct statx& info, bool owned) const;
    void copyExtended(int original, int copy);
    void copyExtended(int original, int copy, const char* name);
    bool setOwner(int folder, const char* name, int flags, const struct statx& info);
    void logLoss(const std::string& what, int error);

    Log& log_;
    FileSystemCalls& calls_;
    std::string item_;
    uid_t user_;
    gid_t group_;
    std::vector<char> names_;
    std::vector<char> value_;
    std::set<std::string> logged_;
};

} // namespace letterloft
