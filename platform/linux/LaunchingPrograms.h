#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace letterloft {

// Programs that stand on command lines and in scripts without being what is started there.

// What is left of a command line whose first word starts the program named after it and is not that program, as `env`
// does; none for any other.
std::optional<std::span<const std::string>> wordsAfterPrefix(std::span<const std::string> words);

// Whether what it is told to run is the application; with nothing told a terminal is the application itself.
bool isTerminal(std::string_view path);

// Whether a program of that name is something that scripts call on the side (a pause, a notice, a debugger), never what
// they are there to start.
bool isBystander(std::string_view name);

} // namespace letterloft
