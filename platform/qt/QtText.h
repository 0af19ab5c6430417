#pragma once

#include <QString>

#include <string>

class QLabel;

namespace letterloft {

// Texts on their way into Qt's widgets and back. UTF-8 on our side.
QString toQt(const std::string& text);
std::string fromQt(const QString& text);

// For the title of a button, menu or label, where a single '&' would mark a shortcut: shows the text just as it is.
QString plainTitle(const QString& text);

// A label that shows the text just as it is, on as many lines as it takes. The caller owns it.
QLabel* plainLabel(const QString& text);

// For a tool tip, which Qt takes for HTML when it looks like that: shows the text just as it is, on as many lines as it
// takes. Empty for an empty text.
QString plainToolTip(const QString& text);

} // namespace letterloft
