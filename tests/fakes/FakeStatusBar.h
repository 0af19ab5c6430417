#pragma once

#include "platform/StatusItem.h"
#include "tests/fakes/FakeImages.h"

#include <memory>
#include <string>
#include <vector>

namespace letterloft {

// A status bar that keeps what its items were told; an item that was destroyed is gone from it.
class FakeStatusBar final : public StatusBar {
public:
    struct Shown {
        double length = 0;
        bool highlights = false;
        bool enabled = false;
        std::string toolTip;
        Menu* menu = nullptr;
        std::string image;
        std::string alternateImage;
    };

    std::unique_ptr<StatusItem> statusItemWithLength(double length) override {
        auto item = std::make_unique<Item>(*this);
        item->shown.length = length;
        items.push_back(&item->shown);
        return item;
    }

    std::vector<const Shown*> items;

private:
    class Item final : public StatusItem {
    public:
        explicit Item(FakeStatusBar& bar) : bar_{bar} {}
        ~Item() override { std::erase(bar_.items, &shown); }
        Item(const Item&) = delete;
        Item& operator=(const Item&) = delete;

        void setHighlightMode(bool highlights) override { shown.highlights = highlights; }
        void setEnabled(bool enabled) override { shown.enabled = enabled; }
        void setToolTip(const std::string& text) override { shown.toolTip = text; }
        void setMenu(Menu& menu) override { shown.menu = &menu; }
        void setImage(std::shared_ptr<const Image> image) override { shown.image = FakeImage::nameOf(image); }
        void setAlternateImage(std::shared_ptr<const Image> image) override {
            shown.alternateImage = FakeImage::nameOf(image);
        }

        Shown shown;

    private:
        FakeStatusBar& bar_;
    };
};

} // namespace letterloft
