#pragma once

#include <QPalette>

namespace letterloft {

// The palette with what can't be chosen, and what stands in an empty field, paler than the rest, but not so pale that
// it can't be read: the current account's name stands in such a row.
QPalette withReadablePaleTexts(QPalette colors);

// Of the palette the colour of what is selected, as far from its text as it takes to read it; nothing else is set.
QPalette withReadableSelection(const QPalette& colors);

} // namespace letterloft
