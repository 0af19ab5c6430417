#pragma once

#include "platform/Status.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace letterloft {

// The user's settings: property-list values under text keys. Owned by main; outlives the controllers. Main thread only.
// Keys and texts are UTF-8. Reads answer from memory, writes change memory; nothing read or written here fails.
class SettingsStore {
public:
    virtual ~SettingsStore() = default;

    // Whether anything stands under `key`, of whatever type; an empty list counts.
    virtual bool hasValue(const std::string& key) const = 0;

    // The text under `key`; absent when there is nothing or something that is no text.
    virtual std::optional<std::string> text(const std::string& key) const = 0;

    // The texts of the list under `key`, in order, without its values of other types; empty when there is no list.
    virtual std::vector<std::string> list(const std::string& key) const = 0;

    // How many texts `list` has, and the one at `index`, counted from 0; absent behind the last. Both in a time that
    // does not depend on the length of the list.
    virtual std::size_t countOfList(const std::string& key) const = 0;
    virtual std::optional<std::string> textInList(const std::string& key, std::size_t index) const = 0;

    // Whether `list` has the text, compared whole and case-sensitively.
    virtual bool isInList(const std::string& key, const std::string& text) const = 0;

    // Each replaces whatever stood under `key`, of whatever type.
    virtual void setText(const std::string& key, const std::string& text) = 0;
    virtual void setList(const std::string& key, const std::vector<std::string>& texts) = 0;

    // Afterwards nothing stands under `key`; no failure if nothing did.
    virtual void removeValue(const std::string& key) = 0;

    // Makes all that was written durable, after every file move that ended before it. On a failure the file holds its
    // old contents, or already the new ones, but always one of them whole, and the next call tries again.
    virtual Status synchronize() = 0;
};

} // namespace letterloft
