#pragma once

#include "platform/StatusItem.h"
#include "platform/qt/QtTrayHost.h"

#include <functional>
#include <memory>

namespace letterloft {

// The desktop's status bar, whenever there is one.
class QtStatusBar final : public StatusBar {
public:
    // `showMenuElsewhere` stands in where a menu can't be popped up beside the item.
    QtStatusBar(QtTrayHost& host, std::function<void()> showMenuElsewhere);

    std::unique_ptr<StatusItem> statusItemWithLength(double length) override;

private:
    QtTrayHost& host_;
    std::function<void()> showMenuElsewhere_;
};

} // namespace letterloft
