#pragma once

#include "platform/Image.h"
#include "platform/Sender.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace letterloft {

// One row of a menu. Titles are shown exactly as given, whatever characters they hold, and read back unchanged.
class MenuItem : public Sender {
public:
    virtual std::string title() const = 0;
    virtual bool isSeparatorItem() const = 0;

    // The picture before the title; no image takes it away.
    virtual void setImage(std::shared_ptr<const Image> image) = 0;

    // What choosing the item does; the item itself is the sender. An item without an action can't be chosen.
    virtual void setAction(Action action) = 0;
};

// A menu that stays the same object while its items change. Owned by main; outlives the controllers. Main thread only.
// The user's choice of an item is an event of the run loop, never delivered from inside an operation of the menu.
class Menu {
public:
    virtual ~Menu() = default;

    // A new item that belongs to no menu yet: a title without key equivalent and without action, or a separator.
    virtual std::shared_ptr<MenuItem> makeItem(const std::string& title) = 0;
    virtual std::shared_ptr<MenuItem> makeSeparatorItem() = 0;

    // The items from top to bottom, as they stand now; the copy stays valid while the menu changes.
    virtual std::vector<std::shared_ptr<MenuItem>> itemArray() const = 0;

    // `index` counts from the top; the items from there on move down by one. The item is one that this menu made.
    virtual void insertItem(std::shared_ptr<MenuItem> item, std::size_t index) = 0;

    // Takes the item out of the menu. One whose action is running lives on until the action returns.
    virtual void removeItem(const std::shared_ptr<MenuItem>& item) = 0;
};

} // namespace letterloft
