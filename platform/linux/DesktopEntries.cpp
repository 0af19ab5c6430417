#include "platform/linux/DesktopEntries.h"

#include "platform/linux/ProgramFiles.h"
#include "storage/SupportFolder.h"

#include <dirent.h>
#include <glib.h>
#include <memory>

namespace letterloft {

namespace {

constexpr int deepestFolder = 4;
constexpr std::size_t longestEntry = std::size_t{1} << 18;

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

// A look at the bytes is enough to pass most entries over.
bool mayName(const std::string& path, const std::set<std::string>& classNames) {
    const std::string text = contentsOfSmallFile(path, longestEntry).value_or("");
    const auto at = text.find("\nStartupWMClass");
    if (at == std::string::npos) return false;
    for (const auto& name : classNames)
        if (!name.empty() && text.find(name, at) != std::string::npos) return true;
    return false;
}

void collect(const std::string& folder, const std::set<std::string>& classNames, int depth,
             std::vector<ApplicationEntry>& found) {
    const std::unique_ptr<DIR, CloseFolder> opened{::opendir(folder.c_str())};
    if (!opened || depth > deepestFolder) return;
    while (const dirent* item = ::readdir(opened.get())) {
        const std::string name = item->d_name;
        const std::string path = joined(folder, name);
        if (name.ends_with(".desktop")) {
            if (!mayName(path, classNames)) continue;
            auto entry = ApplicationEntry::at(path);
            if (classNames.contains(entry.startupWMClass)) found.push_back(std::move(entry));
        } else if (!name.starts_with('.') && item->d_type == DT_DIR) {
            collect(path, classNames, depth + 1, found);
        }
    }
}

} // namespace

std::vector<ApplicationEntry> desktopEntriesOfWindows(const std::set<std::string>& classNames) {
    std::vector<ApplicationEntry> found;
    collect(joined(g_get_user_data_dir(), "applications"), classNames, 0, found);
    for (const char* const* folder = g_get_system_data_dirs(); *folder; ++folder)
        collect(joined(*folder, "applications"), classNames, 0, found);
    return found;
}

} // namespace letterloft
