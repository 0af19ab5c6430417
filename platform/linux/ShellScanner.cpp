#include "platform/linux/ShellScanner.h"

#include "storage/SupportFolder.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace letterloft {

namespace {

bool isOneOf(std::initializer_list<std::string_view> words, std::string_view word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool isKeyword(const std::string& word) {
    return isOneOf({"if", "then", "else", "elif", "fi", "do", "done", "while", "until", "!", "{", "}", "time"}, word);
}

} // namespace

ShellScanner::ShellScanner(const std::string& text, const std::string& script, int depth)
    : text_{text}, script_{script}, folder_{script.empty() ? "" : folderOf(script)}, depth_{depth} {}

std::vector<ShellCommand> ShellScanner::commands() {
    while (at_ < text_.size())
        step();
    endCommand();
    return std::move(commands_);
}

void ShellScanner::step() {
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

void ShellScanner::skipTo(char end) { at_ = std::min(text_.find(end, at_), text_.size()); }

void ShellScanner::readOperator(char c) {
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
void ShellScanner::readRedirection() {
    if (word_.isThere && word_.values.size() == 1 &&
        std::all_of(word_.values[0].begin(), word_.values[0].end(),
                    [](unsigned char d) { return std::isdigit(d) != 0; }))
        word_ = {};
    endWord();
    const bool isHereDocument = text_.compare(at_, 2, "<<") == 0 && next(2) != '<';
    while (at_ < text_.size() && isOneOf({"<", ">", "&", "|", "-"}, std::string_view{&text_[at_], 1}))
        ++at_;
    while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t'))
        ++at_;
    while (at_ < text_.size() && std::string_view{" \t\r\n;|&()<>"}.find(text_[at_]) == std::string_view::npos)
        readPart();
    if (isHereDocument && !word_.values.empty()) hereDocuments_.push_back(word_.values.front());
    word_ = {};
}

void ShellScanner::skipHereDocuments() {
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

void ShellScanner::endWord() {
    if (word_.isThere || word_.handsArgumentsOn)
        words_.push_back(std::move(word_));
    else if (word_.isUntold)
        isUntold_ = true;
    word_ = {};
}

// "NAME=value"; its every value from now on, beside the earlier ones, since another branch may have set those.
bool ShellScanner::takeAssignment(const Word& word) {
    const auto equals = word.values.front().find('=');
    if (equals == std::string::npos || equals == 0) return false;
    const std::string name = word.values.front().substr(0, equals);
    if (!std::all_of(name.begin(), name.end(), isNameCharacter)) return false;
    auto& known = variables_[name];
    for (const auto& value : word.values)
        if (known.size() < mostAlternatives && value.size() > equals + 1) known.push_back(value.substr(equals + 1));
    return true;
}

void ShellScanner::endCommand(bool inBackground) {
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
        } else if (!takeAssignment(word) && !isOneOf({"export", "local", "readonly", "declare", "typeset"}, text) &&
                   !isKeyword(text)) {
            break;
        }
    }
    if (first < words.size()) return addCommand(std::move(command), words, first);
    if (isUntold && (words.empty() || command.replacesShell)) {
        command.words.emplace_back();
        commands_.push_back(std::move(command));
    }
}

void ShellScanner::addCommand(ShellCommand command, const std::vector<Word>& words, std::size_t first) {
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
        if (!one.words.empty() || one.handsArgumentsOn) finish(std::move(one));
    }
}

void ShellScanner::finish(ShellCommand command) {
    if (command.words.empty()) return commands_.push_back(std::move(command));
    std::string& program = command.words.front();
    if (program == "cd" && command.words.size() > 1) folder_ = command.words.back();
    if (program.find('/') != std::string::npos && program.front() != '/' && !folder_.empty())
        program = joined(folder_, program);
    commands_.push_back(std::move(command));
}

std::vector<ShellCommand> commandsOfShellScript(const std::string& text, const std::string& script) {
    return ShellScanner{text, script, 0}.commands();
}

} // namespace letterloft
