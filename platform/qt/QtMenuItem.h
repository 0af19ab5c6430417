#pragma once

#include "platform/Menu.h"

#include <memory>
#include <string>

namespace letterloft {

class QtMenu;

// One row of a QtMenu, as it is meant; the menu's views show it. Made by its menu.
class QtMenuItem final : public MenuItem {
public:
    // A choice's action may take long, and another choice is held back while it runs; a command's is run at any time.
    enum class Kind { choice, command, separator };

    QtMenuItem(Kind kind, std::string title);

    std::string description() const override;
    std::string title() const override { return title_; }
    bool isSeparatorItem() const override { return kind_ == Kind::separator; }
    void setImage(std::shared_ptr<const Image> image) override;
    void setAction(Action action) override;

    Kind kind() const { return kind_; }
    const std::shared_ptr<const Image>& image() const { return image_; }
    const Action& action() const { return action_; }

    // The menu it stands in; none while it belongs to none.
    const QtMenu* menu() const { return menu_; }
    void setMenu(QtMenu* menu) { menu_ = menu; }

private:
    Kind kind_;
    std::string title_;
    std::shared_ptr<const Image> image_;
    Action action_;
    QtMenu* menu_ = nullptr;
};

} // namespace letterloft
