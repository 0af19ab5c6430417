#pragma once

#include "platform/linux/FileSystemCalls.h"

#include <string>
#include <vector>

namespace letterloft {

// Paths that have to go on leading where they lead: they, the folders on the way to them, and the links on the way with
// what those lead through, must not be moved.
class ProtectedPaths {
public:
    // Absolute; they need not exist.
    ProtectedPaths(FileSystemCalls& calls, std::vector<std::string> paths) : calls_{calls}, paths_{std::move(paths)} {}

    // Whether the file is one of those, by device and inode. The paths are followed anew after `look`; in between the
    // answers are those of the first question.
    bool include(const FileIdentity& file);
    void look() { looked_ = false; }

private:
    void follow(const std::string& path);
    bool followLink(int folder, const std::string& name, std::string& rest);

    FileSystemCalls& calls_;
    std::vector<std::string> paths_;
    std::vector<FileIdentity> identities_;
    bool looked_ = false;
};

} // namespace letterloft
