#pragma once

#include "platform/Status.h"
#include "platform/linux/FileSystemCalls.h"

#include <set>
#include <string>

namespace letterloft {

// The folders whose lists of names have changed since they were last made durable. Paths are absolute, without a
// trailing slash.
class ChangedFolders {
public:
    explicit ChangedFolders(FileSystemCalls& calls) : calls_{calls} {}

    // A name has come or gone in the folder.
    void add(const std::string& folder) { folders_.insert(folder); }

    // `from` now stands at `to`, and with it the changed folders inside it; the two folders have changed.
    void addMove(const std::string& from, const std::string& to);

    // Syncs each folder once. One that is no longer there needs no sync. What fails is tried again at the next call.
    Status sync();

private:
    Status syncFolder(const std::string& folder);

    FileSystemCalls& calls_;
    std::set<std::string> folders_;
};

// The folder that a path's last component lies in.
std::string parentFolder(const std::string& path);

} // namespace letterloft
