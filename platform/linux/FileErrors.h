#pragma once

#include "platform/Status.h"

#include <string>
#include <string_view>

namespace letterloft {

// The system's words for an error number.
std::string systemReason(int error);

// A failure in the words of `text`, in which "%@" stands for the path.
Status failure(std::string_view text, const std::string& path);

// The same, followed by the system's reason, which is errno's unless given.
Status systemFailure(std::string_view text, const std::string& path);
Status systemFailure(std::string_view text, const std::string& path, int error);

// A failed move, with both paths and what stood against it.
Status moveFailure(const std::string& from, const std::string& to, const std::string& reason);

} // namespace letterloft
