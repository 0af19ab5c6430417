#pragma once

#include "platform/linux/FileSystemCalls.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

namespace letterloft {

// The system calls with one thing that goes wrong at the Nth of them. Calls count from 1; those that only look are
// counted too. Nothing is really synced unless it is asked for: the end of a process takes nothing from the kernel, and
// the disk is slow.
class FaultyCalls final : public FileSystemCalls {
public:
    enum class Fault { none, fails, failsFromThenOn, isCutShort, isInterrupted, ends };
    static constexpr int endedHere = 77; // the status of a process that was ended

    FaultyCalls() = default;
    FaultyCalls(Fault fault, int at) : fault_{fault}, at_{at} {}

    // Counts anew, with another fault.
    void strikeAt(Fault fault, int at) {
        fault_ = fault;
        at_ = at;
        count = 0;
        cuttable.clear();
        doubt.clear();
    }

    int count = 0;
    bool syncs = false;
    bool copiesInKernel = true;
    std::string doubt;         // the call, and which of its name, that failed and so may have lost what was written
    std::vector<int> cuttable; // which calls may do a part of what they are asked for, or be interrupted
    std::function<void()> meanwhile; // comes right before the Nth call
    std::function<void(int folder, const char* to)> beforeRename;
    std::vector<std::string> order; // of the calls that change something or make it durable

    int openat(int folder, const char* path, int flags, mode_t mode) override {
        const int file = strikes("openat") ? -1 : FileSystemCalls::openat(folder, path, flags, mode);
        if ((flags & O_ACCMODE) == O_WRONLY) written_.insert(file);
        return file;
    }
    int close(int file) override {
        const bool struck = written_.erase(file) > 0 ? strikesAtWritten("", "close") : strikes("");
        return (FileSystemCalls::close(file), struck) ? -1 : 0; // closed in any case, as close(2) says
    }
    int statx(int folder, const char* path, int flags, struct statx* info) override {
        return strikes("") ? -1 : FileSystemCalls::statx(folder, path, flags, info);
    }
    int fstatvfs(int file, struct statvfs* info) override {
        return strikes("") ? -1 : FileSystemCalls::fstatvfs(file, info);
    }
    ssize_t getdents64(int folder, void* buffer, std::size_t size) override {
        return strikesPart("", size) ? -1 : FileSystemCalls::getdents64(folder, buffer, size);
    }
    ssize_t read(int file, void* buffer, std::size_t size) override {
        return strikesPart("read", size) ? -1 : FileSystemCalls::read(file, buffer, size);
    }
    ssize_t write(int file, const void* buffer, std::size_t size) override {
        return strikesPart("write", size) ? -1 : FileSystemCalls::write(file, buffer, size);
    }
    ssize_t copy_file_range(int from, int to, std::size_t size) override {
        if (!copiesInKernel) return (errno = EXDEV, -1);
        return strikesPart("write", size) ? -1 : FileSystemCalls::copy_file_range(from, to, size);
    }
    ssize_t sendfile(int to, int from, std::size_t size) override {
        if (!copiesInKernel) return (errno = EINVAL, -1);
        return strikesPart("write", size) ? -1 : FileSystemCalls::sendfile(to, from, size);
    }
    off_t lseek(int file, off_t offset, int whence) override {
        return strikes("") ? -1 : FileSystemCalls::lseek(file, offset, whence);
    }
    int ftruncate(int file, off_t size) override {
        return strikes("write") ? -1 : FileSystemCalls::ftruncate(file, size);
    }
    int fsync(int file) override {
        return strikesAtWritten("fsync", "fsync") ? -1 : syncs ? FileSystemCalls::fsync(file) : 0;
    }
    int syncfs(int file) override {
        return strikesAtWritten("syncfs", "syncfs") ? -1 : syncs ? FileSystemCalls::syncfs(file) : 0;
    }
    int sync_file_range(int file, off_t offset, off_t size, unsigned flags) override {
        if (strikesAtWritten("", "sync_file_range")) return -1;
        return syncs ? FileSystemCalls::sync_file_range(file, offset, size, flags) : 0;
    }
    void sync() override {
        strikes("sync");
        if (syncs) FileSystemCalls::sync();
    }
    int mkdirat(int folder, const char* name, mode_t mode) override {
        return strikes("make") ? -1 : FileSystemCalls::mkdirat(folder, name, mode);
    }
    int mknodat(int folder, const char* name, mode_t mode) override {
        return strikes("make") ? -1 : FileSystemCalls::mknodat(folder, name, mode);
    }
    int symlinkat(const char* text, int folder, const char* name) override {
        return strikes("make") ? -1 : FileSystemCalls::symlinkat(text, folder, name);
    }
    ssize_t readlinkat(int folder, const char* name, char* buffer, std::size_t size) override {
        return strikes("") ? -1 : FileSystemCalls::readlinkat(folder, name, buffer, size);
    }
    int linkat(int fromFolder, const char* from, int toFolder, const char* to) override {
        return strikes("make") ? -1 : FileSystemCalls::linkat(fromFolder, from, toFolder, to);
    }
    int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) override {
        if (strikes("rename")) return -1;
        if (beforeRename) beforeRename(toFolder, to);
        return FileSystemCalls::renameat2(fromFolder, from, toFolder, to, flags);
    }
    int unlinkat(int folder, const char* name, int flags) override {
        return strikes("unlink") ? -1 : FileSystemCalls::unlinkat(folder, name, flags);
    }
    int fchmod(int file, mode_t mode) override { return strikes("") ? -1 : FileSystemCalls::fchmod(file, mode); }
    int fchmodat(int folder, const char* name, mode_t mode) override {
        return strikes("") ? -1 : FileSystemCalls::fchmodat(folder, name, mode);
    }
    int fchownat(int folder, const char* name, uid_t owner, gid_t group, int flags) override {
        return strikes("") ? -1 : FileSystemCalls::fchownat(folder, name, owner, group, flags);
    }
    int utimensat(int folder, const char* name, const struct timespec times[2], int flags) override {
        return strikes("") ? -1 : FileSystemCalls::utimensat(folder, name, times, flags);
    }
    ssize_t flistxattr(int file, char* names, std::size_t size) override {
        return strikes("") ? -1 : FileSystemCalls::flistxattr(file, names, size);
    }
    ssize_t fgetxattr(int file, const char* name, void* value, std::size_t size) override {
        return strikes("") ? -1 : FileSystemCalls::fgetxattr(file, name, value, size);
    }
    int fsetxattr(int file, const char* name, const void* value, std::size_t size) override {
        return strikes("") ? -1 : FileSystemCalls::fsetxattr(file, name, value, size);
    }
    int fremovexattr(int file, const char* name) override {
        return strikes("") ? -1 : FileSystemCalls::fremovexattr(file, name);
    }
    int setLease(int file, int lease) override { return strikes("") ? -1 : FileSystemCalls::setLease(file, lease); }

private:
    bool strikes(const char* name) {
        ++count;
        if (*name != 0) order.emplace_back(name);
        if (meanwhile && count == at_) meanwhile();
        if (fault_ == Fault::ends && count == at_) _exit(endedHere);
        const bool struck = fault_ == Fault::fails ? count == at_ : fault_ == Fault::failsFromThenOn && count >= at_;
        if (struck) errno = EIO;
        return struck;
    }

    bool strikesAtWritten(const char* name, const char* call) {
        const bool struck = strikes(name);
        if (struck) doubt = call + (" " + std::to_string(std::count(order.begin(), order.end(), call)));
        return struck;
    }

    // The size is halved where that is the fault.
    bool strikesPart(const char* name, std::size_t& size) {
        if (strikes(name)) return true;
        if (size < 2) return false;
        cuttable.push_back(count);
        if (fault_ == Fault::isCutShort && count == at_) size /= 2;
        if (fault_ != Fault::isInterrupted || count != at_) return false;
        errno = EINTR;
        return true;
    }

    Fault fault_ = Fault::none;
    int at_ = 0;
    std::set<int> written_; // open files
};

} // namespace letterloft
