#include "platform/linux/MoveMarks.h"

#include <array>
#include <random>

namespace letterloft {

namespace {

const std::string prefix = ".letterloft-";
constexpr std::string_view digits = "0123456789abcdef";
constexpr std::size_t numberLength = 16;

constexpr std::array kinds{MoveMark::Kind::note, MoveMark::Kind::staging, MoveMark::Kind::aside};

const char* suffix(MoveMark::Kind kind) {
    switch (kind) {
    case MoveMark::Kind::note:
        return ".note";
    case MoveMark::Kind::staging:
        return ".staging";
    case MoveMark::Kind::aside:
        break;
    }
    return ".aside";
}

} // namespace

MoveMark MoveMark::fresh() {
    std::random_device source;
    std::string number;
    while (number.size() < numberLength)
        number += digits[source() % digits.size()];
    return {number};
}

std::string MoveMark::name(Kind kind) const { return prefix + number + suffix(kind); }

std::optional<MoveNote> MoveNote::fromText(const std::string& text) {
    const std::size_t slash = text.find('/');
    if (slash == 0 || slash == std::string::npos) return std::nullopt;
    const std::string item = text.substr(0, slash);
    if (item == "." || item == "..") return std::nullopt;
    return MoveNote{item, text.substr(slash)};
}

std::optional<FoundMark> moveMarkNamed(const std::string& name) {
    if (!name.starts_with(prefix) || name.size() <= prefix.size() + numberLength) return std::nullopt;
    const MoveMark mark{name.substr(prefix.size(), numberLength)};
    if (mark.number.find_first_not_of(digits) != std::string::npos) return std::nullopt;
    for (const MoveMark::Kind kind : kinds)
        if (mark.name(kind) == name) return FoundMark{mark, kind};
    return std::nullopt;
}

} // namespace letterloft
