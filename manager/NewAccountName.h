#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// How a new account gets its name. Texts are compared and counted in UTF-16 units.
namespace letterloft {

// The name after the greatest one of `names` that contains "Default User"; not checked against `names`, so in rare
// cases one of them.
std::string newAccountName(const std::vector<std::string>& names);

// Whether the name contains "Default User", compared without regard to case.
bool containsDefaultUser(std::u16string_view name);

// Orders unit by unit, but two runs of ASCII digits that stand against each other by their value, however long they
// are. Leading zeros count for nothing: "07" and "7" are equal.
std::weak_ordering compareNumerically(std::u16string_view left, std::u16string_view right);

// The number at the start of the text: white space, a sign if there is one, ASCII digits; 0 if there are no digits.
// What is beyond 32 bits becomes the nearest end.
std::int32_t intValue(std::u16string_view text);

} // namespace letterloft
