#include "platform/linux/InterruptedMoves.h"

#include "platform/linux/ChangedFolders.h"
#include "platform/linux/FileErrors.h"
#include "platform/linux/RenameNoReplace.h"
#include "platform/linux/SourceRemoval.h"
#include "platform/linux/TreeRemoval.h"
#include "platform/linux/TreeWalk.h"
#include "storage/SupportFolder.h"
#include "storage/Text.h"

#include <array>
#include <cerrno>
#include <climits>
#include <set>
#include <unistd.h>

namespace letterloft {

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

} // namespace

// The notes first: whether a staging tree is still there tells how far its move had come.
void InterruptedMoves::settle(const std::vector<std::string>& folders) {
    std::set<std::string> seen;
    std::vector<Place> places;
    for (const std::string& folder : folders)
        if (seen.insert(joined(folder, "")).second) findIn(joined(folder, ""), places);
    for (const Place& place : places)
        if (place.found.kind == MoveMark::Kind::note) settleNote(place);
    for (const Place& place : places) {
        if (place.found.kind == MoveMark::Kind::staging) removeStaging(place.folder, place.found.mark);
        if (place.found.kind == MoveMark::Kind::aside) settleAside(place);
    }
}

void InterruptedMoves::findIn(const std::string& folder, std::vector<Place>& places) {
    const OpenFile opened{calls_, calls_.openat(AT_FDCWD, folder.c_str(), folderFlags, 0)};
    if (!opened && (errno == ENOENT || errno == ENOTDIR)) return;
    FolderListing listing{calls_};
    TreeEntry entry{};
    auto next = opened ? FolderListing::Next::entry : FolderListing::Next::failed;
    while (next == FolderListing::Next::entry &&
           (next = listing.next(opened.get(), entry)) == FolderListing::Next::entry)
        if (auto found = moveMarkNamed(entry.name)) places.push_back({folder, *found});
    if (next == FolderListing::Next::failed)
        log_.write(filledForLog("%@ can't be looked through for interrupted moves: %@", {folder, systemReason(errno)}));
}

void InterruptedMoves::settleNote(const Place& place) {
    const OpenFile folder{calls_, calls_.openat(AT_FDCWD, place.folder.c_str(), folderFlags, 0)};
    if (!folder) return;
    std::array<char, PATH_MAX> text; // NOLINT(cppcoreguidelines-pro-type-member-init)
    const std::string name = place.found.mark.name(MoveMark::Kind::note);
    const ssize_t size = calls_.readlinkat(folder.get(), name.c_str(), text.data(), text.size());
    if (size < 0) return; // no link: not ours
    if (!isTrusted(folder.get(), name)) {
        log_.write(filledForLog("%@ comes from another user and is not obeyed.", {joined(place.folder, name)}));
        return;
    }
    if (auto note = MoveNote::fromText({text.data(), static_cast<std::size_t>(size)}))
        settleByNote(place, folder.get(), *note);
}

// Where others may write anybody can leave a note, and so have removed what looks like its copy elsewhere. The owner of
// the folder could do so in any case; some network file systems show one that is not ours for all there is.
bool InterruptedMoves::isTrusted(int folder, const std::string& note) {
    struct statx info {};
    struct statx above {};
    if (calls_.statx(folder, note.c_str(), AT_SYMLINK_NOFOLLOW, &info) != 0) return false;
    if (info.stx_uid == geteuid()) return true;
    if (calls_.statx(folder, "", AT_EMPTY_PATH, &above) != 0) return false;
    return info.stx_uid == above.stx_uid && (above.stx_mode & (S_IWGRP | S_IWOTH)) == 0;
}

void InterruptedMoves::settleByNote(const Place& place, int folder, const MoveNote& note) {
    const MoveMark& mark = place.found.mark;
    const std::string targetPath = parentFolder(note.target);
    const std::string targetName = lastComponent(note.target);
    const OpenFile target{calls_, calls_.openat(AT_FDCWD, targetPath.c_str(), folderFlags, 0)};
    const bool noTarget = !target && (errno == ENOENT || errno == ENOTDIR);
    const auto atTarget = [&](const std::string& name) {
        return noTarget ? Presence::missing : target ? presence(target.get(), name) : Presence::unknown;
    };
    const Presence copy = atTarget(targetName);
    const Presence staging = atTarget(mark.name(MoveMark::Kind::staging));
    const Presence aside = presence(folder, mark.name(MoveMark::Kind::aside));
    if (copy == Presence::unknown || staging == Presence::unknown || aside == Presence::unknown) {
        log_.write(filledForLog("The interrupted move of %@ to %@ can't be settled: its target can't be looked at.",
                                {joined(place.folder, note.item), note.target}));
        return;
    }
    if (aside == Presence::there && copy == Presence::missing) return putBack(place, folder, note);
    SourceRemoval removal{log_, calls_, {folder, place.folder, note.item}, mark, note.target};
    if (staging == Presence::there) removeStaging(targetPath, mark);
    // With neither a staging tree nor a copy, or with the first, the move had not come to the source yet.
    if (staging == Presence::there || copy == Presence::missing) return removal.removeNote();
    if (aside == Presence::missing && hadSetAside(folder, mark)) return removal.removeNote();
    // The move may have died after it gave the copy its name and before that was durable.
    if (calls_.syncfs(target.get()) != 0) {
        log_.write(filledForLog("The interrupted move of %@ to %@ can't be settled: %@",
                                {joined(place.folder, note.item), note.target, systemReason(errno)}));
        return;
    }
    CopyWitness witness{calls_, target.get(), targetName};
    if (aside == Presence::there) return removal.removeAside(witness);
    removal.setAsideAndRemove(witness);
}

bool InterruptedMoves::hadSetAside(int folder, const MoveMark& mark) {
    struct statx info {};
    const std::string note = mark.name(MoveMark::Kind::note);
    return calls_.statx(folder, note.c_str(), AT_SYMLINK_NOFOLLOW, &info) == 0 && info.stx_mtime.tv_sec == 0;
}

void InterruptedMoves::putBack(const Place& place, int folder, const MoveNote& note) {
    const MoveMark& mark = place.found.mark;
    const std::string aside = mark.name(MoveMark::Kind::aside);
    if (renameNoReplace(calls_, folder, aside.c_str(), folder, note.item.c_str()) != 0) {
        log_.write(filledForLog("%@ is what an interrupted move has left of %@, and can't go back there: %@",
                                {joined(place.folder, aside), joined(place.folder, note.item), systemReason(errno)}));
        return;
    }
    calls_.unlinkat(folder, mark.name(MoveMark::Kind::note).c_str(), 0);
}

// One that still stands after its note was settled, or has none.
void InterruptedMoves::settleAside(const Place& place) {
    const std::string path = joined(place.folder, place.found.mark.name(MoveMark::Kind::aside));
    struct statx info {};
    if (calls_.statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, &info) != 0) return;
    log_.write(filledForLog("%@ holds what an interrupted move has left behind.", {path}));
}

void InterruptedMoves::removeStaging(const std::string& folderPath, const MoveMark& mark) {
    const std::string name = mark.name(MoveMark::Kind::staging);
    const OpenFile folder{calls_, calls_.openat(AT_FDCWD, folderPath.c_str(), folderFlags, 0)};
    if (!folder || presence(folder.get(), name) == Presence::missing) return;
    if (Status removed = removeTree(calls_, folder.get(), folderPath, name, ReadOnlyFolders::madeWritable); !removed)
        log_.write(filledForLog("What an interrupted move had copied stays behind: %@", {removed.sentence()}));
}

InterruptedMoves::Presence InterruptedMoves::presence(int folder, const std::string& name) {
    struct statx info {};
    if (calls_.statx(folder, name.c_str(), AT_SYMLINK_NOFOLLOW, &info) == 0) return Presence::there;
    return errno == ENOENT ? Presence::missing : Presence::unknown;
}

} // namespace letterloft
