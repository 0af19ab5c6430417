#include "platform/linux/PropertyListCheck.h"

#include "storage/Text.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <string>
#include <vector>

namespace letterloft {

namespace {

constexpr std::string_view blanks = " \t\r\n";

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view{}
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool isNumberInRange(std::string_view digits, auto smallest, int base) {
    decltype(smallest) value{};
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
    return read.ec == std::errc{} && read.ptr == digits.data() + digits.size();
}

bool isInteger(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with("-")) return isNumberInRange(text, std::int64_t{}, 10);
    if (text.starts_with("+")) text.remove_prefix(1);
    if (text.starts_with("0x") || text.starts_with("0X")) return isNumberInRange(text.substr(2), std::uint64_t{}, 16);
    return isNumberInRange(text, std::uint64_t{}, 10);
}

bool isReal(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with("+")) text.remove_prefix(1);
    double value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    return read.ec == std::errc{} && read.ptr == text.data() + text.size();
}

// "YYYY-MM-DDThh:mm:ssZ", on a day and at a time that there are.
bool isDate(std::string_view text) {
    constexpr std::string_view shape = "0000-00-00T00:00:00Z";
    if (text.size() != shape.size()) return false;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        const bool isDigit = text[i] >= '0' && text[i] <= '9';
        if (shape[i] == '0' ? !isDigit : text[i] != shape[i]) return false;
    }
    const auto number = [&](std::size_t at, std::size_t length) {
        int value = 0;
        std::from_chars(text.data() + at, text.data() + at + length, value);
        return value;
    };
    const std::chrono::year_month_day day{std::chrono::year{number(0, 4)},
                                          std::chrono::month{static_cast<unsigned>(number(5, 2))},
                                          std::chrono::day{static_cast<unsigned>(number(8, 2))}};
    return day.ok() && number(11, 2) < 24 && number(14, 2) < 60 && number(17, 2) < 60;
}

// Base64 (RFC 4648) with line breaks between.
bool isData(std::string_view text) {
    std::size_t digits = 0;
    std::size_t padding = 0;
    for (const char c : text) {
        if (isBlank(c)) continue;
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (c == '=')
            ++padding;
        else if (padding == 0 && (isLetter || (c >= '0' && c <= '9') || c == '+' || c == '/'))
            ++digits;
        else
            return false;
    }
    return padding <= 2 && (digits + padding) % 4 == 0;
}

// What stands between "&" and ";". Of numbered characters those that XML 1.0 has.
bool isReference(std::string_view name) {
    for (const std::string_view known : {"amp", "lt", "gt", "quot", "apos"}) {
        if (name == known) return true;
    }
    if (!name.starts_with("#")) return false;
    name.remove_prefix(1);
    const bool isHex = name.starts_with("x");
    if (isHex) name.remove_prefix(1);
    std::uint32_t value = 0;
    const auto read = std::from_chars(name.data(), name.data() + name.size(), value, isHex ? 16 : 10);
    if (read.ec != std::errc{} || read.ptr != name.data() + name.size()) return false;
    if (value < 0x20) return value == '\t' || value == '\n' || value == '\r';
    return value <= 0xd7ff || (value >= 0xe000 && value <= 0xfffd) || (value >= 0x10000 && value <= 0x10ffff);
}

// One pass over the text; the first thing that is wrong ends it. Bytes that are no UTF-8 pass: names may hold them.
class XmlReader final {
public:
    explicit XmlReader(std::string_view rest) : whole_{rest}, rest_{rest} {}

    Result<std::uint64_t> keys() {
        if (whole_.find('\0') != std::string_view::npos) return Status::failure("holds NUL characters");
        readProlog();
        if (!takeTag("plist", true)) return wrong("is no property list");
        readValues();
        if (!problem_.empty()) return Status::failure(problem_);
        skipMisc();
        if (!take("</plist>")) return wrong("has no end");
        skipMisc();
        if (!rest_.empty()) return wrong("goes on after its end");
        return keys_;
    }

private:
    enum class Container { dictionary, list };
    struct Level {
        Container container;
        bool awaitsValue; // of a dictionary: a key has come
    };

    bool take(std::string_view text) {
        if (!rest_.starts_with(text)) return false;
        rest_.remove_prefix(text.size());
        return true;
    }

    bool skipPast(std::string_view end) {
        const std::size_t at = rest_.find(end);
        if (at == std::string_view::npos) return false;
        rest_.remove_prefix(at + end.size());
        return true;
    }

    void skipWhile(auto isWanted) {
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), isWanted);
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.begin()));
    }

    // Blanks, comments and processing instructions.
    void skipMisc() {
        do {
            skipWhile(isBlank);
        } while ((rest_.starts_with("<!--") && skipPast("-->")) || (rest_.starts_with("<?") && skipPast("?>")));
    }

    // A document type is passed over, but not with declarations of its own: those could make a text of any size.
    void readProlog() {
        skipMisc();
        if (!take("<!DOCTYPE")) return;
        const std::size_t end = rest_.find_first_of("[>");
        if (end == std::string_view::npos || rest_[end] == '[') {
            problem_ = "declares entities of its own";
            return;
        }
        rest_.remove_prefix(end + 1);
        skipMisc();
    }

    bool takeTag(std::string_view name, bool mayHaveAttributes = false) {
        if (!problem_.empty() || !rest_.starts_with("<") || !rest_.substr(1).starts_with(name)) return false;
        const std::size_t end = rest_.find_first_of("<>", 1);
        if (end == std::string_view::npos || rest_[end] == '<') return false;
        const std::string_view between = rest_.substr(1 + name.size(), end - 1 - name.size());
        const bool isName = between.empty() || isBlank(between.front());
        if (!isName || (!mayHaveAttributes && !trimmed(between).empty())) return false;
        rest_.remove_prefix(end + 1);
        return true;
    }

    // The value at the top with all that is in it.
    void readValues() {
        do {
            skipMisc();
            readNext();
        } while (problem_.empty() && !levels_.empty());
    }

    void readNext() {
        if (!levels_.empty() && levels_.back().container == Container::dictionary && !levels_.back().awaitsValue) {
            if (take("</dict>")) return leave();
            if (!takeTag("key")) return fail("holds something else than a key in a dictionary");
            ++keys_;
            levels_.back().awaitsValue = true;
            return readText("key");
        }
        if (!levels_.empty() && levels_.back().container == Container::list && take("</array>")) return leave();
        readValue();
    }

    void readValue() {
        if (takeTag("dict")) return enter(Container::dictionary);
        if (takeTag("array")) return enter(Container::list);
        readScalar();
        valueHasCome();
    }

    void enter(Container container) {
        if (levels_.size() >= deepestPropertyList) return fail("is nested too deep");
        levels_.push_back({container, false});
    }

    void leave() {
        levels_.pop_back();
        valueHasCome();
    }

    void valueHasCome() {
        if (!levels_.empty()) levels_.back().awaitsValue = false;
    }

    void readScalar() {
        for (const std::string_view empty : {"<dict/>", "<array/>", "<string/>", "<data/>", "<true/>", "<false/>"}) {
            if (take(empty)) return;
        }
        if (takeTag("string")) return readText("string");
        if (takeTag("integer")) return readPlain("integer", isInteger);
        if (takeTag("real")) return readPlain("real", isReal);
        if (takeTag("date")) return readPlain("date", isDate);
        if (takeTag("data")) return readPlain("data", isData);
        if (takeTag("true")) return readPlain("true", [](std::string_view text) { return text.empty(); });
        if (takeTag("false")) return readPlain("false", [](std::string_view text) { return text.empty(); });
        fail("breaks off or holds something that is no value");
    }

    // Numbers, dates and data: nothing but their own characters.
    void readPlain(std::string_view name, bool (*isWhole)(std::string_view)) {
        const std::size_t end = rest_.find('<');
        const std::string_view text = rest_.substr(0, end);
        if (!isWhole(text)) return fail(filled("holds a value that is no %@", {std::string{name}}));
        rest_.remove_prefix(text.size());
        if (!take("</") || !take(name) || !take(">")) fail("breaks off");
    }

    void readText(std::string_view name) {
        while (problem_.empty()) {
            skipWhile([](char c) { return c != '<' && c != '&'; });
            if (take("&")) {
                readReference();
            } else if (rest_.starts_with("<!--") || rest_.starts_with("<![CDATA[")) {
                if (!skipPast(rest_.starts_with("<!--") ? "-->" : "]]>")) fail("breaks off");
            } else if (!take("</") || !take(name) || !take(">")) {
                return fail("holds a text that does not end");
            } else {
                return;
            }
        }
    }

    void readReference() {
        const std::size_t end = rest_.substr(0, 16).find(';');
        if (end == std::string_view::npos || !isReference(rest_.substr(0, end)))
            return fail("holds a \"&\" that stands for no character");
        rest_.remove_prefix(end + 1);
    }

    void fail(const std::string& problem) {
        if (problem_.empty()) problem_ = problem;
    }

    Status wrong(const std::string& problem) {
        fail(problem);
        return Status::failure(problem_);
    }

    std::string_view whole_;
    std::string_view rest_;
    std::vector<Level> levels_;
    std::uint64_t keys_ = 0;
    std::string problem_;
};

} // namespace

Result<std::uint64_t> keysOfXmlPropertyList(std::string_view bytes) { return XmlReader{bytes}.keys(); }

} // namespace letterloft
