#pragma once

#include "platform/linux/ShellScript.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace letterloft {

// One pass over the text of a shell script, with what is known of its variables so far. Used once.
class ShellScanner {
public:
    using Alternatives = std::vector<std::string>; // the values one word may have
    static constexpr std::size_t mostAlternatives = 8;

    // `script` is as in commandsOfShellScript(); `depth` counts the texts that this one stands in.
    ShellScanner(const std::string& text, const std::string& script, int depth);

    std::vector<ShellCommand> commands();

    static std::string folderOf(const std::string& path);

private:
    using Variables = std::map<std::string, Alternatives>;

    struct Word {
        Alternatives values{std::string{}};
        bool isThere = false;
        bool isUntold = false; // holds what can't be told
        bool handsArgumentsOn = false;
    };

    void step();
    void skipTo(char end);
    void readOperator(char c);
    void readRedirection();
    void skipHereDocuments();
    void endWord();
    bool takeAssignment(const Word& word);
    void endCommand(bool inBackground = false);
    void addCommand(ShellCommand command, const std::vector<Word>& words, std::size_t first);
    void finish(ShellCommand command);

    static bool isNameCharacter(char c);
    char next(std::size_t ahead = 1) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }
    void addText(std::string_view text);
    void readPart();
    void readQuoted();
    void readExpansion();
    std::size_t closing(char open, char close) const;
    void readSubstitution();
    void addSubstitution(const std::string& text);
    Alternatives expandedText(Variables variables);
    void addParameter(const std::string& parameter);
    Alternatives valuesOf(const std::string& name) const;

    const std::string text_;
    const std::string script_;
    std::string folder_;
    int depth_;
    std::size_t at_ = 0;
    Variables variables_;
    Word word_;
    std::vector<Word> words_;
    bool isUntold_ = false; // a word of this command is, and was left out
    int place_ = 0;
    std::vector<std::string> hereDocuments_;
    std::vector<ShellCommand> commands_;
};

} // namespace letterloft
