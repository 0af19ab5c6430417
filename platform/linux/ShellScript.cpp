#include "platform/linux/ShellScript.h"

#include "platform/linux/ProgramFiles.h"
#include "storage/SupportFolder.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace letterloft {

namespace {

constexpr std::size_t mostAlternatives = 8;
constexpr int deepestSubstitution = 4;

using Alternatives = std::vector<std::string>;

void append(Alternatives& to, const Alternatives& values) {
    Alternatives all;
    for (const auto& head : to)
        for (const auto& tail : values)
            if (all.size() < mostAlternatives) all.push_back(head + tail);
    to = std::move(all);
}

bool isNameCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool holdsWord(std::initializer_list<std::string_view> words, std::string_view word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// One pass over a text, with what is known of the variables so far.
class Scanner {
public:
    Scanner(const std::string& text, const std::string& script, int depth)
        : text_{text}, script_{script}, folder_{script.empty() ? "" : folderOf(script)}, depth_{depth} {}

    std::vector<ShellCommand> commands() {
        while (at_ < text_.size())
            step();
        endCommand();
        return std::move(commands_);
    }

    // The text of one word, for `${NAME:-word}`.
    Alternatives expandedText(std::map<std::string, Alternatives> variables) {
        variables_ = std::move(variables);
        while (at_ < text_.size())
            readPart();
        return word_.values;
    }

    std::map<std::string, Alternatives> variables_;

private:
    struct Word {
        Alternatives values{std::string{}};
        bool isThere = false;
        bool isUntold = false; // holds what can't be told
        bool handsArgumentsOn = false;
    };

    char next(std::size_t ahead = 1) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }

    void addText(std::string_view text) {
        append(word_.values, {std::string{text}});
        word_.isThere = true;
    }

    void step() {
        const char c = text_[at_];
        if (c == ' ' || c == '\t' || c == '\r') {
            endWord();
            ++at_;
        } else if (c == '#' && !word_.isThere) {
            skipTo('\n');
        } else if (c == '\n' || c == ';' || c == '(' || c == ')' || c == '|' || c == '&') {
            readOperator(c);
        } else if (c == '<' || c == '>') {
            readRedirection();
        } else {
            readPart();
        }
    }

    void skipTo(char end) { at_ = std::min(text_.find(end, at_), text_.size()); }

    void readOperator(char c) {
        if (c == '&' && next() == '>') { // "&>file" is no background
            ++at_;
            readRedirection();
            return;
        }
        const bool isDouble = c != '\n' && c != '(' && c != ')' && next() == c;
        endWord();
        // "(…)" and "$(…)" of an array assignment hold no command, but finding none in them does no harm.
        endCommand(c == '&' && !isDouble);
        at_ += isDouble ? 2 : 1;
        if (c == '\n') skipHereDocuments();
    }

    // Drops the file that input comes from or output goes to, and a number before it ("2>&1").
    void readRedirection() {
        if (word_.isThere && word_.values.size() == 1 &&
            std::all_of(word_.values[0].begin(), word_.values[0].end(),
                        [](unsigned char d) { return std::isdigit(d) != 0; }))
            word_ = {};
        endWord();
        const bool isHereDocument = text_.compare(at_, 2, "<<") == 0 && next(2) != '<';
        while (at_ < text_.size() && holdsWord({"<", ">", "&", "|", "-"}, std::string_view{&text_[at_], 1}))
            ++at_;
        while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t'))
            ++at_;
        while (at_ < text_.size() && std::string_view{" \t\r\n;|&()<>"}.find(text_[at_]) == std::string_view::npos)
            readPart();
        if (isHereDocument && !word_.values.empty()) hereDocuments_.push_back(word_.values.front());
        word_ = {};
    }

    void skipHereDocuments() {
        for (const auto& end : hereDocuments_) {
            while (at_ < text_.size()) {
                const std::size_t start = at_;
                skipTo('\n');
                std::string_view line{text_.data() + start, at_ - start};
                line.remove_prefix(std::min(line.find_first_not_of('\t'), line.size()));
                ++at_;
                if (line == end) break;
            }
        }
        hereDocuments_.clear();
        at_ = std::min(at_, text_.size());
    }

    // One piece of a word: a quoted stretch, an expansion, a character.
    void readPart() {
        const char c = text_[at_];
        if (c == '\\') {
            if (next() != '\n') addText(text_.substr(at_ + 1, 1));
            at_ += 2;
        } else if (c == '\'') {
            const std::size_t end = std::min(text_.find('\'', at_ + 1), text_.size());
            addText(std::string_view{text_}.substr(at_ + 1, end - at_ - 1));
            at_ = end + 1;
        } else if (c == '"') {
            readQuoted();
        } else if (c == '$') {
            readExpansion();
        } else if (c == '`') {
            const std::size_t end = std::min(text_.find('`', at_ + 1), text_.size());
            addSubstitution(text_.substr(at_ + 1, end - at_ - 1));
            at_ = end + 1;
        } else {
            addText(text_.substr(at_++, 1));
        }
        at_ = std::min(at_, text_.size());
    }

    void readQuoted() {
        ++at_;
        addText("");
        while (at_ < text_.size() && text_[at_] != '"') {
            if (text_[at_] == '\'' ||
                (text_[at_] == '\\' && !holdsWord({"$", "`", "\"", "\\", "\n"}, text_.substr(at_ + 1, 1))))
                addText(text_.substr(at_++, 1));
            else
                readPart();
        }
        ++at_;
    }

    void readExpansion() {
        const char c = next();
        if (c == '(') {
            readSubstitution();
        } else if (c == '{') {
            const std::size_t end = closing('{', '}');
            addParameter(text_.substr(at_ + 2, end - at_ - 2));
            at_ = end + 1;
        } else if (isNameCharacter(c)) {
            std::size_t end = at_ + 2;
            if (std::isdigit(static_cast<unsigned char>(c)) == 0)
                while (end < text_.size() && isNameCharacter(text_[end]))
                    ++end;
            addParameter(text_.substr(at_ + 1, end - at_ - 1));
            at_ = end;
        } else if (c == '@' || c == '*') {
            word_.handsArgumentsOn = true;
            at_ += 2;
        } else {
            addText(text_.substr(at_++, 1));
        }
    }

    std::size_t closing(char open, char close) const {
        int depth = 0;
        for (std::size_t i = at_; i < text_.size(); ++i) {
            if (text_[i] == open) ++depth;
            if (text_[i] == close && --depth == 0) return i;
        }
        return text_.size();
    }

    void readSubstitution() {
        const std::size_t end = closing('(', ')');
        if (next(2) != '(') addSubstitution(text_.substr(at_ + 2, end - at_ - 2));
        at_ = end + 1;
    }

    // `$(…)`: the few programs that scripts find their own folder with.
    void addSubstitution(const std::string& text) {
        if (depth_ >= deepestSubstitution) return;
        Scanner inner{text, script_, depth_ + 1};
        inner.variables_ = variables_;
        Alternatives answer;
        for (const auto& command : inner.commands())
            if (const auto printed = printedBy(command.words)) answer.push_back(*printed);
        word_.isUntold = answer.empty();
        if (answer.empty()) return;
        append(word_.values, {answer.back()});
        word_.isThere = true;
    }

    static std::optional<std::string> printedBy(const std::vector<std::string>& words) {
        if (words.size() < 2 || words.back().empty()) return std::nullopt;
        const std::string program = lastComponent(words.front());
        if (program == "dirname") return folderOf(words.back());
        if (program == "basename") return lastComponent(words[1]);
        if (program == "readlink" || program == "realpath") return canonicalPath(words.back());
        if (program == "cd") return words.back();
        if (program == "which" || (program == "command" && words.size() > 2)) return programInPath(words.back());
        if (program == "echo") return words.back();
        return std::nullopt;
    }

    // What stands between the braces of "${…}".
    void addParameter(const std::string& parameter) {
        std::size_t end = 0;
        while (end < parameter.size() && isNameCharacter(parameter[end]))
            ++end;
        const std::string name = parameter.substr(0, end);
        const std::string rest = parameter.substr(end);
        if (parameter.find('@') != std::string::npos && (name.empty() || name == "1")) {
            word_.handsArgumentsOn = true;
            return;
        }
        Alternatives values = valuesOf(name);
        const auto fallback = rest.find_first_of("-=");
        if (!rest.empty() && fallback <= 1 && depth_ < deepestSubstitution) {
            const Alternatives other = Scanner{rest.substr(fallback + 1), script_, depth_ + 1}.expandedText(variables_);
            values.insert(values.end(), other.begin(), other.end());
            if (rest[fallback] == '=') variables_[name] = values;
        }
        if (rest == "%/*")
            for (auto& value : values)
                value = folderOf(value);
        else if (rest == "##*/")
            for (auto& value : values)
                value = lastComponent(value);
        word_.isUntold = values.empty();
        if (values.empty()) return;
        append(word_.values, values);
        word_.isThere = true;
    }

    Alternatives valuesOf(const std::string& name) const {
        if ((name == "0" || name == "BASH_SOURCE") && !script_.empty()) return {script_};
        if (const auto known = variables_.find(name); known != variables_.end()) return known->second;
        if (name == "PWD" && !folder_.empty()) return {folder_};
        const char* value = std::getenv(name.c_str());
        return value && *value ? Alternatives{value} : Alternatives{};
    }

    void endWord() {
        if (word_.isThere || word_.handsArgumentsOn)
            words_.push_back(std::move(word_));
        else if (word_.isUntold)
            isUntold_ = true;
        word_ = {};
    }

    static bool isKeyword(const std::string& word) {
        return holdsWord({"if", "then", "else", "elif", "fi", "do", "done", "while", "until", "!", "{", "}", "time"},
                         word);
    }

    // "NAME=value"; its every value from now on, beside the earlier ones, since another branch may have set those.
    bool takeAssignment(const Word& word) {
        const auto equals = word.values.front().find('=');
        if (equals == std::string::npos || equals == 0) return false;
        const std::string name = word.values.front().substr(0, equals);
        if (!std::all_of(name.begin(), name.end(), isNameCharacter)) return false;
        auto& known = variables_[name];
        for (const auto& value : word.values)
            if (known.size() < mostAlternatives && value.size() > equals + 1) known.push_back(value.substr(equals + 1));
        return true;
    }

    void endCommand(bool inBackground = false) {
        endWord();
        std::vector<Word> words = std::move(words_);
        words_.clear();
        ShellCommand command;
        command.inBackground = inBackground;
        command.place = place_++;
        const bool isUntold = std::exchange(isUntold_, false);
        std::size_t first = 0;
        for (; first < words.size(); ++first) {
            const Word& word = words[first];
            if (word.handsArgumentsOn) break;
            const std::string& text = word.values.front();
            if (text == "exec") {
                command.replacesShell = true;
                if (first + 1 < words.size() && words[first + 1].values.front() == "-a") first += 2;
            } else if (!takeAssignment(word) &&
                       !holdsWord({"export", "local", "readonly", "declare", "typeset"}, text) && !isKeyword(text)) {
                break;
            }
        }
        if (first < words.size()) return addCommand(std::move(command), words, first);
        if (isUntold && (words.empty() || command.replacesShell)) {
            command.words.emplace_back();
            commands_.push_back(std::move(command));
        }
    }

    void addCommand(ShellCommand command, const std::vector<Word>& words, std::size_t first) {
        for (std::size_t i = first; i < words.size(); ++i)
            command.handsArgumentsOn = command.handsArgumentsOn || words[i].handsArgumentsOn;
        // Every value of the words counts, in step where several have more than one.
        std::size_t count = 1;
        for (std::size_t i = first; i < words.size(); ++i)
            count = std::max(count, words[i].values.size());
        for (std::size_t n = 0; n < count; ++n) {
            ShellCommand one = command;
            for (std::size_t i = first; i < words.size(); ++i)
                if (words[i].isThere && !(words[i].handsArgumentsOn && words[i].values.front().empty()))
                    one.words.push_back(words[i].values[std::min(n, words[i].values.size() - 1)]);
            if (!one.words.empty()) finish(std::move(one));
        }
    }

    void finish(ShellCommand command) {
        std::string& program = command.words.front();
        if (program == "cd" && command.words.size() > 1) folder_ = command.words.back();
        if (program.find('/') != std::string::npos && program.front() != '/' && !folder_.empty())
            program = joined(folder_, program);
        commands_.push_back(std::move(command));
    }

    const std::string text_;
    const std::string script_;
    std::string folder_;
    int depth_;
    std::size_t at_ = 0;
    Word word_;
    std::vector<Word> words_;
    bool isUntold_ = false; // a word of this command is, and was left out
    int place_ = 0;
    std::vector<std::string> hereDocuments_;
    std::vector<ShellCommand> commands_;
};

} // namespace

std::vector<ShellCommand> commandsOfShellScript(const std::string& text, const std::string& script) {
    return Scanner{text, script, 0}.commands();
}

} // namespace letterloft
