#pragma once

#include "platform/StatusItem.h"
#include "tests/fakes/FakeImages.h"

#include <memory>
#include <string>
#include <vector>

namespace letterloft {

// Keeps what it was told.
struct FakeStatusItem final : StatusItem {
    void setHighlightMode(bool theHighlights) override { highlights = theHighlights; }
    void setEnabled(bool isEnabled) override { enabled = isEnabled; }
    void setToolTip(const std::string& text) override { toolTip = text; }
    void setMenu(Menu& theMenu) override { menu = &theMenu; }
    void setImage(std::shared_ptr<const Image> newImage) override { image = FakeImage::nameOf(newImage); }
    void setAlternateImage(std::shared_ptr<const Image> newImage) override {
        alternateImage = FakeImage::nameOf(newImage);
    }

    double length = 0;
    bool highlights = false;
    bool enabled = false;
    std::string toolTip;
    Menu* menu = nullptr;
    std::string image;
    std::string alternateImage;
};

class FakeStatusBar final : public StatusBar {
public:
    std::unique_ptr<StatusItem> statusItemWithLength(double length) override {
        auto item = std::make_unique<FakeStatusItem>();
        item->length = length;
        items.push_back(item.get());
        return item;
    }

    std::vector<const FakeStatusItem*> items; // as long as their owner keeps them
};

} // namespace letterloft
