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
    const auto first = escaped.indexOf(QLatin1Char{'&'});
    if (first >= 0) escaped.insert(first, QLatin1Char{'&'});
    return escaped;
}

} // namespace letterloft
