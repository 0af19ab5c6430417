#include "manager/NewAccountName.h"

#include "storage/SettingsKeys.h"
#include "storage/Text.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <set>

namespace letterloft {

namespace {

constexpr std::u16string_view defaultUserFolded = u"default user";

bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

// Unicode's White_Space, all of which lies in the first plane.
bool isWhiteSpace(char16_t unit) {
    return (unit >= 0x09 && unit <= 0x0D) || (unit >= 0x2000 && unit <= 0x200A) ||
           std::u16string_view{u"\x20\x85\xA0\x1680\x2028\x2029\x202F\x205F\x3000"}.find(unit) !=
               std::u16string_view::npos;
}

// As far as "default user" needs it: the long s is the only letter outside ASCII that Unicode folds to one of its own
// (CaseFolding.txt; the Kelvin sign folds to k, which it does not have).
char16_t folded(char16_t unit) {
    if (unit >= u'A' && unit <= u'Z') return static_cast<char16_t>(unit + (u'a' - u'A'));
    return unit == u'\u017F' ? u's' : unit;
}

// Takes the run of digits off the front of the text, and returns it without its leading zeros.
std::u16string_view takeNumber(std::u16string_view& text) {
    const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
    std::u16string_view number = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(number.size());
    number.remove_prefix(std::min(number.find_first_not_of(u'0'), number.size()));
    return number;
}

} // namespace

std::string newAccountName(const std::vector<std::string>& names) {
    std::optional<std::u16string> pick;
    for (const std::string& name : std::set<std::string>(names.begin(), names.end())) {
        std::u16string candidate = utf16(name);
        if (!containsDefaultUser(candidate)) continue;
        if (!pick || std::is_gt(compareNumerically(candidate, *pick))) pick = std::move(candidate);
    }
    std::string base = keys::defaultUser;
    if (!pick) return base;
    // Counted from the start of the whole name, wherever "Default User" stands in it.
    const std::int32_t number = intValue(std::u16string_view{*pick}.substr(defaultUserFolded.size()));
    if (number == 0) return base + "1";
    // After the greatest number comes the least.
    const bool isGreatest = number == std::numeric_limits<std::int32_t>::max();
    return base + std::to_string(isGreatest ? std::numeric_limits<std::int32_t>::min() : number + 1);
}

bool containsDefaultUser(std::u16string_view name) {
    std::u16string text{name};
    std::transform(text.begin(), text.end(), text.begin(), folded);
    return text.find(defaultUserFolded) != std::u16string::npos;
}

std::weak_ordering compareNumerically(std::u16string_view left, std::u16string_view right) {
    while (!left.empty() && !right.empty()) {
        if (isDigit(left.front()) && isDigit(right.front())) {
            const std::u16string_view leftNumber = takeNumber(left);
            const std::u16string_view rightNumber = takeNumber(right);
            if (leftNumber.size() != rightNumber.size()) return leftNumber.size() <=> rightNumber.size();
            if (const int order = leftNumber.compare(rightNumber)) return order <=> 0;
        } else {
            if (left.front() != right.front()) return left.front() <=> right.front();
            left.remove_prefix(1);
            right.remove_prefix(1);
        }
    }
    return left.size() <=> right.size();
}

std::int32_t intValue(std::u16string_view text) {
    constexpr std::int64_t least = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t greatest = std::numeric_limits<std::int32_t>::max();
    while (!text.empty() && isWhiteSpace(text.front()))
        text.remove_prefix(1);
    const bool isNegative = !text.empty() && text.front() == u'-';
    if (isNegative || (!text.empty() && text.front() == u'+')) text.remove_prefix(1);
    std::int64_t value = 0;
    for (const char16_t digit : takeNumber(text))
        value = std::min(value * 10 + (digit - u'0'), -least);
    return static_cast<std::int32_t>(isNegative ? -value : std::min(value, greatest));
}

} // namespace letterloft
