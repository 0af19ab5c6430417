#include "platform/linux/SourceRemoval.h"

#include "platform/linux/FileErrors.h"
#include "platform/linux/RenameNoReplace.h"
#include "storage/SupportFolder.h"
#include "storage/Text.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <dirent.h>

namespace letterloft {

namespace {

// fcntl(2): when somebody opens a file that is leased, its holder gets SIGIO, which would end the program.
class IgnoredSigio {
public:
    IgnoredSigio() {
        struct sigaction ignore {};
        ignore.sa_handler = SIG_IGN;
        sigaction(SIGIO, &ignore, &before_);
    }
    ~IgnoredSigio() { sigaction(SIGIO, &before_, nullptr); }
    IgnoredSigio(const IgnoredSigio&) = delete;
    IgnoredSigio& operator=(const IgnoredSigio&) = delete;

private:
    struct sigaction before_ {};
};

class WitnessedRemoval final : public TreeWalk::Visitor {
public:
    WitnessedRemoval(FileSystemCalls& calls, const TreeWalk& walk, Witness& witness)
        : calls_{calls}, walk_{walk}, witness_{witness} {}

    // What stays, for the log; empty if nothing does.
    std::string whatStays() const { return stays_ > 1 ? first_ + " (and others)" : first_; }

    Status visit(int folder, const TreeEntry& entry) override {
        const std::string against = reasonToKeep(folder, entry);
        if (!against.empty()) keep(walk_.pathOf(entry), against);
        return Status::ok();
    }

    Result<Way> enter(int, const TreeEntry& entry, int opened, const struct statx& info) override {
        if (!witness_.enter(entry, info)) {
            keep(walk_.pathOf(entry), "it is new");
            return Way::past;
        }
        if (!isOpenToUs(info)) calls_.fchmod(opened, (info.stx_mode & 07777u) | S_IRWXU);
        return Way::into;
    }

    Status leave(int folder, const TreeEntry& entry, int opened, const struct statx& info) override {
        witness_.leave();
        if (calls_.unlinkat(folder, entry.name, AT_REMOVEDIR) == 0 || errno == ENOENT) return Status::ok();
        if (errno != ENOTEMPTY || stays_ == 0) keep(walk_.pathOf(entry), systemReason(errno));
        if (!isOpenToUs(info)) calls_.fchmod(opened, info.stx_mode & 07777u);
        return Status::ok();
    }

    Status unopened(const std::string& path, int error) override {
        if (error != ENOENT) keep(path, systemReason(error));
        return Status::ok();
    }

    void keep(const std::string& path, const std::string& reason) {
        if (stays_++ == 0) first_ = path + ": " + reason;
    }

private:
    static bool isOpenToUs(const struct statx& info) { return (info.stx_mode & S_IRWXU) == S_IRWXU; }

    // Removes it, or says why not. Nobody opens a file while its lease is held: what it is looked at after that is what
    // goes.
    std::string reasonToKeep(int folder, const TreeEntry& entry) {
        struct statx info {};
        OpenFile file;
        if (entry.type == DT_REG) {
            file = openForReading(calls_, folder, entry.name);
            if (!file) return reasonUnlessGone();
            // Other errors tell that the file system or the file's owner allows no leases: then nobody can know.
            if (calls_.setLease(file.get(), F_WRLCK) != 0 && errno == EAGAIN) return "a program has it open";
        }
        const bool looked = file ? calls_.statx(file.get(), "", AT_EMPTY_PATH, &info) == 0
                                 : calls_.statx(folder, entry.name, AT_SYMLINK_NOFOLLOW, &info) == 0;
        if (!looked) return reasonUnlessGone();
        if (!witness_.holds(entry, info)) return "it is new or has changed";
        return calls_.unlinkat(folder, entry.name, 0) == 0 ? std::string{} : reasonUnlessGone();
    }

    // What somebody else has removed meanwhile does not stay.
    static std::string reasonUnlessGone() { return errno == ENOENT ? std::string{} : systemReason(errno); }

    FileSystemCalls& calls_;
    const TreeWalk& walk_;
    Witness& witness_;
    std::string first_;
    std::size_t stays_ = 0;
};

std::string removeWitnessed(FileSystemCalls& calls, const ItemPlace& place, Witness& witness) {
    const IgnoredSigio ignoredSigio;
    TreeWalk walk{calls, place.folderPath};
    WitnessedRemoval removal{calls, walk, witness};
    if (Status walked = walk.run(place.folder, place.name, removal); !walked)
        removal.keep(joined(place.folderPath, place.name), walked.sentence());
    return removal.whatStays();
}

} // namespace

bool CopyWitness::enter(const TreeEntry& entry, const struct statx&) {
    const bool top = trail_.depth() == 0;
    const std::string name = top ? name_ : entry.name;
    OpenFile copy = openForReading(calls_, top ? folder_ : trail_.innermost(), name.c_str(), O_DIRECTORY);
    struct statx info {};
    if (lost_ || !copy || calls_.statx(copy.get(), "", AT_EMPTY_PATH, &info) != 0) return false;
    trail_.enter(std::move(copy), name, FileIdentity{info});
    return true;
}

void CopyWitness::leave() {
    OpenFile left;
    if (!trail_.leave(left)) lost_ = true;
}

bool CopyWitness::holds(const TreeEntry& entry, const struct statx& info) {
    if (S_ISSOCK(info.stx_mode)) return true; // left out of the copy
    const bool top = trail_.depth() == 0;
    const std::string name = top ? name_ : entry.name;
    struct statx copy {};
    if (lost_ || calls_.statx(top ? folder_ : trail_.innermost(), name.c_str(), AT_SYMLINK_NOFOLLOW, &copy) != 0)
        return false;
    return (copy.stx_mode & S_IFMT) == (info.stx_mode & S_IFMT) && copy.stx_size == info.stx_size &&
           copy.stx_mtime.tv_sec == info.stx_mtime.tv_sec && copy.stx_mtime.tv_nsec == info.stx_mtime.tv_nsec;
}

void SourceRemoval::setAsideAndRemove(Witness& witness) {
    const std::string aside = mark_.name(MoveMark::Kind::aside);
    if (renameNoReplace(calls_, source_.folder, source_.name.c_str(), source_.folder, aside.c_str()) == 0) {
        const std::array<timespec, 2> in1970{};
        calls_.utimensat(source_.folder, mark_.name(MoveMark::Kind::note).c_str(), in1970.data(), AT_SYMLINK_NOFOLLOW);
        // Without it nothing would be lost: what is removed is durable at the target.
        calls_.fsync(source_.folder);
        return removeAside(witness);
    }
    const std::string stays = errno == ENOENT ? "" : removeWitnessed(calls_, source_, witness);
    if (!stays.empty())
        log_.write(filledForLog("%@ has been moved to %@, but this stays behind: %@",
                                {joined(source_.folderPath, source_.name), target_, stays}));
    removeNote();
}

void SourceRemoval::removeAside(Witness& witness) {
    const ItemPlace aside{source_.folder, source_.folderPath, mark_.name(MoveMark::Kind::aside)};
    const std::string stays = removeWitnessed(calls_, aside, witness);
    if (stays.empty()) return removeNote();
    putBack(stays);
}

void SourceRemoval::putBack(const std::string& whatStays) {
    const std::string aside = mark_.name(MoveMark::Kind::aside);
    const std::string item = joined(source_.folderPath, source_.name);
    if (renameNoReplace(calls_, source_.folder, aside.c_str(), source_.folder, source_.name.c_str()) != 0) {
        log_.write(filledForLog("%@ has been moved to %@, but something stays behind and is kept in %@: %@",
                                {item, target_, joined(source_.folderPath, aside), whatStays}));
        return;
    }
    log_.write(filledForLog("%@ has been moved to %@, but this stays behind under the old name: %@",
                            {item, target_, whatStays}));
    removeNote();
}

void SourceRemoval::removeNote() { calls_.unlinkat(source_.folder, mark_.name(MoveMark::Kind::note).c_str(), 0); }

} // namespace letterloft
