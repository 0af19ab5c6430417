#pragma once

#include "platform/Log.h"
#include "platform/SettingsStore.h"
#include "platform/linux/PropertyList.h"
#include "platform/linux/SettingsFile.h"

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace letterloft {

// The settings in a property list file. Values that are neither texts nor lists of texts survive a load and a save.
// A text or key that holds a NUL cannot be stored: nothing is written over what stands there, and the log says so.
class PlistSettingsStore final : public SettingsStore {
public:
    // What makes every file move that ended before it durable.
    using MakeMovesDurable = std::function<Status()>;

    // The store of the file at `path` (absolute; it may be a link); an empty one if there is no such file. Everything
    // else that keeps it from being read whole is a failure: its sentence names the file, the reason and the previous
    // generation with how to put it back. The file is left as it is.
    static Result<std::unique_ptr<PlistSettingsStore>> load(const std::string& path, FileSystemCalls& calls, Log& log,
                                                            MakeMovesDurable makeMovesDurable);

    bool hasValue(const std::string& key) const override;
    std::optional<std::string> text(const std::string& key) const override;
    std::vector<std::string> list(const std::string& key) const override;
    std::size_t countOfList(const std::string& key) const override;
    std::optional<std::string> textInList(const std::string& key, std::size_t index) const override;
    bool isInList(const std::string& key, const std::string& text) const override;
    void setText(const std::string& key, const std::string& text) override;
    void setList(const std::string& key, const std::vector<std::string>& texts) override;
    void removeValue(const std::string& key) override;

    // Writes nothing where nothing has changed. A failure is logged here, in one line.
    Status synchronize() override;

private:
    PlistSettingsStore(PropertyList values, SettingsFile file, Log& log, MakeMovesDurable makeMovesDurable);

    using Texts = std::vector<std::string>;

    // Null when there is no list.
    const Texts* textsUnder(const std::string& key) const;
    void noteChange(const std::string& key);
    bool canStore(const std::string& key, const std::vector<std::string>& texts) const;
    Status save();

    PropertyList values_;
    mutable std::unordered_map<std::string, Texts> texts_; // of the lists read since they were written
    SettingsFile file_;
    Log& log_;
    MakeMovesDurable makeMovesDurable_;
    bool changed_ = false;
};

} // namespace letterloft
