#pragma once

#include "platform/NotificationCenter.h"
#include "platform/qt/QtWindow.h"

#include <memory>

namespace letterloft {

// The help pages that come with the program, in a small window. Nothing of it is made before it is first shown.
class QtHelpWindow final {
public:
    explicit QtHelpWindow(NotificationCenter& notifications);

    // Shows the first page, or the page that was open, on top.
    void show();

private:
    NotificationCenter& notifications_;
    std::unique_ptr<QtWindow> window_;
};

} // namespace letterloft
