#include "app/InterruptedMoveFolders.h"

#include "storage/SettingsKeys.h"
#include "storage/SupportFolder.h"

namespace letterloft {

namespace {

std::string parentFolder(const std::string& path) {
    const std::string parent = path.substr(0, path.find_last_of('/', path.find_last_not_of('/')));
    return parent.empty() ? "/" : parent;
}

// The folder itself and, to that depth, the folders in it.
void addFolders(const std::string& folder, int depth, const FileManager& files, std::vector<std::string>& found) {
    if (!files.folderExists(folder)) return;
    found.push_back(folder);
    if (depth == 0) return;
    const auto names = files.contentsOfFolder(folder);
    if (!names) return;
    for (const std::string& name : *names)
        addFolders(joined(folder, name), depth - 1, files, found);
}

} // namespace

std::vector<std::string> interruptedMoveFolders(const SettingsStore& defaults, const FileManager& files) {
    const std::string home = files.homeFolder();
    std::vector<std::string> folders;
    for (const std::string& app : defaults.list(keys::apps)) {
        for (const std::string& item : defaults.list(app)) {
            if (item.starts_with('/')) folders.push_back(parentFolder(item));
        }
    }
    const std::string backups = joined(supportFolder(home), "OldData");
    folders.push_back(supportFolder(home));
    for (const std::string& account : defaults.list(keys::accounts)) {
        folders.push_back(accountFolder(home, account));
        folders.push_back(parentFolder(folders.back()));
        addFolders(joined(backups, account), 1, files, folders); // a name with slashes lies deeper than the others
    }
    constexpr int namesAndStamps = 2;
    addFolders(backups, namesAndStamps, files, folders);
    return folders;
}

} // namespace letterloft
