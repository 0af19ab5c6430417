#include "platform/linux/UserFolders.h"

#include "storage/SupportFolder.h"

#include <cstdlib>
#include <optional>
#include <pwd.h>
#include <unistd.h>
#include <utility>

namespace letterloft {

namespace {

std::optional<std::string> absolutePath(const char* path) {
    if (!path || path[0] != '/') return std::nullopt;
    return expandedTilde(path, {});
}

std::optional<std::string> homeFolder() {
    if (auto home = absolutePath(std::getenv("HOME"))) return home;
    const passwd* user = getpwuid(getuid()); // NOLINT(concurrency-mt-unsafe): called once, at the start
    return user ? absolutePath(user->pw_dir) : std::nullopt;
}

} // namespace

Result<UserFolders> UserFolders::fromEnvironment() {
    std::optional<std::string> home = homeFolder();
    if (!home) {
        return Status::failure("There is no home folder: HOME holds no absolute path, "
                               "and the password file names none for this user.");
    }
    std::string configuration = absolutePath(std::getenv("XDG_CONFIG_HOME")).value_or(joined(*home, ".config"));
    return UserFolders{std::move(*home), std::move(configuration)};
}

UserFolders::UserFolders(std::string home, std::string configuration)
    : home_{std::move(home)}, configuration_{std::move(configuration)} {}

std::string UserFolders::settingsFile() const { return joined(configuration_, "letterloft/settings.plist"); }

std::string UserFolders::lockFile() const {
    return expandedTilde("~/Library/Application Support/Letterloft.lock", home_);
}

} // namespace letterloft
