#pragma once

#include "platform/SettingsStore.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace letterloft {

// Settings in memory. `saved` stands for the file: what the last successful synchronize wrote.
class FakeSettingsStore final : public SettingsStore {
public:
    // A value of another type than text and list, and an element of a list that is no text, are a std::monostate.
    using Element = std::variant<std::monostate, std::string>;
    using Value = std::variant<std::monostate, std::string, std::vector<Element>>;
    using Values = std::map<std::string, Value>;

    bool hasValue(const std::string& key) const override { return values.count(key) != 0; }

    std::optional<std::string> text(const std::string& key) const override {
        const auto found = values.find(key);
        const auto* text = found == values.end() ? nullptr : std::get_if<std::string>(&found->second);
        return text ? std::optional{*text} : std::nullopt;
    }

    std::vector<std::string> list(const std::string& key) const override {
        std::vector<std::string> texts;
        const auto found = values.find(key);
        const auto* elements = found == values.end() ? nullptr : std::get_if<std::vector<Element>>(&found->second);
        if (!elements) return texts;
        for (const Element& element : *elements) {
            if (const auto* text = std::get_if<std::string>(&element)) texts.push_back(*text);
        }
        return texts;
    }

    std::size_t countOfList(const std::string& key) const override { return list(key).size(); }

    std::optional<std::string> textInList(const std::string& key, std::size_t index) const override {
        const std::vector<std::string> texts = list(key);
        return index < texts.size() ? std::optional{texts[index]} : std::nullopt;
    }

    bool isInList(const std::string& key, const std::string& text) const override {
        const std::vector<std::string> texts = list(key);
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }

    void setText(const std::string& key, const std::string& text) override { values[key] = text; }

    void setList(const std::string& key, const std::vector<std::string>& texts) override {
        values[key] = std::vector<Element>(texts.begin(), texts.end());
    }

    void removeValue(const std::string& key) override { values.erase(key); }

    Status synchronize() override {
        ++synchronizations;
        saved = values;
        return Status::ok();
    }

    Values values;
    Values saved;
    int synchronizations = 0;
};

} // namespace letterloft
