#include "tests/contract/files/ScratchFolders.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace letterloft {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void endProgram(const std::string& why) {
    std::fprintf(stderr, "These tests can't run here: %s\n", why.c_str());
    std::exit(EXIT_FAILURE);
}

std::string freshFolder(const std::string& parent) {
    std::string path = parent + "/letterloft-test-XXXXXX";
    if (mkdtemp(path.data()) == nullptr) endProgram("no folder can be made in " + parent);
    fs::permissions(path, fs::perms{0755});
    return path;
}

struct stat lookedAt(const std::string& path) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) endProgram(path + " can't be looked at");
    return info;
}

std::string describedAlone(const std::string& path, const std::string& name, std::map<ino_t, std::string>& firstNames) {
    const struct stat info = lookedAt(path);
    std::ostringstream text;
    text << std::oct << info.st_mode << std::dec << ' ' << info.st_uid << ':' << info.st_gid << ' '
         << info.st_mtim.tv_sec << '.' << info.st_mtim.tv_nsec;
    if (S_ISLNK(info.st_mode)) text << " -> " << fs::read_symlink(path).native();
    if (S_ISREG(info.st_mode)) {
        std::array<char, 64> value{};
        const ssize_t size = lgetxattr(path.c_str(), "user.kept", value.data(), value.size());
        text << " [" << std::string(value.data(), size > 0 ? static_cast<std::size_t>(size) : 0) << "] "
             << (info.st_blocks * 512 < info.st_size ? "sparse " : "") << contentsOf(path);
        if (info.st_nlink > 1) text << " same as " << firstNames.try_emplace(info.st_ino, name).first->second;
    }
    return text.str();
}

} // namespace

ScratchFolders::ScratchFolders() : onMemory_{freshFolder("/dev/shm")}, onDisk_{freshFolder(LETTERLOFT_SCRATCH)} {
    if (rename(onMemory_.c_str(), (onDisk_ + "/x").c_str()) == 0 || errno != EXDEV)
        endProgram("/dev/shm and " LETTERLOFT_SCRATCH " are one file system");
}

ScratchFolders::~ScratchFolders() {
    // By another's hand, and whatever the tests have made of modes, links and depth.
    const std::string both = "'" + onMemory_ + "' '" + onDisk_ + "'";
    if (std::system(("chmod -R u+rwx " + both + "; rm -rf " + both).c_str()) != 0)
        std::fprintf(stderr, "Not removed: %s\n", both.c_str());
}

void writeFile(const std::string& path, const std::string& contents) {
    fs::create_directories(fs::path{path}.parent_path());
    std::ofstream{path, std::ios::binary} << contents;
}

std::string contentsOf(const std::string& path) {
    std::ostringstream contents;
    contents << std::ifstream{path, std::ios::binary}.rdbuf();
    return contents.str();
}

void setTime(const std::string& path, long seconds) {
    const std::array<timespec, 2> times{{{seconds, 123456789}, {seconds + 1, 987654321}}};
    if (utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0) endProgram("no time for " + path);
}

void makeTortureTree(const std::string& path, const std::string& sentinel) {
    fs::create_directories(path + "/read-only");
    writeFile(path + "/empty", "");
    writeFile(path + "/blocks", std::string(70000, 'b'));
    setxattr((path + "/blocks").c_str(), "user.kept", "kept", 4, 0);
    writeFile(path + "/holes", "");
    fs::resize_file(path + "/holes", 1 << 17);
    std::fstream{path + "/holes"}.seekp(100000) << "data";
    fs::create_hard_link(path + "/blocks", path + "/second name");
    writeFile(path + "/program", "#!/bin/sh\n");
    fs::permissions(path + "/program", fs::perms{04751});
    fs::create_symlink("nowhere", path + "/dangling");
    fs::create_symlink(sentinel, path + "/out of the tree");
    fs::create_directory(path + "/empty folder");
    mkfifo((path + "/fifo").c_str(), 0640);
    writeFile(path + "/" + std::string(255, 'n'), "long name");
    writeFile(path + "/new\nline\xff", "odd name");
    writeFile(path + "/read-only/inside", "inside");
    fs::permissions(path + "/read-only/inside", fs::perms{0400});
    fs::permissions(path + "/read-only", fs::perms{0500});
    long seconds = 1000000000;
    for (const auto& entry : fs::recursive_directory_iterator(path))
        setTime(entry.path(), seconds += 1000);
    setTime(path, 900000000);
}

TreeDescription described(const std::string& path) {
    TreeDescription description;
    std::map<ino_t, std::string> firstNames;
    if (!fs::exists(fs::symlink_status(path))) return description;
    std::map<std::string, std::string> paths{{"", path}}; // sorted, so that first names come out alike
    if (fs::is_directory(fs::symlink_status(path)))
        for (const auto& entry : fs::recursive_directory_iterator(path))
            paths[entry.path().native().substr(path.size())] = entry.path();
    for (const auto& [relative, full] : paths) {
        description[relative] = describedAlone(full, relative, firstNames);
    }
    return description;
}

} // namespace letterloft
