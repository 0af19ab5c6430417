#pragma once

#include "platform/Status.h"

#include <cstdlib>
#include <memory>
#include <plist/plist.h>
#include <string>
#include <string_view>

namespace letterloft {

struct PropertyListDeleter {
    void operator()(void* node) const { plist_free(node); }
};

// A property list whose top is a dictionary, owned.
using PropertyList = std::unique_ptr<void, PropertyListDeleter>;

PropertyList emptyPropertyList();

// Goes through a dictionary or a list, in order. Neither may change meanwhile.
class PropertyListEntries final {
public:
    struct Entry {
        std::unique_ptr<char, decltype(&std::free)> key{nullptr, &std::free}; // none in a list
        plist_t value = nullptr;                                              // belongs to the container
    };

    explicit PropertyListEntries(plist_t container);
    ~PropertyListEntries();
    PropertyListEntries(const PropertyListEntries&) = delete;
    PropertyListEntries& operator=(const PropertyListEntries&) = delete;

    // Without a value at the end.
    Entry next();

private:
    plist_t container_;
    void* place_ = nullptr;
};

// Reads an XML or a binary property list. Strict where libplist 2.2 is not, because what is passed over at a load is
// lost at the next save: the bytes must be whole to the end, well-formed, without entities of their own, without two
// values under one key, no number, date or data out of shape or range. The reason for a refusal is the whole sentence
// but for its subject ("is empty").
Result<PropertyList> parsedPropertyList(std::string_view bytes);

// The bytes to write: XML, or binary where XML cannot hold a value (a control character, a fraction of a second). They
// hold exactly what was given, and where that could be in doubt have been read back; if they can't, the sentence says
// so.
Result<std::string> propertyListBytes(const PropertyList& list);

} // namespace letterloft
