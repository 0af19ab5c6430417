#include "platform/qt/QtMenuItem.h"

#include "platform/qt/QtMenu.h"

#include <utility>

namespace letterloft {

QtMenuItem::QtMenuItem(Kind kind, std::string title) : kind_{kind}, title_{std::move(title)} {}

std::string QtMenuItem::description() const { return "menu item \"" + title_ + "\""; }

void QtMenuItem::setImage(std::shared_ptr<const Image> image) {
    image_ = std::move(image);
    if (menu_) menu_->itemChanged();
}

void QtMenuItem::setAction(Action action) {
    action_ = std::move(action);
    if (menu_) menu_->itemChanged();
}

} // namespace letterloft
