#pragma once

#include "platform/Log.h"
#include "platform/Status.h"
#include "platform/linux/FileSystemCalls.h"
#include "platform/linux/PropertyList.h"

#include <functional>
#include <string>
#include <utility>

namespace letterloft {

// The file that holds the settings, and its previous generation beside it (".bak" after its name). At every moment a
// whole generation stands under its name. A link at that name is followed, not replaced.
class SettingsFile final {
public:
    // `path` is absolute; nothing is looked up yet. The calls outlive the file.
    SettingsFile(std::string path, FileSystemCalls& calls) : path_{std::move(path)}, calls_{&calls} {}

    const std::string& path() const { return path_; }

    // What the file holds; an empty property list where there is none. The sentence of a failure names the file, the
    // reason, and the previous generation with how to put it back.
    Result<PropertyList> read() const;

    // Afterwards the bytes are durable under the file's name, with mode 0600, and the generation before them stands
    // beside it. Creates the folders above it with mode 0700. On a failure the file holds what it held, or, if only the
    // last sync failed, the bytes; the sentence is the reason. That the previous generation could not be kept is no
    // failure, but is logged.
    Status replace(const std::string& bytes, Log& log) const;

private:
    Result<std::string> target() const;
    Result<PropertyList> parsed(const std::string& path) const;
    Result<std::string> contents(const std::string& path) const;
    std::string waysOut(const std::string& target) const;
    int inFreePlace(const std::string& path, const std::function<int()>& make) const;
    Status writeNew(const std::string& path, const std::string& bytes) const;
    Status keepPrevious(const std::string& target) const;
    Status install(const std::string& from, const std::string& to) const;

    std::string path_;
    FileSystemCalls* calls_;
};

} // namespace letterloft
