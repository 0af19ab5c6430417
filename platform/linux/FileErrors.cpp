#include "platform/linux/FileErrors.h"

#include "storage/Text.h"

#include <cerrno>
#include <system_error>

namespace letterloft {

std::string systemReason(int error) { return std::generic_category().message(error); }

Status failure(std::string_view text, const std::string& path) { return Status::failure(filled(text, {path})); }

Status systemFailure(std::string_view text, const std::string& path) { return systemFailure(text, path, errno); }

Status systemFailure(std::string_view text, const std::string& path, int error) {
    return Status::failure(filled(text, {path}) + ": " + systemReason(error));
}

Status moveFailure(const std::string& from, const std::string& to, const std::string& reason) {
    return Status::failure(filled("%@ can't be moved to %@: %@", {from, to, reason}));
}

} // namespace letterloft
