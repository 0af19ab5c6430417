#pragma once

#include "platform/Log.h"
#include "platform/linux/FolderTrail.h"
#include "platform/linux/MoveMarks.h"
#include "platform/linux/TreeCopy.h"
#include "platform/linux/TreeWalk.h"

#include <string>

namespace letterloft {

// Says what of a tree is safe in its copy.
class Witness {
public:
    virtual ~Witness() = default;

    // Whether the folder is there too; if so, what is asked next lies in it, until it is left.
    virtual bool enter(const TreeEntry& entry, const struct statx& info) = 0;
    virtual void leave() = 0;

    // Whether the thing, which is no folder, is there too, and as it is now.
    virtual bool holds(const TreeEntry& entry, const struct statx& info) = 0;
};

// Trusts what was noted while it was copied.
class NotedWitness final : public Witness {
public:
    explicit NotedWitness(const CopiedItems& items) : items_{items} {}

    bool enter(const TreeEntry&, const struct statx& info) override { return items_.isCopied(info); }
    void leave() override {}
    bool holds(const TreeEntry&, const struct statx& info) override { return items_.isCopied(info); }

private:
    const CopiedItems& items_;
};

// Looks at the copy: the same name in the same place, of equal type, size and time of last change.
class CopyWitness final : public Witness {
public:
    // The folder outlives this.
    CopyWitness(FileSystemCalls& calls, int folder, std::string name)
        : calls_{calls}, folder_{folder}, name_{std::move(name)}, trail_{calls} {}

    bool enter(const TreeEntry& entry, const struct statx& info) override;
    void leave() override;
    bool holds(const TreeEntry& entry, const struct statx& info) override;

private:
    FileSystemCalls& calls_;
    int folder_;
    std::string name_;
    FolderTrail trail_;
    bool lost_ = false;
};

// Removes the source of a move across file systems once its copy is complete and durable: first it is set aside under
// its mark, then all of it that the witness knows to be safe and that no program holds open is removed, thing by thing.
// What stays goes back to the item's old name if that is free; the log names it in any case.
class SourceRemoval {
public:
    SourceRemoval(Log& log, FileSystemCalls& calls, ItemPlace source, MoveMark mark, std::string target)
        : log_{log}, calls_{calls}, source_{std::move(source)}, mark_{std::move(mark)}, target_{std::move(target)} {}

    void setAsideAndRemove(Witness& witness);

    // The same for what has been set aside already.
    void removeAside(Witness& witness);

    // The move is over.
    void removeNote();

private:
    void putBack(const std::string& whatStays);

    Log& log_;
    FileSystemCalls& calls_;
    ItemPlace source_;
    MoveMark mark_;
    std::string target_;
};

} // namespace letterloft
