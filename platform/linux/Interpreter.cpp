#include "platform/linux/Interpreter.h"

#include "storage/SupportFolder.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace letterloft {

namespace {

// The options that end the search, because what they give is run instead of a file, and those whose value stands in an
// argument of its own.
struct Usage {
    std::string_view interpreter;
    std::vector<std::string_view> insteadOfFile;
    std::vector<std::string_view> withValue;
};

const std::vector<Usage>& usages() {
    static const std::vector<Usage> all{
        {"python", {"-c", "-m", "-"}, {"-W", "-X", "--check-hash-based-pycs"}},
        {"pypy", {"-c", "-m", "-"}, {"-W", "-X"}},
        {"perl", {"-e", "-E"}, {"-I"}},
        {"ruby", {"-e"}, {"-I", "-r", "-C", "-E"}},
        {"node", {"-e", "-p", "--eval", "--print"}, {"-r", "--require", "-C", "--import"}},
        {"nodejs", {"-e", "-p", "--eval", "--print"}, {"-r", "--require", "-C", "--import"}},
        {"gjs", {"-c"}, {"-I", "--include-path"}},
        {"php", {"-r"}, {"-c", "-d"}},
        {"lua", {"-e"}, {"-l"}},
        {"mono", {}, {}},
        {"dotnet", {}, {}},
        {"electron", {}, {"-r", "--require"}},
        {"wine", {}, {}},
        {"wine-stable", {}, {}},
        {"wine-development", {}, {}},
        {"wineconsole", {}, {}},
        {"tclsh", {}, {}},
        {"wish", {}, {}},
        {"guile", {"-c"}, {"-L", "-l", "-e"}},
        {"sh", {"-c", "-s"}, {"-o", "+o"}},
        {"dash", {"-c", "-s"}, {"-o", "+o"}},
        {"ash", {"-c", "-s"}, {"-o", "+o"}},
        {"bash", {"-c", "-s"}, {"-o", "+o", "-O", "+O", "--rcfile", "--init-file"}},
        {"rbash", {"-c", "-s"}, {"-o", "+o", "-O", "+O"}},
        {"ksh", {"-c", "-s"}, {"-o", "+o"}},
        {"mksh", {"-c", "-s"}, {"-o", "+o"}},
        {"zsh", {"-c", "-s"}, {"-o", "+o"}},
    };
    return all;
}

const Usage* usageOf(const std::string& interpreter) {
    const auto found = std::find_if(usages().begin(), usages().end(),
                                    [&](const Usage& usage) { return usage.interpreter == interpreter; });
    return found == usages().end() ? nullptr : &*found;
}

bool holds(const std::vector<std::string_view>& options, std::string_view option) {
    return std::find(options.begin(), options.end(), option) != options.end();
}

std::vector<std::string> wordsOf(std::string_view line) {
    std::vector<std::string> words;
    std::string word;
    for (const char c : line) {
        if (c != ' ' && c != '\t' && c != '\r') {
            word += c;
        } else if (!word.empty()) {
            words.push_back(std::move(word));
            word.clear();
        }
    }
    if (!word.empty()) words.push_back(std::move(word));
    return words;
}

} // namespace

std::string interpreterName(std::string_view path) {
    const std::string name = lastComponent(path);
    const auto isDigit = [&](std::size_t at) {
        return at < name.size() && std::isdigit(static_cast<unsigned char>(name[at])) != 0;
    };
    std::size_t end = 0;
    while (end < name.size() && std::isalpha(static_cast<unsigned char>(name[end])) != 0)
        ++end;
    const bool isVersion = isDigit(end) || (name.compare(end, 1, "-") == 0 && isDigit(end + 1));
    // "gjs-console" is what /usr/bin/gjs leads to; any other name that goes on is a program of its own.
    return isVersion || name.substr(end) == "-console" ? name.substr(0, end) : name;
}

bool isShell(const std::string& name) {
    constexpr std::array shells{"sh", "bash", "dash", "ash", "rbash", "ksh", "mksh", "zsh"};
    return std::find(shells.begin(), shells.end(), name) != shells.end();
}

bool isInterpreter(const std::string& name) { return name == "java" || usageOf(name) != nullptr; }

std::optional<std::string> shebangInterpreter(std::string_view head) {
    if (!head.starts_with("#!")) return std::nullopt;
    const auto words = wordsOf(head.substr(2, std::min(head.find('\n'), head.size()) - 2));
    if (words.empty()) return std::nullopt;
    if (lastComponent(words.front()) != "env") return words.front();
    for (std::size_t i = 1; i < words.size(); ++i)
        if (words[i].front() != '-' && words[i].find('=') == std::string::npos) return words[i];
    return std::nullopt;
}

std::optional<std::string> scriptArgument(const std::string& interpreter, const std::vector<std::string>& arguments) {
    if (interpreter == "java") {
        const auto jar = std::find(arguments.begin(), arguments.end(), "-jar");
        return jar == arguments.end() || jar + 1 == arguments.end() ? std::nullopt : std::optional{*(jar + 1)};
    }
    const Usage* usage = usageOf(interpreter);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--") return i + 1 < arguments.size() ? std::optional{arguments[i + 1]} : std::nullopt;
        if (usage && holds(usage->insteadOfFile, argument)) return std::nullopt;
        if (usage && holds(usage->withValue, argument))
            ++i;
        else if (!argument.starts_with('-') && !argument.empty())
            return argument;
    }
    return std::nullopt;
}

std::optional<std::string> shellText(const std::vector<std::string>& arguments) {
    for (std::size_t i = 0; i + 1 < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (!argument.starts_with('-')) return std::nullopt;
        // "-c" may stand together with others, as in "-lc".
        if (!argument.starts_with("--") && argument.find('c') != std::string::npos) return arguments[i + 1];
        if (argument == "-o") ++i;
    }
    return std::nullopt;
}

} // namespace letterloft
