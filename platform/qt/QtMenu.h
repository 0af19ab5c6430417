#pragma once

#include "platform/Menu.h"
#include "platform/qt/QtMenuItem.h"

#include <QObject>

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace letterloft {

// The menu's items, without a look of their own: the status bar, a popup and the small menu window each show them
// through a view, all at once if need be.
class QtMenu final : public QObject, public Menu {
    Q_OBJECT

public:
    QtMenu() = default;
    ~QtMenu() override;

    std::shared_ptr<MenuItem> makeItem(const std::string& title) override;
    std::shared_ptr<MenuItem> makeSeparatorItem() override;
    std::vector<std::shared_ptr<MenuItem>> itemArray() const override;
    void insertItem(std::shared_ptr<MenuItem> item, std::size_t index) override;
    void removeItem(const std::shared_ptr<MenuItem>& item) override;

    // Adds an item, below all others, whose action is run whatever else is at work.
    void addCommand(const std::string& title, Action action);

    const std::deque<std::shared_ptr<QtMenuItem>>& items() const { return items_; }

    // The user's choice of an item as a view showed it: carried out from the event loop, never inside this call. One
    // that has left the menu since stands for the choice of that title which is there instead.
    void choose(std::shared_ptr<QtMenuItem> item);

    // To be called by an item of this menu.
    void itemChanged();

Q_SIGNALS:
    // Once, from the event loop, for all changes made since the last time.
    void changed();

private:
    void carryOut(std::shared_ptr<QtMenuItem> item);
    void runChoice(const std::shared_ptr<QtMenuItem>& item);
    void carryOutHeldChoice();
    std::shared_ptr<QtMenuItem> choiceTitled(const std::string& title) const;

    // A deque: accounts are inserted and removed at the top, by the thousand.
    std::deque<std::shared_ptr<QtMenuItem>> items_;
    bool changeAnnounced_ = false;
    bool choiceRuns_ = false;
    std::optional<std::string> heldTitle_;
};

} // namespace letterloft
