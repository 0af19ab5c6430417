#pragma once

namespace letterloft::QtAccessibility {

// From now on assistive technology is told of our windows and of the cells of our views by us. Qt calls a window that
// is no dialog a filler, and offers no action for a cell but to select it (6.4).
void install();

} // namespace letterloft::QtAccessibility
