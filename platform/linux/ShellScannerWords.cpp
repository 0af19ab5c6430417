#include "platform/linux/ShellScanner.h"

#include "platform/linux/ProgramFiles.h"
#include "storage/SupportFolder.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <optional>
#include <utility>

namespace letterloft {

namespace {

constexpr int deepestSubstitution = 4;

void append(ShellScanner::Alternatives& to, const ShellScanner::Alternatives& values) {
    ShellScanner::Alternatives all;
    for (const auto& head : to)
        for (const auto& tail : values)
            if (all.size() < ShellScanner::mostAlternatives) all.push_back(head + tail);
    to = std::move(all);
}

std::optional<std::string> printedBy(const std::vector<std::string>& words) {
    if (words.size() < 2 || words.back().empty()) return std::nullopt;
    const std::string program = lastComponent(words.front());
    if (program == "dirname") return ShellScanner::folderOf(words.back());
    if (program == "basename") return lastComponent(words[1]);
    if (program == "readlink" || program == "realpath") return canonicalPath(words.back());
    if (program == "cd") return words.back();
    if (program == "which" || (program == "command" && words.size() > 2)) return programInPath(words.back());
    if (program == "echo") return words.back();
    return std::nullopt;
}

} // namespace

bool ShellScanner::isNameCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

std::string ShellScanner::folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// In place: words are long where data stand in a script.
void ShellScanner::addText(std::string_view text) {
    for (auto& value : word_.values)
        value += text;
    word_.isThere = true;
}

// One piece of a word: a quoted stretch, an expansion, a character.
void ShellScanner::readPart() {
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

void ShellScanner::readQuoted() {
    ++at_;
    addText("");
    while (at_ < text_.size() && text_[at_] != '"') {
        if (text_[at_] == '\'' ||
            (text_[at_] == '\\' && std::string_view{"$`\"\\\n"}.find(next()) == std::string_view::npos))
            addText(text_.substr(at_++, 1));
        else
            readPart();
    }
    ++at_;
}

void ShellScanner::readExpansion() {
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

std::size_t ShellScanner::closing(char open, char close) const {
    int depth = 0;
    for (std::size_t i = at_; i < text_.size(); ++i) {
        if (text_[i] == open) ++depth;
        if (text_[i] == close && --depth == 0) return i;
    }
    return text_.size();
}

void ShellScanner::readSubstitution() {
    const std::size_t end = closing('(', ')');
    if (next(2) != '(') addSubstitution(text_.substr(at_ + 2, end - at_ - 2));
    at_ = end + 1;
}

// `$(…)`: the few programs that scripts find their own folder with.
void ShellScanner::addSubstitution(const std::string& text) {
    if (depth_ >= deepestSubstitution) return;
    ShellScanner inner{text, script_, depth_ + 1};
    inner.variables_ = variables_;
    Alternatives answer;
    for (const auto& command : inner.commands())
        if (const auto printed = printedBy(command.words)) answer.push_back(*printed);
    word_.isUntold = answer.empty();
    if (answer.empty()) return;
    append(word_.values, {answer.back()});
    word_.isThere = true;
}

// The text of one word, for `${NAME:-word}`.
ShellScanner::Alternatives ShellScanner::expandedText(Variables variables) {
    variables_ = std::move(variables);
    while (at_ < text_.size())
        readPart();
    return word_.values;
}

// What stands between the braces of "${…}".
void ShellScanner::addParameter(const std::string& parameter) {
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
        const Alternatives other =
            ShellScanner{rest.substr(fallback + 1), script_, depth_ + 1}.expandedText(variables_);
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

ShellScanner::Alternatives ShellScanner::valuesOf(const std::string& name) const {
    if ((name == "0" || name == "BASH_SOURCE") && !script_.empty()) return {script_};
    if (const auto known = variables_.find(name); known != variables_.end()) return known->second;
    if (name == "PWD" && !folder_.empty()) return {folder_};
    const char* value = std::getenv(name.c_str());
    return value && *value ? Alternatives{value} : Alternatives{};
}

} // namespace letterloft
