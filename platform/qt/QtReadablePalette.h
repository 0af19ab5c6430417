#pragma once

#include <QPalette>

namespace letterloft {

// The palette with what can't be chosen paler than the rest, but not so pale that it can't be read: the current
// account's name stands in such a row.
QPalette withReadableInertRows(QPalette colors);

} // namespace letterloft
