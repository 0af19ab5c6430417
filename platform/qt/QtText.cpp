#include "platform/qt/QtText.h"

#include <QLabel>

namespace letterloft {

QString toQt(const std::string& text) { return QString::fromStdString(text); }

std::string fromQt(const QString& text) { return text.toStdString(); }

QString plainTitle(const QString& text) { return QString{text}.replace(QLatin1Char{'&'}, QLatin1String{"&&"}); }

QLabel* plainLabel(const QString& text) {
    auto* const label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setText(text);
    return label;
}

QString plainToolTip(const QString& text) {
    if (text.isEmpty()) return {};
    return QLatin1String{"<p style='white-space:pre-wrap'>"} + text.toHtmlEscaped() + QLatin1String{"</p>"};
}

} // namespace letterloft
