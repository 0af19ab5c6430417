#pragma once

#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/types.h>

namespace letterloft {

// The system calls that the file layer is made of, each with the arguments, results and errno of its man page (section
// 2). One table, so that a disk that fails or a program that dies at any one of them can be put in its place.
class FileSystemCalls {
public:
    virtual ~FileSystemCalls() = default;

    virtual int openat(int folder, const char* path, int flags, mode_t mode);
    virtual int close(int file);
    virtual int statx(int folder, const char* path, int flags, struct statx* info);
    virtual int fstatvfs(int file, struct statvfs* info);
    virtual ssize_t getdents64(int folder, void* buffer, std::size_t size);
    virtual ssize_t read(int file, void* buffer, std::size_t size);
    virtual ssize_t write(int file, const void* buffer, std::size_t size);
    virtual ssize_t copy_file_range(int from, int to, std::size_t size);
    virtual ssize_t sendfile(int to, int from, std::size_t size);
    virtual off_t lseek(int file, off_t offset, int whence);
    virtual int ftruncate(int file, off_t size);
    virtual int fsync(int file);
    virtual int syncfs(int file);
    virtual int sync_file_range(int file, off_t offset, off_t size, unsigned flags);
    virtual void sync();
    virtual int mkdirat(int folder, const char* name, mode_t mode);
    virtual int mknodat(int folder, const char* name, mode_t mode);
    virtual int symlinkat(const char* text, int folder, const char* name);
    virtual ssize_t readlinkat(int folder, const char* name, char* buffer, std::size_t size);
    virtual int linkat(int fromFolder, const char* from, int toFolder, const char* to);
    virtual int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags);
    virtual int unlinkat(int folder, const char* name, int flags);
    virtual int fchmod(int file, mode_t mode);
    virtual int fchmodat(int folder, const char* name, mode_t mode);
    virtual int fchownat(int folder, const char* name, uid_t owner, gid_t group, int flags);
    virtual int utimensat(int folder, const char* name, const struct timespec times[2], int flags);
    virtual ssize_t flistxattr(int file, char* names, std::size_t size);
    virtual ssize_t fgetxattr(int file, const char* name, void* value, std::size_t size);
    virtual int fsetxattr(int file, const char* name, const void* value, std::size_t size);
    virtual int fremovexattr(int file, const char* name);

    // fcntl(2) with F_SETLEASE.
    virtual int setLease(int file, int lease);
};

// An open file that is closed when it goes. The calls outlive it.
class OpenFile {
public:
    OpenFile() = default;
    OpenFile(FileSystemCalls& calls, int file) : calls_{&calls}, file_{file} {}
    ~OpenFile() { close(); }
    OpenFile(OpenFile&& other) noexcept : calls_{other.calls_}, file_{other.release()} {}
    OpenFile& operator=(OpenFile&& other) noexcept {
        if (this == &other) return *this;
        close();
        calls_ = other.calls_;
        file_ = other.release();
        return *this;
    }

    int get() const { return file_; }
    explicit operator bool() const { return file_ >= 0; }

    // What close(2) answers; the file is gone from here in any case. Nothing open is no failure.
    int close() { return file_ < 0 ? 0 : calls_->close(release()); }

private:
    int release() {
        const int file = file_;
        file_ = -1;
        return file;
    }

    FileSystemCalls* calls_ = nullptr;
    int file_ = -1;
};

// Opens without following a link at the last component, without waiting for a fifo's other end, without handing the
// descriptor to programs started later and, where allowed, without touching the time of last access.
OpenFile openForReading(FileSystemCalls& calls, int folder, const char* name, int extraFlags = 0);

// Which file it is, whatever its name.
struct FileIdentity {
    explicit FileIdentity(const struct statx& info)
        : device{(std::uint64_t{info.stx_dev_major} << 32) | info.stx_dev_minor}, inode{info.stx_ino} {}
    bool operator==(const FileIdentity&) const = default;

    std::uint64_t device;
    std::uint64_t inode;
};

inline bool isFolder(const struct statx& info) { return S_ISDIR(info.stx_mode); }

// Whether another file system, or another part of the same one, is mounted there (statx(2), since Linux 5.8).
inline bool isMountPoint(const struct statx& info) { return (info.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0; }

} // namespace letterloft
