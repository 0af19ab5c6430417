#pragma once

#include <string>
#include <vector>

namespace letterloft {

// What a shell script starts, as far as can be told without running it: plain assignments, "$0" and the usual ways of
// telling the script's own folder are followed, conditions are not (every branch counts), sourced files are not read.
struct ShellCommand {
    // The program first; what can't be told is left out, but a program of which nothing can be told is empty. No words
    // where the arguments handed on are all there is.
    std::vector<std::string> words;

    int place = 0; // in the order of the script; the values of one command share theirs

    bool replacesShell = false;    // `exec`
    bool inBackground = false;     // `&`
    bool handsArgumentsOn = false; // "$@" or $*
};

// `script` is where the text stands (absolute), for "$0"; empty for the text of `sh -c`. A word with several possible
// values yields a command for each, a few at most.
std::vector<ShellCommand> commandsOfShellScript(const std::string& text, const std::string& script);

} // namespace letterloft
