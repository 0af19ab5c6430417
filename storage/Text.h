#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace letterloft {

// What fills a placeholder of a text; absent prints as "(null)".
using TextValue = std::optional<std::string>;

// The text with each "%@" replaced by the next value, in one pass: what a value holds is never taken for a placeholder.
// Nothing else in the text has a meaning. A placeholder without a value stays as it is.
std::string filled(std::string_view text, std::initializer_list<TextValue> values);

// The same for a line of the log: the values are escaped, the text's own line breaks stay.
std::string filledForLog(std::string_view text, std::initializer_list<TextValue> values);

// Control characters (C0, C1, DEL, the line and paragraph separators) and bytes that are no UTF-8 (RFC 3629) as "\n",
// "\t", "\r" or "\x1b"; everything else as it is.
std::string escaped(std::string_view value);

// Whether the bytes are well-formed UTF-8 (RFC 3629).
bool isUtf8(std::string_view bytes);

// The text in UTF-16 units; each byte that is no UTF-8 becomes one U+FFFD.
std::u16string utf16(std::string_view value);

// A list of names for the log, in parentheses, each name in quotation marks; not yet escaped.
std::string listDescription(const std::vector<std::string>& names);

} // namespace letterloft
