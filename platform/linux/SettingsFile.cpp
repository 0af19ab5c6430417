#include "platform/linux/SettingsFile.h"

#include "platform/linux/ChangedFolders.h"
#include "platform/linux/FileErrors.h"
#include "platform/linux/PrivateFolders.h"
#include "platform/linux/PropertyListCheck.h"
#include "storage/Text.h"

#include <array>
#include <cerrno>
#include <climits>
#include <optional>

namespace letterloft {

namespace {

// Fixed names, so that what a crash leaves there is cleared away by the next write and never gathers.
std::string newGeneration(const std::string& target) { return target + ".new"; }
std::string previousGeneration(const std::string& target) { return target + ".bak"; }
std::string previousInTheMaking(const std::string& target) { return target + ".bak.new"; }

Status readAll(FileSystemCalls& calls, int file, std::string& bytes) {
    std::array<char, 64 * 1024> buffer{};
    while (bytes.size() <= largestPropertyList) {
        const ssize_t count = calls.read(file, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return Status::failure("can't be read: " + systemReason(errno));
        if (count == 0) return Status::ok();
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return Status::failure("is larger than 16 MiB");
}

Status writeAll(FileSystemCalls& calls, int file, const std::string& bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = calls.write(file, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return Status::failure(systemReason(count < 0 ? errno : EIO));
        written += static_cast<std::size_t>(count);
    }
    return Status::ok();
}

} // namespace

Result<PropertyList> SettingsFile::read() const {
    const Result<std::string> file = target();
    Status refusal = file.status();
    if (file) {
        Result<PropertyList> list = parsed(*file);
        if (list) return list;
        refusal = list.status();
    }
    return Status::failure(
        filled("The settings file \"%@\" %@. It has been left as it is. ", {path_, refusal.sentence()}) +
        waysOut(file ? *file : path_));
}

Result<PropertyList> SettingsFile::parsed(const std::string& path) const {
    struct statx info {};
    if (calls_->statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, &info) != 0 && (errno == ENOENT || errno == ENOTDIR))
        return emptyPropertyList();
    const Result<std::string> bytes = contents(path);
    if (!bytes) return bytes.status();
    Result<PropertyList> list = parsedPropertyList(*bytes);
    // A binary file may hold what libplist reads but could never write again, such as a date that is no number.
    if (list && bytes->starts_with("bplist") && !propertyListBytes(*list))
        return Status::failure("holds a value that could not be saved again");
    return list;
}

Result<std::string> SettingsFile::contents(const std::string& path) const {
    const OpenFile file = openForReading(*calls_, AT_FDCWD, path.c_str());
    struct statx info {};
    if (!file || calls_->statx(file.get(), "", AT_EMPTY_PATH, &info) != 0)
        return Status::failure("can't be read: " + systemReason(errno));
    if (!S_ISREG(info.stx_mode)) return Status::failure("is no file");
    std::string bytes;
    if (Status read = readAll(*calls_, file.get(), bytes); !read) return read;
    return bytes;
}

std::string SettingsFile::waysOut(const std::string& target) const {
    const std::string previous = previousGeneration(target);
    struct statx info {};
    if (calls_->statx(AT_FDCWD, previous.c_str(), 0, &info) != 0 && (errno == ENOENT || errno == ENOTDIR))
        return filled("There is no previous generation \"%@\" to put in its place.", {previous});
    const Result<std::string> bytes = contents(previous);
    const Result<PropertyList> list = bytes ? parsedPropertyList(*bytes) : bytes.status();
    if (!list) return filled("Its previous generation \"%@\" %@.", {previous, list.status().sentence()});
    return filled("The settings as they were before the last change are in \"%@\": to go back to them, copy that file "
                  "to \"%@\".",
                  {previous, target});
}

// The file's name with the links that stand there followed. As many as the system itself would follow.
Result<std::string> SettingsFile::target() const {
    std::string path = path_;
    for (int links = 0; links < 40; ++links) {
        std::array<char, PATH_MAX> text{};
        const ssize_t length = calls_->readlinkat(AT_FDCWD, path.c_str(), text.data(), text.size());
        if (length < 0 && (errno == EINVAL || errno == ENOENT || errno == ENOTDIR)) return path; // no link
        if (length < 0) return Status::failure("can't be read: " + systemReason(errno));
        const std::string link{text.data(), static_cast<std::size_t>(length)};
        path = link.starts_with('/') ? link : parentFolder(path) + "/" + link;
    }
    return Status::failure("can't be read: " + systemReason(ELOOP));
}

Status SettingsFile::replace(const std::string& bytes, Log& log) const {
    const Result<std::string> file = target();
    if (!file) return file.status();
    if (Status created = createPrivateFolders(*calls_, parentFolder(*file)); !created) return created;
    const std::string made = newGeneration(*file);
    if (Status written = writeNew(made, bytes); !written) return written;
    if (Status kept = keepPrevious(*file); !kept) {
        log.write(filledForLog("The previous generation of the settings \"%@\" could not be kept: %@",
                               {*file, kept.sentence()}));
    }
    if (Status installed = install(made, *file); !installed) return installed;
    ChangedFolders changed{*calls_};
    changed.add(parentFolder(*file));
    return changed.sync();
}

Status SettingsFile::writeNew(const std::string& path, const std::string& bytes) const {
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    OpenFile file{*calls_, inFreePlace(path, [&] { return calls_->openat(AT_FDCWD, path.c_str(), flags, 0600); })};
    if (!file) return systemFailure("%@ can't be created", path);
    Status status = writeAll(*calls_, file.get(), bytes);
    if (status && calls_->fchmod(file.get(), 0600) != 0) status = Status::failure(systemReason(errno));
    if (status && calls_->fsync(file.get()) != 0) status = Status::failure(systemReason(errno));
    if (file.close() != 0 && status) status = Status::failure(systemReason(errno));
    if (status) return status;
    calls_->unlinkat(AT_FDCWD, path.c_str(), 0);
    return Status::failure(filled("%@ can't be written: %@", {path, status.sentence()}));
}

// Whatever stands at the name of a file in the making is a leftover or was planted: it goes, a link itself and not what
// it points to.
int SettingsFile::inFreePlace(const std::string& path, const std::function<int()>& make) const {
    const int made = make();
    if (made >= 0 || errno != EEXIST) return made;
    calls_->unlinkat(AT_FDCWD, path.c_str(), 0);
    return make();
}

// A second name for the present generation becomes the previous one's: the present one is never without its own.
Status SettingsFile::keepPrevious(const std::string& target) const {
    struct statx info {};
    const bool isKnown = calls_->statx(AT_FDCWD, target.c_str(), AT_SYMLINK_NOFOLLOW, &info) == 0;
    if (!isKnown && errno == ENOENT) return Status::ok();
    const std::string made = previousInTheMaking(target);
    const auto link = [&] { return calls_->linkat(AT_FDCWD, target.c_str(), AT_FDCWD, made.c_str()); };
    if (inFreePlace(made, link) != 0) {
        // There are file systems without second names (vfat, many of FUSE's).
        const Result<std::string> bytes = contents(target);
        if (!bytes) return Status::failure(target + " " + bytes.status().sentence());
        if (Status written = writeNew(made, *bytes); !written) return written;
    }
    Status installed = install(made, previousGeneration(target));
    // rename(2) leaves both names where they are names of one file, as a write that was broken off leaves them.
    if (!isKnown || info.stx_nlink > 1) calls_->unlinkat(AT_FDCWD, made.c_str(), 0);
    return installed;
}

Status SettingsFile::install(const std::string& from, const std::string& to) const {
    if (calls_->renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 0) == 0) return Status::ok();
    Status failed = systemFailure("%@ can't be put in place", to);
    calls_->unlinkat(AT_FDCWD, from.c_str(), 0);
    return failed;
}

} // namespace letterloft
