#pragma once

#include "platform/Menu.h"
#include "tests/fakes/FakeImages.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace letterloft {

struct FakeMenuItem final : MenuItem {
    explicit FakeMenuItem(std::string theTitle, bool separates = false)
        : text{std::move(theTitle)}, isSeparator{separates} {}

    std::string title() const override { return text; }
    bool isSeparatorItem() const override { return isSeparator; }
    void setImage(std::shared_ptr<const Image> newImage) override { image = std::move(newImage); }
    void setAction(Action newAction) override { action = std::move(newAction); }
    std::string description() const override { return "menu item \"" + text + "\""; }

    std::string text;
    bool isSeparator;
    std::shared_ptr<const Image> image;
    Action action;
};

// A menu without a screen. A test chooses an item as a user does; nothing is ever chosen by itself.
class FakeMenu : public Menu {
public:
    std::shared_ptr<MenuItem> makeItem(const std::string& title) override {
        return std::make_shared<FakeMenuItem>(title);
    }

    std::shared_ptr<MenuItem> makeSeparatorItem() override { return std::make_shared<FakeMenuItem>("", true); }

    std::vector<std::shared_ptr<MenuItem>> itemArray() const override { return {items.begin(), items.end()}; }

    void insertItem(std::shared_ptr<MenuItem> item, std::size_t index) override {
        auto fake = std::dynamic_pointer_cast<FakeMenuItem>(item);
        assert(fake && index <= items.size());
        assert(std::find(items.begin(), items.end(), fake) == items.end());
        items.insert(items.begin() + static_cast<std::ptrdiff_t>(index), fake);
    }

    void removeItem(const std::shared_ptr<MenuItem>& item) override {
        const auto removed = std::erase(items, item);
        assert(removed == 1); // it stood in this menu
        (void)removed;
    }

    // Chooses the first item with that title; false if there is none or it has no action. The item lives until its
    // action returns, whatever becomes of it in the menu.
    bool choose(const std::string& title) {
        const auto found = std::find_if(items.begin(), items.end(),
                                        [&](const auto& item) { return !item->isSeparator && item->text == title; });
        if (found == items.end() || !(*found)->action) return false;
        const std::shared_ptr<FakeMenuItem> chosen = *found;
        const Action action = chosen->action;
        action(chosen.get());
        return true;
    }

    // From top to bottom: the titles, "-" for a separator, with the image's name after a titled item's that has one,
    // and "!" after one that can't be chosen.
    std::vector<std::string> shown() const {
        std::vector<std::string> rows;
        for (const auto& item : items) {
            const std::string image = FakeImage::nameOf(item->image);
            const std::string inert = item->action ? "" : " !";
            rows.push_back(item->isSeparator ? "-" : item->text + (image.empty() ? "" : " [" + image + "]") + inert);
        }
        return rows;
    }

    std::vector<std::shared_ptr<FakeMenuItem>> items;
};

} // namespace letterloft
