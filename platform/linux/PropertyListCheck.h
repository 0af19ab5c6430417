#pragma once

#include "platform/Status.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace letterloft {

// libplist recurses once for each level and takes time quadratic in the depth; at 100,000 levels it overruns the stack.
constexpr std::size_t deepestPropertyList = 128;
constexpr std::size_t largestPropertyList = std::size_t{16} << 20;

// Whether the bytes can be handed to libplist without harm or loss, and how many keys all their dictionaries hold
// together. A refusal is worded like that of parsedPropertyList.
Result<std::uint64_t> keysOfXmlPropertyList(std::string_view bytes);

// Objects may be shared in a binary property list, and libplist copies one for each mention: what a few bytes unfold to
// is limited as well. The format is that of CFBinaryPList.c.
Result<std::uint64_t> keysOfBinaryPropertyList(std::string_view bytes);

} // namespace letterloft
