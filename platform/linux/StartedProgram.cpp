#include "platform/linux/StartedProgram.h"

#include "platform/linux/Interpreter.h"
#include "platform/linux/ShellScript.h"
#include "storage/SupportFolder.h"

#include <algorithm>
#include <cstdlib>
#include <span>
#include <sstream>
#include <string_view>
#include <utility>

namespace letterloft {

namespace {

constexpr int deepestWrapper = 5;
constexpr std::size_t longestScript = std::size_t{1} << 18;

using Words = std::span<const std::string>;

struct Prefix {
    std::string_view name;
    std::vector<std::string_view> withValue; // options whose value stands in an argument of its own
    std::size_t operands = 0;                // before the program
    std::vector<std::string_view> withTwoValues = {};
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
        {"xdg-terminal-exec", {}},
        {"firejail", {}},
        {"pkexec", {"--user"}},
        {"systemd-run",
         {"-p", "--property", "-u", "--unit", "-E", "--setenv", "--slice", "-H", "--host", "-M", "--machine",
          "--description", "--working-directory", "--uid", "--gid", "--nice", "--service-type"}},
        {"bwrap",
         {"--args",
          "--argv0",
          "--userns",
          "--userns2",
          "--pidns",
          "--uid",
          "--gid",
          "--hostname",
          "--chdir",
          "--unsetenv",
          "--lock-file",
          "--sync-fd",
          "--remount-ro",
          "--exec-label",
          "--file-label",
          "--proc",
          "--dev",
          "--tmpfs",
          "--mqueue",
          "--dir",
          "--seccomp",
          "--info-fd",
          "--block-fd",
          "--userns-block-fd",
          "--json-status-fd",
          "--add-seccomp-fd",
          "--cap-add",
          "--cap-drop",
          "--perms",
          "--size"},
         0,
         {"--setenv", "--bind", "--bind-try", "--dev-bind", "--dev-bind-try", "--ro-bind", "--ro-bind-try", "--file",
          "--bind-data", "--ro-bind-data", "--symlink", "--chmod"}},
    };
    return all;
}

bool holds(const std::vector<std::string_view>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// What is told to run in them is the application; with nothing told they are it themselves.
bool isTerminal(std::string_view name) {
    static const std::vector<std::string_view> all{"x-terminal-emulator",
                                                   "xterm",
                                                   "uxterm",
                                                   "lxterm",
                                                   "rxvt",
                                                   "urxvt",
                                                   "mlterm",
                                                   "st",
                                                   "gnome-terminal",
                                                   "gnome-terminal.wrapper",
                                                   "kgx",
                                                   "ptyxis",
                                                   "mate-terminal",
                                                   "mate-terminal.wrapper",
                                                   "xfce4-terminal",
                                                   "xfce4-terminal.wrapper",
                                                   "lxterminal",
                                                   "konsole",
                                                   "qterminal",
                                                   "terminator",
                                                   "terminology",
                                                   "tilix",
                                                   "tilix.wrapper",
                                                   "sakura",
                                                   "kitty",
                                                   "alacritty",
                                                   "foot",
                                                   "footclient",
                                                   "wezterm",
                                                   "cool-retro-term"};
    return holds(all, name.substr(name.rfind('/') + 1));
}

bool isAssignment(const std::string& word) {
    const auto equals = word.find('=');
    return equals != std::string::npos && equals > 0 && word.front() != '-' && word.find('/') > equals;
}

Words afterPrefix(const Prefix& prefix, Words words) {
    std::size_t operands = prefix.operands;
    std::size_t i = 1;
    for (; i < words.size(); ++i) {
        if (words[i] == "--") return words.subspan(i + 1);
        if (holds(prefix.withValue, words[i]))
            ++i;
        else if (holds(prefix.withTwoValues, words[i]))
            i += 2;
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
        if (!found) return addMissing(words.front(), name);
        const auto file = canonicalPath(*found);
        if (!file) return;
        if (lastComponent(*file) == "snap") return addSnap(name); // /snap/bin/NAME leads to /usr/bin/snap
        if (isTerminal(name) || isTerminal(*file)) return resolveTerminal(*file, words, depth);
        resolveFile(*file, words, depth);
    }

    std::vector<StartedProgram> programs;

private:
    void resolveTerminal(const std::string& file, Words words, int depth) {
        if (words.size() == 1) return addFile(file, depth);
        for (std::size_t i = 1; i < words.size(); ++i) {
            const std::string& option = words[i];
            for (const std::string_view name : {"--command=", "--execute="})
                if (option.starts_with(name)) return resolveScript(option.substr(name.size()), "", depth);
            if (!holds({"-e", "-x", "--", "--command", "--execute"}, option)) continue;
            const Words told = words.subspan(i + 1);
            // Some take the whole command line as one word.
            const bool isLine = option != "--" && !told.empty() && told.front().find(' ') != std::string::npos;
            return isLine ? resolveScript(told.front(), "", depth) : resolve(told, depth + 1);
        }
        addCommandLine(interpreterName(file), file, {words.begin() + 1, words.end()});
    }

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
        if (!arguments.empty()) addCommandLine(interpreter, file, arguments);
    }

    void addCommandLine(const std::string& interpreter, const std::string& file,
                        const std::vector<std::string>& arguments) {
        StartedProgram line;
        line.kind = StartedProgram::Kind::commandLine;
        line.file = file;
        line.identity = identityOfFile(file);
        line.interpreter = interpreter;
        line.arguments = arguments;
        programs.push_back(line);
    }

    // Its file is gone, which ends nobody who runs it.
    void addMissing(const std::string& program, const std::string& name) {
        // What a script names may never have been there.
        if (isInScript_ || isInterpreter(interpreterName(name)) || isTerminal(name)) return;
        std::istringstream folders{program.starts_with('/') ? "/" : std::getenv("PATH") ? std::getenv("PATH") : ""};
        for (std::string folder; std::getline(folders, folder, ':');) {
            StartedProgram missing;
            missing.file = canonicalPathOfMissing(program.starts_with('/') ? program : joined(folder, program));
            add(std::move(missing));
        }
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
        const bool wasInScript = std::exchange(isInScript_, true);
        auto commands = commandsOfShellScript(text, file);
        std::erase_if(commands, [](const auto& one) { return isBystander(lastComponent(one.words.front())); });
        for (const auto& command : commands) {
            // What comes before it only helps. In a file one that the shell waits for runs below it, and is found
            // there.
            const bool isLast = command.place == commands.back().place && (file.empty() || command.inBackground);
            if (isLast || command.replacesShell || command.handsArgumentsOn) resolve(command.words, depth + 1);
        }
        isInScript_ = wasInScript;
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

    bool isInScript_ = false;
};

} // namespace

bool isBystander(std::string_view name) {
    static const std::vector<std::string_view> all{"[",
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
                                                   "locale"};
    return holds(all, name);
}

std::vector<StartedProgram> programsStartedBy(const std::vector<std::string>& command) {
    Resolver resolver;
    resolver.resolve(command, 0);
    return std::move(resolver.programs);
}

} // namespace letterloft
