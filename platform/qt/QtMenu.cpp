#include "platform/qt/QtMenu.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace letterloft {

namespace {

// A copy of the action and a share of the item: both may be replaced or removed by what they set off.
void run(const std::shared_ptr<QtMenuItem>& item) {
    const std::shared_ptr<QtMenuItem> running = item;
    const Action action = item->action();
    action(running.get());
}

} // namespace

QtMenu::~QtMenu() {
    for (const auto& item : items_)
        item->setMenu(nullptr);
}

std::shared_ptr<MenuItem> QtMenu::makeItem(const std::string& title) {
    return std::make_shared<QtMenuItem>(QtMenuItem::Kind::choice, title);
}

std::shared_ptr<MenuItem> QtMenu::makeSeparatorItem() {
    return std::make_shared<QtMenuItem>(QtMenuItem::Kind::separator, std::string{});
}

std::vector<std::shared_ptr<MenuItem>> QtMenu::itemArray() const { return {items_.begin(), items_.end()}; }

void QtMenu::insertItem(std::shared_ptr<MenuItem> item, std::size_t index) {
    auto own = std::dynamic_pointer_cast<QtMenuItem>(std::move(item));
    assert(own && !own->menu() && index <= items_.size());
    own->setMenu(this);
    items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(index), std::move(own));
    itemChanged();
}

void QtMenu::removeItem(const std::shared_ptr<MenuItem>& item) {
    const auto found = std::find(items_.begin(), items_.end(), item);
    assert(found != items_.end());
    (*found)->setMenu(nullptr);
    items_.erase(found);
    itemChanged();
}

void QtMenu::addCommand(const std::string& title, Action action) {
    auto item = std::make_shared<QtMenuItem>(QtMenuItem::Kind::command, title);
    item->setAction(std::move(action));
    insertItem(std::move(item), items_.size());
}

void QtMenu::itemChanged() {
    if (std::exchange(changeAnnounced_, true)) return;
    const auto announce = [this] {
        changeAnnounced_ = false;
        Q_EMIT changed();
    };
    QMetaObject::invokeMethod(this, announce, Qt::QueuedConnection);
}

void QtMenu::choose(std::shared_ptr<QtMenuItem> item) {
    // Later: an action may run for minutes, and whoever asks over the bus waits for the end of the call.
    const auto later = [this, chosen = std::move(item)] { carryOut(chosen); };
    QMetaObject::invokeMethod(this, later, Qt::QueuedConnection);
}

void QtMenu::carryOut(std::shared_ptr<QtMenuItem> item) {
    if (!item->menu()) item = choiceTitled(item->title());
    if (!item || !item->action()) return;
    if (item->kind() != QtMenuItem::Kind::choice) {
        run(item);
    } else if (choiceRuns_) {
        heldTitle_ = item->title();
    } else {
        runChoice(item);
    }
}

void QtMenu::runChoice(const std::shared_ptr<QtMenuItem>& item) {
    heldTitle_.reset();
    choiceRuns_ = true;
    run(item);
    choiceRuns_ = false;
    if (!heldTitle_) return;
    QMetaObject::invokeMethod(
        this, [this] { carryOutHeldChoice(); }, Qt::QueuedConnection);
}

void QtMenu::carryOutHeldChoice() {
    // Nothing is held any more when a newer choice was quicker; while that one runs, its end asks again.
    if (choiceRuns_ || !heldTitle_) return;
    const std::string title = *std::exchange(heldTitle_, std::nullopt);
    const std::shared_ptr<QtMenuItem> item = choiceTitled(title);
    if (item && item->action()) runChoice(item);
}

std::shared_ptr<QtMenuItem> QtMenu::choiceTitled(const std::string& title) const {
    const auto isIt = [&](const auto& item) {
        return item->kind() == QtMenuItem::Kind::choice && item->title() == title;
    };
    const auto found = std::find_if(items_.begin(), items_.end(), isIt);
    return found == items_.end() ? nullptr : *found;
}

} // namespace letterloft
