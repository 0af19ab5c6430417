#pragma once

#include <string>
#include <string_view>

namespace letterloft {

// Paths are text here: absolute, "/"-separated, none is looked up. No result has a trailing or doubled slash.

// The path with a leading "~" replaced by `home`; one without is only tidied.
std::string expandedTilde(std::string_view path, std::string_view home);

// `base` followed by one component, always below it as text: a component that begins with a slash does not replace the
// base, an empty one leaves it as it is, and ".." and inner slashes are kept.
std::string joined(std::string_view base, std::string_view component);

// What follows the last slash, trailing slashes aside; "/" for the root, empty for an empty path.
std::string lastComponent(std::string_view path);

// Where everything parked and backed up lies.
std::string supportFolder(std::string_view home);

// Where an account's items are parked while it is not the current one.
std::string accountFolder(std::string_view home, std::string_view account);

// Where an item lies while it is parked. Only the last component of its live location counts, so two items that end
// alike share one place.
std::string parkedPath(std::string_view accountFolder, std::string_view item);

// Where data that is given up goes; `stamp` tells the time.
std::string backupFolder(std::string_view home, const std::string& account, const std::string& stamp);

} // namespace letterloft
