// The settings file, as the program reads and writes it: what is not refused can be saved, with nothing lost but what
// was changed.
#include "platform/linux/PlistSettingsStore.h"
#include "platform/linux/PropertyList.h"
#include "storage/SettingsKeys.h"
#include "tests/contract/files/ScratchFolders.h"
#include "tests/fakes/FakeLog.h"

#include <cstdint>
#include <cstdlib>

using namespace letterloft;

namespace {

void demand(bool holds) {
    if (!holds) std::abort();
}

// Not the bytes that are written: a binary list shares equal values as their addresses have it (libplist 2.2).
std::string xmlOf(const PropertyList& list) {
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(list.get(), &bytes, &length);
    std::string xml{bytes, length};
    plist_to_xml_free(bytes);
    return xml;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolders folder;
    const std::string path = folder.at("settings.plist");
    const std::string given{reinterpret_cast<const char*>(data), size};
    FileSystemCalls calls;
    FakeLog log;
    writeFile(path, given);
    const auto load = [&] { return PlistSettingsStore::load(path, calls, log, [] { return Status::ok(); }); };
    auto store = load();
    if (!store) {
        demand(contentsOf(path) == given && !store.status().sentence().empty());
        return 0;
    }
    for (const char* key : {keys::accounts, keys::apps, keys::autostartApps})
        for (const std::string& text : (*store)->list(key))
            demand((*store)->list(text).size() == (*store)->countOfList(text));
    (*store)->setText(keys::currentUser, "B");
    demand((*store)->synchronize().isOk());

    Result<PropertyList> expected = parsedPropertyList(given);
    const Result<PropertyList> saved = parsedPropertyList(contentsOf(path));
    demand(expected && saved && load());
    plist_dict_set_item(expected->get(), keys::currentUser, plist_new_string("B"));
    demand(xmlOf(*expected) == xmlOf(*saved));
    return 0;
}
