#include "platform/linux/StartedProgram.h"

#include "platform/linux/Interpreter.h"
#include "platform/linux/LaunchingPrograms.h"
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
constexpr std::size_t mostPrograms = 64;
constexpr std::size_t longestScript = std::size_t{1} << 16; // longer ones unpack themselves

using Words = std::span<const std::string>;
using Arguments = std::vector<std::string>;

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
        if (const auto told = wordsAfterPrefix(words)) return resolve(*told, depth + 1);
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
        if (words.size() == 1) return addFile(file, {}, depth);
        for (std::size_t i = 1; i < words.size(); ++i) {
            const std::string& option = words[i];
            for (const std::string_view name : {"--command=", "--execute="})
                if (option.starts_with(name)) return resolveScript(option.substr(name.size()), "", {}, depth);
            if (option != "-e" && option != "-x" && option != "--" && option != "--command" && option != "--execute")
                continue;
            const Words told = words.subspan(i + 1);
            // Some take the whole command line as one word.
            const bool isLine = option != "--" && !told.empty() && told.front().find(' ') != std::string::npos;
            return isLine ? resolveScript(told.front(), "", {}, depth) : resolve(told, depth + 1);
        }
        addCommandLine(interpreterName(file), file, {words.begin() + 1, words.end()});
    }

    void resolveFile(const std::string& file, Words words, int depth) {
        const std::vector<std::string> arguments{words.begin() + 1, words.end()};
        for (const auto& argument : arguments)
            if (argument.starts_with("--app-id=") || argument.starts_with("--app=http"))
                return addNamed(StartedProgram::Kind::webApp, argument, file);
        const std::string interpreter = interpreterName(words.front());
        // Also where the name leads to a script that picks one of several versions.
        if (isInterpreter(interpreter))
            resolveInterpreted(interpreter, file, arguments, depth);
        else
            addFile(file, arguments, depth);
    }

    void resolveInterpreted(const std::string& interpreter, const std::string& file,
                            const std::vector<std::string>& arguments, int depth) {
        if (const auto text = isShell(interpreter) ? shellText(arguments) : std::nullopt) {
            StartedProgram shell;
            shell.kind = StartedProgram::Kind::shellText;
            shell.name = *text;
            programs.push_back(shell);
            return resolveScript(*text, "", {std::find(arguments.begin(), arguments.end(), *text) + 1, arguments.end()},
                                 depth);
        }
        const auto script = scriptArgument(interpreter, arguments);
        const auto path = script ? canonicalPath(*script) : std::nullopt;
        // What Wine runs shows names of its own.
        if (path && path->starts_with('/') && script->starts_with('/') && !interpreter.starts_with("wine"))
            return addScript(*path, interpreter,
                             {std::find(arguments.begin(), arguments.end(), *script) + 1, arguments.end()}, depth);
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

    void addFile(const std::string& file, const Arguments& arguments, int depth) {
        const auto head = headOfFile(file, 256).value_or("");
        if (const auto interpreter = shebangInterpreter(head))
            return addScript(file, interpreterName(*interpreter), arguments, depth);
        StartedProgram program;
        // The mark of the second AppImage format, in the padding of the ELF header.
        if (head.size() > 10 && head.compare(8, 3, "AI\x02") == 0) program.kind = StartedProgram::Kind::appImage;
        program.file = file;
        program.identity = identityOfFile(file);
        program.arguments = arguments;
        add(std::move(program));
    }

    void addScript(const std::string& file, const std::string& interpreter, const Arguments& arguments, int depth) {
        StartedProgram script;
        script.kind = StartedProgram::Kind::script;
        script.file = file;
        script.identity = identityOfFile(file);
        script.interpreter = interpreter;
        script.arguments = arguments;
        script.isShellScript = isShell(interpreter);
        if (!add(script) || !script.isShellScript) return;
        const auto text = contentsOfSmallFile(file, longestScript);
        if (text) resolveScript(*text, file, arguments, depth);
    }

    void resolveScript(const std::string& text, const std::string& file, const Arguments& handedOn, int depth) {
        const bool wasInScript = std::exchange(isInScript_, true);
        auto commands = commandsOfShellScript(text, file);
        std::erase_if(commands, [](const auto& one) {
            return !one.words.empty() && isBystander(lastComponent(one.words.front()));
        });
        for (const auto& command : commands) {
            // What comes before it only helps. In a file one that the shell waits for runs below it, and is found
            // there.
            const bool isLast = command.place == commands.back().place && (file.empty() || command.inBackground);
            if (!isLast && !command.replacesShell && !command.handsArgumentsOn) continue;
            std::vector<std::string> words = command.words;
            if (command.handsArgumentsOn) words.insert(words.end(), handedOn.begin(), handedOn.end());
            resolve(words, depth + 1);
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

    // False if it is in the list already; a script, also with other arguments.
    bool add(StartedProgram program) {
        if (programs.size() >= mostPrograms) return false;
        for (const auto& known : programs)
            if (known.kind == program.kind && known.file == program.file &&
                (known.arguments == program.arguments || program.isShellScript))
                return false;
        programs.push_back(std::move(program));
        return true;
    }

    bool isInScript_ = false;
};

} // namespace

bool StartedProgram::isSameProgramAs(const StartedProgram& other) const {
    if (kind != other.kind || name != other.name || identity != other.identity) return false;
    return kind == Kind::commandLine ? arguments == other.arguments : identity || !name.empty();
}

std::vector<StartedProgram> programsStartedBy(const std::vector<std::string>& command) {
    Resolver resolver;
    resolver.resolve(command, 0);
    return std::move(resolver.programs);
}

} // namespace letterloft
