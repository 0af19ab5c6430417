#include "tests/fakes/FakeFileManager.h"

#include "storage/SupportFolder.h"

#include <filesystem>
#include <utility>

namespace letterloft {

namespace {

Status failure(const std::string& what, const std::string& path, const std::string& reason) {
    return Status::failure(what + " \"" + path + "\": " + reason + ".");
}

bool isPath(const std::string& path) { return path.starts_with('/') && path.find('\0') == std::string::npos; }

std::string tidied(const std::string& path) {
    return joined(std::filesystem::path{path}.lexically_normal().native(), "");
}

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool isAtOrBelow(const std::string& path, const std::string& folder) {
    return path == folder || folder == "/" || path.starts_with(folder + "/");
}

} // namespace

FakeFileManager::FakeFileManager(std::string theHome) : home{std::move(theHome)} {
    addFolder(home);
    protectedPaths = {supportFolder(home), home + "/.config/letterloft/settings.plist"};
}

bool FakeFileManager::begins() const { return ++operations != failingOperation; }

bool FakeFileManager::fileExists(const std::string& path) const { return isPath(path) && tree.contains(tidied(path)); }

bool FakeFileManager::folderExists(const std::string& path) const { return fileExists(path) && !textAt(path); }

Status FakeFileManager::createFolder(const std::string& path) {
    if (!isPath(path)) return failure("Can't make", path, "no path");
    if (!begins()) return failure("Can't make", path, "no space left");
    for (std::string at = tidied(path); at != "/"; at = parentOf(at))
        if (textAt(at)) return failure("Can't make", path, at + " is not a folder");
    addFolder(path);
    return Status::ok();
}

Result<std::vector<std::string>> FakeFileManager::contentsOfFolder(const std::string& path) const {
    if (!isPath(path)) return failure("Can't list", path, "no path");
    if (!begins()) return failure("Can't list", path, "input/output error");
    if (!folderExists(path)) return failure("Can't list", path, "no such folder");
    std::vector<std::string> names;
    for (const auto& [at, contents] : tree)
        if (at != "/" && parentOf(at) == tidied(path)) names.push_back(lastComponent(at));
    return names;
}

Status FakeFileManager::moveItem(const std::string& from, const std::string& to) {
    if (!isPath(from) || !isPath(to)) return failure("Can't move", from + "\" to \"" + to, "no path");
    if (!begins()) return failure("Can't move", from, "input/output error");
    const std::string source = tidied(from);
    const std::string destination = tidied(to);
    if (!fileExists(source)) return failure("Can't move", from, "it is not there");
    if (!folderExists(parentOf(destination))) return failure("Can't move to", to, "no such folder");
    if (fileExists(destination)) return failure("Can't move to", to, "something is there already");
    if (isAtOrBelow(destination, source)) return failure("Can't move", from, "it would lie inside itself");
    for (const std::string& kept : protectedPaths)
        if (isAtOrBelow(kept, source)) return failure("Can't move", from, "Letterloft's own files are in it");
    decltype(tree) moved;
    for (const auto& [path, contents] : tree)
        if (isAtOrBelow(path, source)) moved[destination + path.substr(source.size())] = contents;
    erase(source);
    tree.merge(moved);
    return Status::ok();
}

Status FakeFileManager::removeItem(const std::string& path) {
    if (!isPath(path)) return failure("Can't remove", path, "no path");
    if (!begins()) return failure("Can't remove", path, "access denied");
    const std::string top = tidied(path);
    if (!fileExists(top)) return failure("Can't remove", path, "it is not there");
    if (top == "/" || top == home) return failure("Can't remove", path, "it holds everything");
    erase(top);
    return Status::ok();
}

void FakeFileManager::addFolder(const std::string& path) {
    for (std::string at = tidied(path); at != "/"; at = parentOf(at))
        tree.try_emplace(at);
}

void FakeFileManager::addFile(const std::string& path, const std::string& contents) {
    addFolder(path);
    tree[path] = contents;
}

void FakeFileManager::erase(const std::string& path) {
    std::erase_if(tree, [&](const auto& entry) { return isAtOrBelow(entry.first, path); });
}

std::optional<std::string> FakeFileManager::textAt(const std::string& path) const {
    const auto found = tree.find(tidied(path));
    return found == tree.end() ? std::nullopt : found->second;
}

std::multiset<std::string> FakeFileManager::allContents() const {
    std::multiset<std::string> contents;
    for (const auto& [path, text] : tree)
        if (text) contents.insert(*text);
    return contents;
}

} // namespace letterloft
