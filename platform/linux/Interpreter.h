#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace letterloft {

// Programs that run another file: that file is what they are.

// The name without its folder and version: "python" for "/usr/bin/python3.11".
std::string interpreterName(std::string_view path);

bool isShell(const std::string& name);
bool isInterpreter(const std::string& name);

// The interpreter that the "#!" line at the start of a file names (execve(2)), `env` seen through; none without one.
std::optional<std::string> shebangInterpreter(std::string_view head);

// What comes after the interpreter on its command line: the file it runs, as written there. None where it runs a text
// (`-c`), a module (`-m`), or nothing but itself.
std::optional<std::string> scriptArgument(const std::string& interpreter, const std::vector<std::string>& arguments);

// The text that `sh -c text` runs.
std::optional<std::string> shellText(const std::vector<std::string>& arguments);

} // namespace letterloft
