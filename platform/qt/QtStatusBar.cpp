#include "platform/qt/QtStatusBar.h"

#include "platform/qt/QtStatusItem.h"

#include <utility>

namespace letterloft {

QtStatusBar::QtStatusBar(QtTrayHost& host, std::function<void()> showMenuElsewhere)
    : host_{host}, showMenuElsewhere_{std::move(showMenuElsewhere)} {}

// Panels give every item the same length.
std::unique_ptr<StatusItem> QtStatusBar::statusItemWithLength(double /*length*/) {
    return std::make_unique<QtStatusItem>(host_, showMenuElsewhere_);
}

} // namespace letterloft
