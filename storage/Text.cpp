#include "storage/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace letterloft {

namespace {

constexpr std::string_view placeholder = "%@";

// The length of the well-formed UTF-8 sequence at the start of `bytes`, 0 if there is none. `codePoint` is set with it.
std::size_t sequenceLength(std::string_view bytes, std::uint32_t& codePoint) {
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = at(0);
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) return 0;
    codePoint = lead & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xC0) != 0x80) return 0;
        codePoint = (codePoint << 6) | (at(i) & 0x3Fu);
    }
    const bool overlong = (length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000);
    const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    return overlong || surrogate || codePoint > 0x10FFFF ? 0 : length;
}

bool isControl(std::uint32_t c) { return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x2028 || c == 0x2029; }

void appendEscapedByte(std::string& out, unsigned char byte) {
    static constexpr char digits[] = "0123456789abcdef";
    switch (byte) {
    case '\n':
        out += "\\n";
        return;
    case '\t':
        out += "\\t";
        return;
    case '\r':
        out += "\\r";
        return;
    default:
        out += "\\x";
        out += digits[byte >> 4];
        out += digits[byte & 0xF];
    }
}

std::string filledWith(std::string_view text, std::initializer_list<TextValue> values,
                       std::string (*rendered)(std::string_view)) {
    std::string out;
    const auto* value = values.begin();
    while (!text.empty()) {
        const std::size_t next = value == values.end() ? std::string_view::npos : text.find(placeholder);
        out += text.substr(0, next);
        if (next == std::string_view::npos) break;
        out += *value ? rendered(**value) : "(null)";
        ++value;
        text.remove_prefix(next + placeholder.size());
    }
    return out;
}

} // namespace

std::string filled(std::string_view text, std::initializer_list<TextValue> values) {
    return filledWith(text, values, [](std::string_view value) { return std::string{value}; });
}

std::string filledForLog(std::string_view text, std::initializer_list<TextValue> values) {
    return filledWith(text, values, escaped);
}

std::string escaped(std::string_view value) {
    std::string out;
    while (!value.empty()) {
        std::uint32_t codePoint = 0;
        const std::size_t length = sequenceLength(value, codePoint);
        const std::size_t taken = length == 0 ? 1 : length;
        if (length == 0 || isControl(codePoint)) {
            for (const char byte : value.substr(0, taken))
                appendEscapedByte(out, static_cast<unsigned char>(byte));
        } else {
            out += value.substr(0, taken);
        }
        value.remove_prefix(taken);
    }
    return out;
}

bool isUtf8(std::string_view bytes) {
    const auto isAscii = [](unsigned char c) { return c < 0x80; };
    while (true) {
        const auto other = std::find_if_not(bytes.begin(), bytes.end(), isAscii);
        bytes.remove_prefix(static_cast<std::size_t>(other - bytes.begin()));
        if (bytes.empty()) return true;
        std::uint32_t codePoint = 0;
        const std::size_t length = sequenceLength(bytes, codePoint);
        if (length == 0) return false;
        bytes.remove_prefix(length);
    }
}

std::u16string utf16(std::string_view value) {
    std::u16string out;
    while (!value.empty()) {
        std::uint32_t codePoint = 0;
        const std::size_t length = sequenceLength(value, codePoint);
        if (length == 0) codePoint = 0xFFFD;
        if (codePoint < 0x10000) {
            out += static_cast<char16_t>(codePoint);
        } else {
            out += static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
            out += static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
        }
        value.remove_prefix(length == 0 ? 1 : length);
    }
    return out;
}

std::string listDescription(const std::vector<std::string>& names) {
    std::string out = "(";
    for (const std::string& name : names) {
        if (out.size() > 1) out += ", ";
        out += '"' + name + '"';
    }
    return out + ")";
}

} // namespace letterloft
