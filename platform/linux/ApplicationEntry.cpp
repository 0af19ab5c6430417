#include "platform/linux/ApplicationEntry.h"

#include "platform/linux/GlibPointers.h"
#include "platform/linux/ProgramFiles.h"
#include "platform/linux/PropertyList.h"
#include "storage/SupportFolder.h"
#include "storage/Text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <sys/stat.h>

namespace letterloft {

namespace {

struct KeyFileRelease {
    void operator()(GKeyFile* file) const { g_key_file_free(file); }
};
using KeyFile = std::unique_ptr<GKeyFile, KeyFileRelease>;

constexpr std::string_view desktopSuffix = ".desktop";
constexpr std::string_view applicationsFolder = "/applications/";
constexpr const char* group = "Desktop Entry";

std::string textOf(GKeyFile* file, const char* key) {
    const GlibPointer<gchar> text{g_key_file_get_string(file, group, key, nullptr)};
    return text ? text.get() : std::string{};
}

// The name that another data folder's copy of the entry has too: what follows the "applications" folder.
std::optional<std::string> idWithinApplications(std::string_view desktopFile) {
    const auto at = desktopFile.rfind(applicationsFolder);
    if (at == std::string_view::npos) return std::nullopt;
    std::string id{desktopFile.substr(at + applicationsFolder.size())};
    std::replace(id.begin(), id.end(), '/', '-');
    return id;
}

std::string desktopId(const std::string& path) {
    std::string id = idWithinApplications(path).value_or(lastComponent(path));
    if (id.ends_with(desktopSuffix)) id.resize(id.size() - desktopSuffix.size());
    return id;
}

// "%f" and its like stand for what is opened, which is no part of the program (Desktop Entry Specification, "The Exec
// key"); "%%" stands for a percent sign.
std::string withoutFieldCodes(const std::string& argument) {
    std::string text;
    for (std::size_t at = 0; at < argument.size(); ++at) {
        const bool isCode = argument[at] == '%' && at + 1 < argument.size();
        if (!isCode)
            text += argument[at];
        else if (argument[++at] == '%')
            text += '%';
    }
    return text;
}

Result<std::vector<std::string>> parsedExec(const std::string& path, const std::string& exec) {
    int count = 0;
    char** list = nullptr;
    GError* error = nullptr;
    if (!g_shell_parse_argv(exec.c_str(), &count, &list, &error)) {
        const GlibPointer<GError> owned{error};
        return Status::failure(
            filled("The Exec line of the desktop entry at %@ can't be read: %@", {path, owned->message}));
    }
    const GlibPointer<gchar*> owned{list};
    std::vector<std::string> command;
    for (int i = 0; i < count; ++i) {
        std::string argument = withoutFieldCodes(list[i]);
        if (!argument.empty() || list[i][0] == '\0') command.push_back(std::move(argument));
    }
    return command;
}

Status desktopStatus(const ApplicationEntry& entry, GKeyFile* file) {
    const std::string type = textOf(file, "Type");
    if (!type.empty() && type != "Application")
        return Status::failure(filled("The desktop entry at %@ is no application", {entry.path}));
    if (const std::string tried = textOf(file, "TryExec"); !tried.empty() && !programInPath(tried))
        return Status::failure(filled("The program %@ of the desktop entry at %@ is missing", {tried, entry.path}));
    if (entry.command.empty() && !entry.dBusActivatable)
        return Status::failure(filled("The desktop entry at %@ names no program to start", {entry.path}));
    if (!entry.dBusActivatable && !programInPath(entry.command.front()))
        return Status::failure(
            filled("The program %@ of the desktop entry at %@ is missing", {entry.command.front(), entry.path}));
    return Status::ok();
}

void readDesktopEntry(ApplicationEntry& entry) {
    const KeyFile file{g_key_file_new()};
    GError* error = nullptr;
    if (!g_key_file_load_from_file(file.get(), entry.path.c_str(), G_KEY_FILE_NONE, &error)) {
        const GlibPointer<GError> owned{error};
        entry.usable =
            Status::failure(filled("The desktop entry at %@ can't be read: %@", {entry.path, owned->message}));
        return;
    }
    entry.startupWMClass = textOf(file.get(), "StartupWMClass");
    entry.dBusActivatable = g_key_file_get_boolean(file.get(), group, "DBusActivatable", nullptr) != 0;
    entry.noDisplay = g_key_file_get_boolean(file.get(), group, "NoDisplay", nullptr) != 0;
    auto command = parsedExec(entry.path, textOf(file.get(), "Exec"));
    if (command) entry.command = *command;
    entry.usable = desktopStatus(entry, file.get());
    if (!command && !textOf(file.get(), "Exec").empty()) entry.usable = command.status();
}

// One value of a property list in the old text form, `Key = value;`, which GNUstep writes and libplist 2.2 can't read.
std::string textPlistValue(const std::string& text, const std::string& key) {
    for (std::size_t at = 0; (at = text.find(key, at)) != std::string::npos; at += key.size()) {
        std::size_t value = at + key.size();
        if (value < text.size() && text[value] == '"') ++value;
        value = text.find_first_not_of(" \t\r\n", value);
        if (value == std::string::npos || text[value] != '=') continue;
        value = text.find_first_not_of(" \t\r\n", value + 1);
        const auto end = text.find(';', at);
        if (value == std::string::npos || end == std::string::npos || value >= end) continue;
        std::string found = text.substr(value, end - value);
        if (found.size() >= 2 && found.front() == '"' && found.back() == '"') found = found.substr(1, found.size() - 2);
        return found;
    }
    return {};
}

std::string plistValue(const std::string& text, const std::string& key) {
    const auto plist = parsedPropertyList(text);
    if (!plist) return text.starts_with("<") ? std::string{} : textPlistValue(text, key);
    plist_t node = plist_dict_get_item(plist->get(), key.c_str());
    if (!node || plist_get_node_type(node) != PLIST_STRING) return {};
    char* value = nullptr;
    plist_get_string_val(node, &value);
    const std::unique_ptr<char, decltype(&std::free)> owned{value, &std::free};
    return value ? value : std::string{};
}

// The first file of those that tell about a bundle to answer the question.
std::string bundleValue(const std::string& bundle, std::initializer_list<std::string> keys) {
    for (const char* place :
         {"Contents/Info.plist", "Info.plist", "Resources/Info.plist", "Resources/Info-gnustep.plist"})
        if (const auto text = contentsOfSmallFile(joined(bundle, place)))
            for (const std::string& key : keys)
                if (std::string value = plistValue(*text, key); !value.empty()) return value;
    return {};
}

void readBundle(ApplicationEntry& entry) {
    const std::string identifier = bundleValue(entry.path, {"CFBundleIdentifier"});
    if (!identifier.empty()) entry.identifier = identifier;
    std::string name = bundleValue(entry.path, {"CFBundleExecutable", "NSExecutable"});
    if (name.empty()) name = lastComponent(entry.path).substr(0, lastComponent(entry.path).size() - 4);
    // The name is a file's in the bundle; one that leads elsewhere is not followed.
    if (name.find('/') != std::string::npos) name.clear();
    for (const char* folder : {"Contents/MacOS", "Contents/Linux", ""})
        if (const std::string file = joined(joined(entry.path, folder), name); !name.empty() && isProgram(file)) {
            entry.command = {file};
            return;
        }
    entry.usable = Status::failure(filled("The bundle at %@ holds no program that can be started", {entry.path}));
}

void readExecutable(ApplicationEntry& entry, const std::string& given) {
    struct stat found {};
    if (::stat(given.c_str(), &found) != 0)
        entry.usable = Status::failure(filled("There is no application at %@: %@", {given, std::strerror(errno)}));
    else if (S_ISDIR(found.st_mode))
        entry.usable = Status::failure(filled("The folder at %@ is no application", {given}));
    else if (!isProgram(given))
        entry.usable = Status::failure(filled("The file at %@ is no program that can be started", {given}));
    else
        entry.command = {given}; // not the canonical path: programs of several names look at the one they got
}

} // namespace

ApplicationEntry ApplicationEntry::at(const std::string& path) {
    ApplicationEntry entry;
    const std::string given = expandedTilde(path, "");
    entry.path = canonicalPathOfMissing(given);
    if (given.ends_with(desktopSuffix)) {
        entry.kind = Kind::desktopEntry;
        entry.identifier = desktopId(given);
        readDesktopEntry(entry);
        return entry;
    }
    entry.identifier = entry.path;
    if (entry.path.ends_with(".app") && (isFolder(entry.path) || !isSomething(entry.path))) {
        entry.kind = Kind::bundle;
        readBundle(entry);
    } else {
        readExecutable(entry, given);
    }
    return entry;
}

bool ApplicationEntry::isDesktopFile(const std::string& desktopFile) const {
    if (kind != Kind::desktopEntry) return false;
    if (desktopFile == path || canonicalPath(desktopFile) == path) return true;
    const auto id = idWithinApplications(desktopFile);
    return id && idWithinApplications(path) && *id == identifier + std::string{desktopSuffix};
}

} // namespace letterloft
