#pragma once

#include "platform/Image.h"
#include "platform/Menu.h"

#include <memory>
#include <string>

namespace letterloft {

// The program's item in the system's status bar. It is there whenever a status bar is: one that comes later, or comes
// back, takes it up by itself. Main thread only.
class StatusItem {
public:
    virtual ~StatusItem() = default;

    // With highlight mode the alternate image stands in the image's place while the menu is open, on status bars that
    // tell of both the opening and the closing.
    virtual void setHighlightMode(bool highlights) = 0;

    // A disabled item does not open its menu.
    virtual void setEnabled(bool enabled) = 0;

    virtual void setToolTip(const std::string& text) = 0;

    // The menu opens on a click; it outlives the item. A status item with a menu sends no action of its own, and so
    // needs no target.
    virtual void setMenu(Menu& menu) = 0;

    virtual void setImage(std::shared_ptr<const Image> image) = 0;
    virtual void setAlternateImage(std::shared_ptr<const Image> image) = 0;
};

// The system's status bar. Owned by main; outlives its items.
class StatusBar {
public:
    virtual ~StatusBar() = default;

    // The item's length when it is to fit its image.
    static constexpr double variableLength = -1;

    // A new item, `length` points long, that goes when it is destroyed.
    virtual std::unique_ptr<StatusItem> statusItemWithLength(double length) = 0;
};

} // namespace letterloft
