#include "platform/qt/QtTableColumn.h"

#include "platform/qt/QtText.h"

#include <QFontMetricsF>

#include <cmath>
#include <utility>

namespace letterloft {

double QtFont::widthInPoints(const std::string& text) const {
    return QFontMetricsF{view_.font(), &view_}.horizontalAdvance(toQt(text));
}

QtTableColumn::QtTableColumn(QHeaderView& header, int section, std::string identifier, const QWidget& view)
    : header_{header}, section_{section}, identifier_{std::move(identifier)}, font_{view} {}

double QtTableColumn::width() const {
    const int shown = header_.sectionSize(section_);
    return shown == static_cast<int>(std::ceil(widthSet_)) ? widthSet_ : shown;
}

void QtTableColumn::setWidth(double widthInPoints) {
    widthSet_ = widthInPoints;
    header_.resizeSection(section_, static_cast<int>(std::ceil(widthInPoints)));
}

} // namespace letterloft
