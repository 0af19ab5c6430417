#include "platform/linux/FileSystemCalls.h"

#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <sys/sendfile.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace letterloft {

int FileSystemCalls::openat(int folder, const char* path, int flags, mode_t mode) {
    return ::openat(folder, path, flags, mode);
}

int FileSystemCalls::close(int file) { return ::close(file); }

int FileSystemCalls::statx(int folder, const char* path, int flags, struct statx* info) {
    return ::statx(folder, path, flags, STATX_BASIC_STATS, info);
}

int FileSystemCalls::fstatvfs(int file, struct statvfs* info) { return ::fstatvfs(file, info); }

ssize_t FileSystemCalls::getdents64(int folder, void* buffer, std::size_t size) {
    return ::getdents64(folder, buffer, size);
}

ssize_t FileSystemCalls::read(int file, void* buffer, std::size_t size) { return ::read(file, buffer, size); }

ssize_t FileSystemCalls::write(int file, const void* buffer, std::size_t size) { return ::write(file, buffer, size); }

ssize_t FileSystemCalls::copy_file_range(int from, int to, std::size_t size) {
    return ::copy_file_range(from, nullptr, to, nullptr, size, 0);
}

ssize_t FileSystemCalls::sendfile(int to, int from, std::size_t size) { return ::sendfile(to, from, nullptr, size); }

off_t FileSystemCalls::lseek(int file, off_t offset, int whence) { return ::lseek(file, offset, whence); }

int FileSystemCalls::ftruncate(int file, off_t size) { return ::ftruncate(file, size); }

int FileSystemCalls::fsync(int file) { return ::fsync(file); }

int FileSystemCalls::syncfs(int file) { return ::syncfs(file); }

int FileSystemCalls::sync_file_range(int file, off_t offset, off_t size, unsigned flags) {
    return ::sync_file_range(file, offset, size, flags);
}

void FileSystemCalls::sync() { ::sync(); }

int FileSystemCalls::mkdirat(int folder, const char* name, mode_t mode) { return ::mkdirat(folder, name, mode); }

int FileSystemCalls::mknodat(int folder, const char* name, mode_t mode) { return ::mknodat(folder, name, mode, 0); }

int FileSystemCalls::symlinkat(const char* text, int folder, const char* name) {
    return ::symlinkat(text, folder, name);
}

ssize_t FileSystemCalls::readlinkat(int folder, const char* name, char* buffer, std::size_t size) {
    return ::readlinkat(folder, name, buffer, size);
}

int FileSystemCalls::linkat(int fromFolder, const char* from, int toFolder, const char* to) {
    return ::linkat(fromFolder, from, toFolder, to, 0);
}

int FileSystemCalls::renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    return ::renameat2(fromFolder, from, toFolder, to, flags);
}

int FileSystemCalls::unlinkat(int folder, const char* name, int flags) { return ::unlinkat(folder, name, flags); }

int FileSystemCalls::fchmod(int file, mode_t mode) { return ::fchmod(file, mode); }

int FileSystemCalls::fchmodat(int folder, const char* name, mode_t mode) { return ::fchmodat(folder, name, mode, 0); }

int FileSystemCalls::fchownat(int folder, const char* name, uid_t owner, gid_t group, int flags) {
    return ::fchownat(folder, name, owner, group, flags);
}

int FileSystemCalls::utimensat(int folder, const char* name, const struct timespec times[2], int flags) {
    // futimens(3) is this call without a name.
    return name == nullptr ? ::futimens(folder, times) : ::utimensat(folder, name, times, flags);
}

ssize_t FileSystemCalls::flistxattr(int file, char* names, std::size_t size) { return ::flistxattr(file, names, size); }

ssize_t FileSystemCalls::fgetxattr(int file, const char* name, void* value, std::size_t size) {
    return ::fgetxattr(file, name, value, size);
}

int FileSystemCalls::fsetxattr(int file, const char* name, const void* value, std::size_t size) {
    return ::fsetxattr(file, name, value, size, 0);
}

int FileSystemCalls::fremovexattr(int file, const char* name) { return ::fremovexattr(file, name); }

int FileSystemCalls::setLease(int file, int lease) { return ::fcntl(file, F_SETLEASE, lease); }

OpenFile openForReading(FileSystemCalls& calls, int folder, const char* name, int extraFlags) {
    const int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | extraFlags;
    int file = calls.openat(folder, name, flags | O_NOATIME, 0);
    // open(2): only the file's owner may leave the time alone.
    if (file < 0 && errno == EPERM) file = calls.openat(folder, name, flags, 0);
    return OpenFile{calls, file};
}

} // namespace letterloft
