#include "platform/linux/PlistSettingsStore.h"

#include "storage/Text.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace letterloft {

namespace {

std::optional<std::string> textOf(plist_t node) {
    if (!PLIST_IS_STRING(node)) return std::nullopt;
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return std::string{text, length};
}

plist_t valueAt(const PropertyList& values, const std::string& key) {
    const bool holdsNul = key.find('\0') != std::string::npos; // libplist would look for what stands before it
    return holdsNul ? nullptr : plist_dict_get_item(values.get(), key.c_str());
}

} // namespace

Result<std::unique_ptr<PlistSettingsStore>> PlistSettingsStore::load(const std::string& path, FileSystemCalls& calls,
                                                                     Log& log, MakeMovesDurable makeMovesDurable) {
    SettingsFile file{path, calls};
    Result<PropertyList> values = file.read();
    if (!values) return values.status();
    return std::unique_ptr<PlistSettingsStore>{
        new PlistSettingsStore{std::move(*values), std::move(file), log, std::move(makeMovesDurable)}};
}

PlistSettingsStore::PlistSettingsStore(PropertyList values, SettingsFile file, Log& log,
                                       MakeMovesDurable makeMovesDurable)
    : values_{std::move(values)}, file_{std::move(file)}, log_{log}, makeMovesDurable_{std::move(makeMovesDurable)} {}

bool PlistSettingsStore::hasValue(const std::string& key) const { return valueAt(values_, key) != nullptr; }

std::optional<std::string> PlistSettingsStore::text(const std::string& key) const {
    return textOf(valueAt(values_, key));
}

std::vector<std::string> PlistSettingsStore::list(const std::string& key) const {
    const Texts* const texts = textsUnder(key);
    return texts ? *texts : Texts{};
}

std::size_t PlistSettingsStore::countOfList(const std::string& key) const {
    const Texts* const texts = textsUnder(key);
    return texts ? texts->size() : 0;
}

std::optional<std::string> PlistSettingsStore::textInList(const std::string& key, std::size_t index) const {
    const Texts* const texts = textsUnder(key);
    return texts && index < texts->size() ? std::optional{(*texts)[index]} : std::nullopt;
}

bool PlistSettingsStore::isInList(const std::string& key, const std::string& text) const {
    const Texts* const texts = textsUnder(key);
    return texts && std::find(texts->begin(), texts->end(), text) != texts->end();
}

// A node of the property list finds its entries one after the other only.
const PlistSettingsStore::Texts* PlistSettingsStore::textsUnder(const std::string& key) const {
    if (const auto read = texts_.find(key); read != texts_.end()) return &read->second;
    plist_t list = valueAt(values_, key);
    if (!PLIST_IS_ARRAY(list)) return nullptr;
    Texts& texts = texts_[key];
    PropertyListEntries entries{list};
    for (auto entry = entries.next(); entry.value; entry = entries.next()) {
        if (auto text = textOf(entry.value)) texts.push_back(std::move(*text));
    }
    return &texts;
}

void PlistSettingsStore::noteChange(const std::string& key) {
    texts_.erase(key);
    changed_ = true;
}

void PlistSettingsStore::setText(const std::string& key, const std::string& value) {
    if (!canStore(key, {value}) || text(key) == value) return;
    plist_dict_set_item(values_.get(), key.c_str(), plist_new_string(value.c_str()));
    noteChange(key);
}

void PlistSettingsStore::setList(const std::string& key, const std::vector<std::string>& texts) {
    if (!canStore(key, texts)) return;
    plist_t array = valueAt(values_, key);
    const Texts* const former = PLIST_IS_ARRAY(array) ? textsUnder(key) : nullptr;
    const bool hasOnlyTexts = former && plist_array_get_size(array) == former->size();
    if (hasOnlyTexts && *former == texts) return;
    // Most changes add one at the end, and a list may be long.
    auto added = texts.begin();
    if (hasOnlyTexts && former->size() < texts.size() && std::equal(former->begin(), former->end(), texts.begin()))
        added += static_cast<std::ptrdiff_t>(former->size());
    else
        plist_dict_set_item(values_.get(), key.c_str(), array = plist_new_array());
    for (; added != texts.end(); ++added)
        plist_array_append_item(array, plist_new_string(added->c_str()));
    noteChange(key);
    texts_[key] = texts;
}

void PlistSettingsStore::removeValue(const std::string& key) {
    if (!hasValue(key)) return;
    plist_dict_remove_item(values_.get(), key.c_str());
    noteChange(key);
}

// The moves first: no setting on the disk may be newer than the moves it speaks of.
Status PlistSettingsStore::synchronize() {
    Status status = makeMovesDurable_();
    if (status && changed_) status = save();
    if (!status) {
        log_.write(filledForLog("The settings could not be saved to \"%@\": %@", {file_.path(), status.sentence()}));
    }
    return status;
}

Status PlistSettingsStore::save() {
    const Result<std::string> bytes = propertyListBytes(values_);
    if (!bytes) return bytes.status();
    Status status = file_.replace(*bytes, log_);
    if (status) changed_ = false;
    return status;
}

bool PlistSettingsStore::canStore(const std::string& key, const std::vector<std::string>& texts) const {
    const auto holdsNul = [](const std::string& text) { return text.find('\0') != std::string::npos; };
    if (!holdsNul(key) && std::none_of(texts.begin(), texts.end(), holdsNul)) return true;
    log_.write(filledForLog("The setting \"%@\" was left as it is: its new value holds a NUL character.", {key}));
    return false;
}

} // namespace letterloft
