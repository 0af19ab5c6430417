#pragma once

#include "platform/Status.h"
#include "platform/linux/FileSystemCalls.h"

#include <string>
#include <vector>

namespace letterloft {

// The open folders from the top of a tree down to where the work is, however deep: only the innermost are kept open,
// the others are found again through "..", and must then still be the same ones. No path is ever looked up twice.
class FolderTrail {
public:
    // So many are kept open.
    static constexpr std::size_t keptOpen = 16;

    explicit FolderTrail(FileSystemCalls& calls) : calls_{calls} {}

    std::size_t depth() const { return levels_.size(); }
    int innermost() const { return levels_.back().folder.get(); }
    int folderAt(std::size_t depth) const { return levels_[depth].folder.get(); }
    const FileIdentity& identity() const { return levels_.back().identity; }

    void enter(OpenFile folder, const std::string& name, const FileIdentity& identity);

    // Hands over the folder that was innermost. Fails when the one above is no longer the one the trail came through.
    Status leave(OpenFile& left);

    // The names from the top to the innermost folder, with slashes between; for messages.
    std::string path() const;

private:
    struct Level {
        OpenFile folder;
        std::string name;
        FileIdentity identity;
    };

    FileSystemCalls& calls_;
    std::vector<Level> levels_;
};

} // namespace letterloft
