#include "platform/linux/FolderTrail.h"

#include "platform/linux/FileErrors.h"

namespace letterloft {

void FolderTrail::enter(OpenFile folder, const std::string& name, const FileIdentity& identity) {
    levels_.push_back({std::move(folder), name, identity});
    if (levels_.size() > keptOpen) levels_[levels_.size() - keptOpen - 1].folder.close();
}

Status FolderTrail::leave(OpenFile& left) {
    if (levels_.size() >= 2 && !levels_[levels_.size() - 2].folder) {
        Level& above = levels_[levels_.size() - 2];
        OpenFile folder = openForReading(calls_, innermost(), "..", O_DIRECTORY);
        struct statx info {};
        if (!folder || calls_.statx(folder.get(), "", AT_EMPTY_PATH, &info) != 0)
            return systemFailure("%@ can't be opened again", path() + "/..");
        if (FileIdentity{info} != above.identity) return failure("%@ has been moved meanwhile", path());
        above.folder = std::move(folder);
    }
    left = std::move(levels_.back().folder);
    levels_.pop_back();
    return Status::ok();
}

std::string FolderTrail::path() const {
    std::string path;
    for (const Level& level : levels_)
        path += (path.empty() ? "" : "/") + level.name;
    return path;
}

} // namespace letterloft
