#include "platform/linux/TreeRemoval.h"

#include "platform/linux/FileErrors.h"
#include "platform/linux/TreeWalk.h"

#include <cerrno>

namespace letterloft {

namespace {

class Removal final : public TreeWalk::Visitor {
public:
    Removal(FileSystemCalls& calls, const TreeWalk& walk, ReadOnlyFolders readOnlyFolders)
        : calls_{calls}, walk_{walk}, readOnlyFolders_{readOnlyFolders} {}

    Status visit(int folder, const TreeEntry& entry) override { return unlink(folder, entry, 0); }

    Result<Way> enter(int, const TreeEntry&, int opened, const struct statx& info) override {
        const bool closedToUs = (info.stx_mode & S_IRWXU) != S_IRWXU;
        if (closedToUs && readOnlyFolders_ == ReadOnlyFolders::madeWritable) calls_.fchmod(opened, S_IRWXU);
        return Way::into;
    }

    Status leave(int folder, const TreeEntry& entry, int, const struct statx&) override {
        return unlink(folder, entry, AT_REMOVEDIR);
    }

private:
    Status unlink(int folder, const TreeEntry& entry, int flags) {
        // What somebody else has removed meanwhile is removed.
        if (calls_.unlinkat(folder, entry.name, flags) == 0 || errno == ENOENT) return Status::ok();
        return systemFailure("%@ can't be removed", walk_.pathOf(entry));
    }

    FileSystemCalls& calls_;
    const TreeWalk& walk_;
    ReadOnlyFolders readOnlyFolders_;
};

} // namespace

Status removeTree(FileSystemCalls& calls, int folder, const std::string& folderPath, const std::string& name,
                  ReadOnlyFolders readOnlyFolders) {
    TreeWalk walk{calls, folderPath};
    Removal removal{calls, walk, readOnlyFolders};
    return walk.run(folder, name, removal);
}

} // namespace letterloft
