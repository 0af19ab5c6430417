#include "platform/qt/QtMenuTitle.h"

#include "platform/qt/QtText.h"

namespace letterloft {

QString titleOfOneLine(const std::string& title) {
    QString line = toQt(title);
    for (QChar& character : line) {
        const auto category = character.category();
        const bool separatesLines = category == QChar::Separator_Line || category == QChar::Separator_Paragraph;
        if (category == QChar::Other_Control || separatesLines) character = QLatin1Char{' '};
    }
    return line;
}

QString titleForQtMenu(const std::string& title) {
    return titleOfOneLine(title).replace(QLatin1Char{'&'}, QLatin1String{"&&"});
}

QString titleForBusMenu(const std::string& title) {
    QString escaped = titleOfOneLine(title).replace(QLatin1Char{'_'}, QLatin1String{"__"});
    const auto mark = escaped.indexOf(QLatin1Char{'&'});
    if (mark < 0 || mark == escaped.size() - 1) return escaped;
    // What Qt turns into a '_' had best be one half of a pair already: GTK 3.24, while it hides the marks of shortcuts,
    // takes every pair for a mark once more as soon as there is a shortcut in the title.
    const auto pair = escaped.indexOf(QLatin1Char{'_'});
    if (pair >= 0 && pair < mark) {
        escaped[pair] = QLatin1Char{'&'};
    } else {
        escaped.insert(mark, QLatin1Char{'&'});
    }
    return escaped;
}

} // namespace letterloft
