#include "platform/linux/PropertyList.h"

#include "platform/linux/PropertyListCheck.h"
#include "storage/Text.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <locale.h>

namespace letterloft {

namespace {

// libplist 2.2 reads reals with atof(3): where the locale's decimal point is a comma 0.5 would become 0.
class PlainLocale final {
public:
    PlainLocale() : plain_{newlocale(LC_ALL_MASK, "C", nullptr)}, former_{plain_ ? uselocale(plain_) : nullptr} {}
    ~PlainLocale() {
        if (!plain_) return;
        uselocale(former_);
        freelocale(plain_);
    }
    PlainLocale(const PlainLocale&) = delete;
    PlainLocale& operator=(const PlainLocale&) = delete;

private:
    locale_t plain_;
    locale_t former_;
};

bool isContainer(plist_t node) { return PLIST_IS_DICT(node) || PLIST_IS_ARRAY(node); }

// Numbers that an XML file holds as <dict><key>CF$UID</key>… are one node to libplist.
std::uint64_t keysBelow(plist_t node, bool fromXml) {
    if (PLIST_IS_UID(node)) return fromXml ? 1 : 0;
    if (!isContainer(node)) return 0;
    std::uint64_t keys = PLIST_IS_DICT(node) ? plist_dict_get_size(node) : 0;
    PropertyListEntries entries{node};
    for (auto entry = entries.next(); entry.value; entry = entries.next())
        keys += keysBelow(entry.value, fromXml);
    return keys;
}

std::string_view bytesOf(plist_t node) {
    std::uint64_t length = 0;
    const char* bytes = PLIST_IS_STRING(node) ? plist_get_string_ptr(node, &length) : plist_get_data_ptr(node, &length);
    return bytes ? std::string_view{bytes, length} : std::string_view{};
}

bool sameScalar(plist_t a, plist_t b) {
    if (PLIST_IS_STRING(a) || PLIST_IS_DATA(a)) return bytesOf(a) == bytesOf(b);
    if (PLIST_IS_REAL(a)) {
        double left = 0;
        double right = 0;
        plist_get_real_val(a, &left);
        plist_get_real_val(b, &right);
        return std::memcmp(&left, &right, sizeof left) == 0 || (left != left && right != right);
    }
    return plist_compare_node_value(a, b);
}

bool sameTree(plist_t a, plist_t b) {
    if (plist_get_node_type(a) != plist_get_node_type(b)) return false;
    if (!isContainer(a)) return sameScalar(a, b);
    PropertyListEntries left{a};
    PropertyListEntries right{b};
    while (true) {
        const auto one = left.next();
        const auto other = right.next();
        if (!one.value || !other.value) return !one.value && !other.value;
        if (one.key && (!other.key || std::strcmp(one.key.get(), other.key.get()) != 0)) return false;
        if (!sameTree(one.value, other.value)) return false;
    }
}

std::string xmlOf(const PropertyList& list) {
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(list.get(), &bytes, &length);
    std::string xml{bytes ? bytes : "", bytes ? length : 0};
    plist_to_xml_free(bytes);
    return xml;
}

std::string binaryOf(const PropertyList& list) {
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(list.get(), &bytes, &length);
    std::string binary{bytes ? bytes : "", bytes ? length : 0};
    plist_to_bin_free(bytes);
    return binary;
}

// Control characters, the carriage return (which readers turn into a line feed), U+FFFE and U+FFFF have no place in
// XML 1.0, though libplist writes and reads them.
bool hasXmlCharacters(const std::string& utf8) {
    const bool controls =
        std::any_of(utf8.begin(), utf8.end(), [](unsigned char c) { return c < 0x20 && c != '\t' && c != '\n'; });
    return !controls && utf8.find("\xef\xbf\xbe") == std::string::npos &&
           utf8.find("\xef\xbf\xbf") == std::string::npos;
}

bool isListOfTexts(plist_t node) {
    if (!PLIST_IS_ARRAY(node)) return false;
    PropertyListEntries entries{node};
    for (auto entry = entries.next(); entry.value; entry = entries.next())
        if (!PLIST_IS_STRING(entry.value)) return false;
    return true;
}

// Whether the XML of a list, its characters being proper, can be nothing but right: texts and lists of texts, which are
// all that this program puts in, are written in one way only. To read them back takes several times as long as to write
// them.
bool isCertain(const PropertyList& list, std::string_view xml) {
    if (xml.size() > largestPropertyList || !xml.ends_with("</plist>\n")) return false;
    PropertyListEntries entries{list.get()};
    for (auto entry = entries.next(); entry.value; entry = entries.next())
        if (!PLIST_IS_STRING(entry.value) && !isListOfTexts(entry.value)) return false;
    return true;
}

bool readsBackAs(const PropertyList& list, std::string_view bytes) {
    const Result<PropertyList> read = parsedPropertyList(bytes);
    return read && sameTree(list.get(), read->get());
}

} // namespace

PropertyListEntries::PropertyListEntries(plist_t container) : container_{container} {
    if (PLIST_IS_DICT(container_))
        plist_dict_new_iter(container_, &place_);
    else
        plist_array_new_iter(container_, &place_);
}

PropertyListEntries::~PropertyListEntries() { std::free(place_); }

PropertyListEntries::Entry PropertyListEntries::next() {
    Entry entry;
    if (PLIST_IS_DICT(container_)) {
        char* key = nullptr;
        plist_dict_next_item(container_, place_, &key, &entry.value);
        entry.key.reset(key);
    } else {
        plist_array_next_item(container_, place_, &entry.value);
    }
    return entry;
}

PropertyList emptyPropertyList() { return PropertyList{plist_new_dict()}; }

Result<PropertyList> parsedPropertyList(std::string_view bytes) {
    if (bytes.empty()) return Status::failure("is empty");
    if (bytes.size() > largestPropertyList) return Status::failure("is larger than 16 MiB");
    const PlainLocale plain;
    const auto length = static_cast<std::uint32_t>(bytes.size());
    const bool binary = bytes.substr(0, 6) == "bplist";
    const Result<std::uint64_t> keys = binary ? keysOfBinaryPropertyList(bytes) : keysOfXmlPropertyList(bytes);
    if (!keys) return keys.status();
    plist_t node = nullptr;
    if (binary)
        plist_from_bin(bytes.data(), length, &node);
    else
        plist_from_xml(bytes.data(), length, &node);
    PropertyList list{node};
    if (!list) return Status::failure("is no property list");
    if (!PLIST_IS_DICT(node)) return Status::failure("holds no dictionary at its top");
    if (keysBelow(node, !binary) != *keys) return Status::failure("holds two values under one key");
    return list;
}

Result<std::string> propertyListBytes(const PropertyList& list) {
    const PlainLocale plain;
    std::string bytes = xmlOf(list);
    // Bytes that are no UTF-8 have no place in XML either, but a binary list would lose them.
    const bool isText = isUtf8(bytes);
    const bool isProper = isText && hasXmlCharacters(bytes);
    if (isProper && isCertain(list, bytes)) return bytes;
    if ((isProper || !isText) && readsBackAs(list, bytes)) return bytes;
    bytes = binaryOf(list);
    if (readsBackAs(list, bytes)) return bytes;
    if (bytes.size() > largestPropertyList) return Status::failure("the settings are larger than 16 MiB");
    return Status::failure("the settings hold a value that no property list can hold");
}

} // namespace letterloft
