#include "platform/linux/PropertyListCheck.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

namespace letterloft {

namespace {

// The format: "bplist00", the objects, a table of where each begins, and 32 bytes at the end that tell how wide the
// table's entries and the references are, how many objects there are, which is the top, and where the table begins.
constexpr std::size_t trailerSize = 32;

enum Marker : unsigned {
    plain = 0x0,
    integer,
    real,
    date,
    data,
    ascii,
    utf16,
    uid = 0x8,
    list = 0xa,
    dictionary = 0xd
};

// What an object unfolds to.
struct Unfolded {
    std::uint64_t bytes;
    std::uint64_t keys;
};

class BinaryReader final {
public:
    explicit BinaryReader(std::string_view bytes) : bytes_{bytes} {}

    Result<std::uint64_t> keys() {
        if (!readTrailer()) return Status::failure("breaks off or holds no table of its values");
        const auto unfolded = unfold(top_, 0);
        if (!unfolded) return Status::failure(problem_);
        return unfolded->keys;
    }

private:
    struct Object {
        Marker marker;
        std::uint64_t begin;
        std::uint64_t length; // in bytes, units, values or pairs, by the marker
    };

    std::optional<std::uint64_t> number(std::uint64_t at, std::uint64_t width) const {
        if (width == 0 || width > 8 || at > bytes_.size() || bytes_.size() - at < width) return std::nullopt;
        std::uint64_t value = 0;
        for (std::uint64_t i = 0; i < width; ++i)
            value = value << 8 | static_cast<unsigned char>(bytes_[at + i]);
        return value;
    }

    bool readTrailer() {
        if (bytes_.size() < 8 + trailerSize) return false;
        const std::uint64_t trailer = bytes_.size() - trailerSize;
        offsetWidth_ = *number(trailer + 6, 1);
        referenceWidth_ = *number(trailer + 7, 1);
        objects_ = *number(trailer + 8, 8);
        top_ = *number(trailer + 16, 8);
        table_ = *number(trailer + 24, 8);
        return offsetWidth_ >= 1 && offsetWidth_ <= 8 && referenceWidth_ >= 1 && referenceWidth_ <= 8 &&
               table_ <= trailer && objects_ <= (trailer - table_) / offsetWidth_ && top_ < objects_;
    }

    // Lengths of 15 and more follow the marker as an integer of their own.
    std::optional<Object> object(std::uint64_t index) const {
        if (index >= objects_) return std::nullopt;
        const auto at = number(table_ + index * offsetWidth_, offsetWidth_);
        const auto marker = at ? number(*at, 1) : std::nullopt;
        if (!marker || *at >= table_) return std::nullopt;
        Object object{static_cast<Marker>(*marker >> 4), *at + 1, *marker & 0xf};
        const bool hasLength = object.marker >= data && object.marker != uid;
        if (!hasLength || object.length != 0xf) return object;
        const auto width = number(object.begin, 1);
        if (!width || *width >> 4 != integer || (*width & 0xf) > 3) return std::nullopt;
        const std::uint64_t size = std::uint64_t{1} << (*width & 0xf);
        const auto length = number(object.begin + 1, size);
        if (!length) return std::nullopt;
        return Object{object.marker, object.begin + 1 + size, *length};
    }

    // How many bytes the object's own contents take in the file; too many if they can't be there.
    std::optional<std::uint64_t> size(const Object& object) const {
        switch (object.marker) {
        case plain:
            return 0;
        case integer:
        case real:
        case date:
            if (object.length > 4) return std::nullopt;
            return std::uint64_t{1} << object.length;
        case uid:
            return object.length + 1;
        case data:
        case ascii:
            return object.length;
        case utf16:
            return times(object.length, 2);
        case list:
            return times(object.length, referenceWidth_);
        case dictionary:
            return times(object.length, 2 * referenceWidth_);
        }
        return std::nullopt;
    }

    // Whether libplist can take the object's contents as they are: it cuts off integers after 64 bits and texts at a
    // NUL, and drops what is no character.
    bool isFaithful(const Object& object) const {
        if (object.marker == integer && object.length == 4) return number(object.begin, 8) == 0u;
        if (object.marker == ascii) {
            const std::string_view text = bytes_.substr(object.begin, object.length);
            return std::all_of(text.begin(), text.end(), [](unsigned char c) { return c > 0 && c < 0x80; });
        }
        return object.marker != utf16 || isUtf16(object);
    }

    bool isUtf16(const Object& object) const {
        bool awaitsSecondHalf = false;
        for (std::uint64_t i = 0; i < object.length; ++i) {
            const std::uint64_t unit = *number(object.begin + 2 * i, 2);
            const bool isSecondHalf = unit >= 0xdc00 && unit <= 0xdfff;
            if (unit == 0 || isSecondHalf != awaitsSecondHalf) return false;
            awaitsSecondHalf = unit >= 0xd800 && unit <= 0xdbff;
        }
        return !awaitsSecondHalf;
    }

    std::optional<std::uint64_t> times(std::uint64_t count, std::uint64_t width) const {
        if (count > bytes_.size() / width) return std::nullopt;
        return count * width;
    }

    std::optional<Unfolded> unfold(std::uint64_t index, std::size_t depth) {
        if (const auto known = unfolded_.find(index); known != unfolded_.end()) return known->second;
        if (depth > deepestPropertyList) return fail("is nested too deep or in a circle");
        const auto found = object(index);
        const auto length = found ? size(*found) : std::nullopt;
        if (!length || found->begin > table_ || *length > table_ - found->begin)
            return fail("breaks off or points outside of itself");
        if (!isFaithful(*found)) return fail("holds a text or a number that can't be read exactly");
        Unfolded sum{*length + 16, 0};
        const bool isDictionary = found->marker == dictionary;
        if (isDictionary) sum.keys = found->length;
        const std::uint64_t references = found->marker == list || isDictionary ? *length / referenceWidth_ : 0;
        for (std::uint64_t i = 0; i < references; ++i) {
            const auto below = unfold(*number(found->begin + i * referenceWidth_, referenceWidth_), depth + 1);
            if (!below) return std::nullopt;
            sum.bytes += below->bytes;
            sum.keys += below->keys;
            if (sum.bytes > largestPropertyList) return fail("unfolds to more than 16 MiB");
        }
        unfolded_.emplace(index, sum);
        return sum;
    }

    std::nullopt_t fail(const char* problem) {
        problem_ = problem;
        return std::nullopt;
    }

    std::string_view bytes_;
    std::uint64_t offsetWidth_ = 0;
    std::uint64_t referenceWidth_ = 0;
    std::uint64_t objects_ = 0;
    std::uint64_t top_ = 0;
    std::uint64_t table_ = 0;
    std::unordered_map<std::uint64_t, Unfolded> unfolded_;
    const char* problem_ = "";
};

} // namespace

Result<std::uint64_t> keysOfBinaryPropertyList(std::string_view bytes) { return BinaryReader{bytes}.keys(); }

} // namespace letterloft
