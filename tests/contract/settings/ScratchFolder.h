#pragma once

#include "storage/SupportFolder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace letterloft {

// A folder of a test's own, which goes with it; in memory where that can be, because a settings write waits for the
// disk.
class ScratchFolder final {
public:
    ScratchFolder() {
        const std::filesystem::path memory = "/dev/shm";
        const bool inMemory = access(memory.c_str(), W_OK) == 0;
        std::string name = (inMemory ? memory : std::filesystem::temp_directory_path()) / "letterloft-settings-XXXXXX";
        path_ = mkdtemp(name.data());
    }
    ~ScratchFolder() { std::filesystem::remove_all(path_); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string at(const std::string& name) const { return joined(path_, name); }

private:
    std::string path_;
};

inline std::string readFile(const std::string& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

inline void writeFile(const std::string& path, const std::string& bytes) {
    std::filesystem::create_directories(std::filesystem::path{path}.parent_path());
    std::ofstream{path, std::ios::binary | std::ios::trunc} << bytes;
}

// An XML property list with this at its top.
inline std::string propertyListWith(const std::string& value) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + value + "</plist>\n";
}

} // namespace letterloft
