#include "platform/linux/StartedProgram.h"

#include "platform/linux/Interpreter.h"
#include "platform/linux/ShellScript.h"
#include "storage/SupportFolder.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace letterloft {

namespace {

constexpr int deepestWrapper = 5;
constexpr std::size_t longestScript = std::size_t{1} << 18;

using Words = std::span<const std::string>;

struct Prefix {
    std::string_view name;
    std::vector<std::string_view> withValue; // options whose value stands in an argument of its own
    std::size_t operands = 0;                // before the program
};

// Programs that start the one named after them and are not it.
const std::vector<Prefix>& prefixes() {
    static const std::vector<Prefix> all{
        {"env", {"-u", "--unset", "-C", "--chdir", "-S", "--split-string"}},
        {"nice", {"-n", "--adjustment"}},
        {"ionice", {"-c", "-n", "--class", "--classdata"}},
        {"nohup", {}},
        {"setsid", {}},
        {"stdbuf", {"-i", "-o", "-e"}},
        {"setarch", {}, 1},
        {"taskset", {}, 1},
        {"chrt", {}, 1},
        {"timeout", {"-k", "-s"}, 1},
        {"prime-run", {}},
        {"gamemoderun", {}},
        {"primusrun", {}},
        {"optirun", {}},
        {"dbus-run-session", {"--config-file", "--dbus-daemon"}},
        {"dbus-launch", {}},
        {"systemd-inhibit", {}},
        {"xvfb-run", {"-n", "-s", "-e", "-f", "-p", "-w"}},
        {"command", {}},
    };
    return all;
}

bool isAssignment(const std::string& word) {
    const auto equals = word.find('=');
    return equals != std::string::npos && equals > 0 && word.front() != '-' && word.find('/') > equals;
}

Words afterPrefix(const Prefix& prefix, Words words) {
    std::size_t operands = prefix.operands;
    std::size_t i = 1;
    for (; i < words.size(); ++i) {
        const auto& withValue = prefix.withValue;
        if (words[i] == "--") return words.subspan(i + 1);
        if (std::find(withValue.begin(), withValue.end(), words[i]) != withValue.end())
            ++i;
        else if (words[i].starts_with('-') || isAssignment(words[i]))
            continue;
        else if (operands-- == 0)
            break;
    }
    return words.subspan(std::min(i, words.size()));
}

// The first word after the subcommand `run` that is no option.
std::string targetOfRun(Words words) {
    const auto run = std::find(words.begin(), words.end(), "run");
    if (run == words.end()) return {};
    const auto target = std::find_if(run + 1, words.end(), [](const auto& word) { return !word.starts_with('-'); });
    return target == words.end() ? std::string{} : *target;
}

class Resolver {
public:
    void resolve(Words words, int depth) {
        if (words.empty() || words.front().empty() || depth > deepestWrapper) return;
        const std::string name = lastComponent(words.front());
        const auto prefix =
            std::find_if(prefixes().begin(), prefixes().end(), [&](const Prefix& one) { return one.name == name; });
        if (prefix != prefixes().end()) return resolve(afterPrefix(*prefix, words), depth + 1);
        if (name == "flatpak") return addNamed(StartedProgram::Kind::flatpak, targetOfRun(words));
        if (name == "snap") return addSnap(targetOfRun(words));
        const auto found = programInPath(words.front());
        if (!found) return;
        const auto file = canonicalPath(*found);
        if (!file) return;
        if (lastComponent(*file) == "snap") return addSnap(name); // /snap/bin/NAME leads to /usr/bin/snap
        resolveFile(*file, words, depth);
    }

    std::vector<StartedProgram> programs;

private:
    void resolveFile(const std::string& file, Words words, int depth) {
        const std::vector<std::string> arguments{words.begin() + 1, words.end()};
        for (const auto& argument : arguments)
            if (argument.starts_with("--app-id=")) return addNamed(StartedProgram::Kind::webApp, argument, file);
        const std::string interpreter = interpreterName(words.front());
        // Also where the name leads to a script that picks one of several versions.
        if (isInterpreter(interpreter))
            resolveInterpreted(interpreter, file, arguments, depth);
        else
            addFile(file, depth);
    }

    void resolveInterpreted(const std::string& interpreter, const std::string& file,
                            const std::vector<std::string>& arguments, int depth) {
        if (const auto text = isShell(interpreter) ? shellText(arguments) : std::nullopt) {
            StartedProgram shell;
            shell.kind = StartedProgram::Kind::shellText;
            shell.name = *text;
            programs.push_back(shell);
            return resolveScript(*text, "", depth);
        }
        const auto script = scriptArgument(interpreter, arguments);
        const auto path = script ? canonicalPath(*script) : std::nullopt;
        if (path && path->starts_with('/') && script->starts_with('/')) return addScript(*path, interpreter, depth);
        // Nothing but the whole line tells `python3 -m mailer` from other programs in that language.
        if (arguments.empty()) return;
        StartedProgram line;
        line.kind = StartedProgram::Kind::commandLine;
        line.file = file;
        line.identity = identityOfFile(file);
        line.interpreter = interpreter;
        line.arguments = arguments;
        programs.push_back(line);
    }

    void addFile(const std::string& file, int depth) {
        const auto head = headOfFile(file, 256).value_or("");
        if (const auto interpreter = shebangInterpreter(head))
            return addScript(file, interpreterName(*interpreter), depth);
        StartedProgram program;
        // The mark of the second AppImage format, in the padding of the ELF header.
        if (head.size() > 10 && head.compare(8, 3, "AI\x02") == 0) program.kind = StartedProgram::Kind::appImage;
        program.file = file;
        program.identity = identityOfFile(file);
        add(std::move(program));
    }

    void addScript(const std::string& file, const std::string& interpreter, int depth) {
        StartedProgram script;
        script.kind = StartedProgram::Kind::script;
        script.file = file;
        script.identity = identityOfFile(file);
        script.interpreter = interpreter;
        script.isShellScript = isShell(interpreter);
        if (!add(script) || !script.isShellScript) return;
        if (const auto text = contentsOfSmallFile(file, longestScript)) resolveScript(*text, file, depth);
    }

    void resolveScript(const std::string& text, const std::string& file, int depth) {
        for (const auto& command : commandsOfShellScript(text, file)) {
            // Other commands of a file are at most helpers, or run below the shell that waits for them; a text is
            // written for the one thing it starts.
            const bool starts =
                file.empty() || command.replacesShell || command.inBackground || command.handsArgumentsOn;
            if (starts && !isBystander(lastComponent(command.words.front()))) resolve(command.words, depth + 1);
        }
    }

    void addNamed(StartedProgram::Kind kind, const std::string& name, const std::string& file = {}) {
        if (name.empty()) return;
        StartedProgram program;
        program.kind = kind;
        program.name = name;
        program.file = file;
        programs.push_back(program);
    }

    // "snap.NAME." begins the names of all control groups of a snap; "NAME.app" names one program of it.
    void addSnap(const std::string& name) { addNamed(StartedProgram::Kind::snap, name.substr(0, name.find('.'))); }

    // False if it is in the list already.
    bool add(StartedProgram program) {
        for (const auto& known : programs)
            if (known.kind == program.kind && known.file == program.file) return false;
        programs.push_back(std::move(program));
        return true;
    }
};

} // namespace

bool isBystander(std::string_view name) {
    static const std::vector<std::string_view> all{
        "[",
        "test",
        "echo",
        "printf",
        "set",
        "shift",
        "getopt",
        "getopts",
        "eval",
        "export",
        "local",
        "return",
        "exit",
        "cd",
        ".",
        "source",
        "trap",
        "case",
        "for",
        "cat",
        "sed",
        "awk",
        "grep",
        "logger",
        "man",
        "less",
        "more",
        "sleep",
        "wait",
        "kill",
        "rm",
        "mv",
        "cp",
        "ln",
        "mkdir",
        "touch",
        "chmod",
        "tee",
        "true",
        "false",
        "read",
        "ulimit",
        "umask",
        "unset",
        "gdb",
        "lldb",
        "strace",
        "ltrace",
        "valgrind",
        "zenity",
        "kdialog",
        "yad",
        "xmessage",
        "notify-send",
        "dirname",
        "basename",
        "readlink",
        "realpath",
        "xdg-open",
        "xset",
        "xrdb",
        "dbus-send",
        "gdbus",
        "gsettings",
        "sensible-browser",
        "x-www-browser",
        "systemctl",
        "id",
        "uname",
        "which",
        "locale",
    };
    return std::find(all.begin(), all.end(), name) != all.end();
}

std::vector<StartedProgram> programsStartedBy(const std::vector<std::string>& command) {
    Resolver resolver;
    resolver.resolve(command, 0);
    return std::move(resolver.programs);
}

} // namespace letterloft
