#pragma once

#include <string>
#include <vector>

namespace letterloft {

// What a shell script starts, as far as can be told without running it: plain assignments, "$0" and the usual ways of
// telling the script's own folder are followed, conditions are not (every branch counts), sourced files are not read.
struct ShellCommand {
    std::vector<std::string> words; // the program first; what can't be told is left out

    bool replacesShell = false;    // `exec`
    bool inBackground = false;     // `&`
    bool handsArgumentsOn = false; // "$@" or $*
};

// `script` is where the text stands (absolute), for "$0"; empty for the text of `sh -c`. A word with several possible
// values yields a command for each, a few at most.
std::vector<ShellCommand> commandsOfShellScript(const std::string& text, const std::string& script);

} // namespace letterloft
