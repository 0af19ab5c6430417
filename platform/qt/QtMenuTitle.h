#pragma once

#include <QString>

#include <string>

namespace letterloft {

// Titles on their way to whatever draws a menu, which gives some characters a meaning: written so that the title is
// shown just as it is. Tabs, line breaks and other control characters become blanks.

// For a row of text that gives no character a meaning.
QString titleOfOneLine(const std::string& title);

// For a menu that Qt draws: every '&' marks a shortcut.
QString titleForQtMenu(const std::string& title);

// For a menu that a panel draws: Qt 6.4 turns the first '&', unless it is the last character, into the '_' that marks a
// shortcut there, and the panel takes a '_' for one.
QString titleForBusMenu(const std::string& title);

} // namespace letterloft
