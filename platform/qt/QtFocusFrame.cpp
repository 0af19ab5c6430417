#include "platform/qt/QtFocusFrame.h"

#include <QEvent>
#include <QPainter>

namespace letterloft {

QtFocusFrame::QtFocusFrame(QAbstractItemView& view) : QObject{&view}, view_{view} { view.installEventFilter(this); }

bool QtFocusFrame::eventFilter(QObject* watched, QEvent* event) {
    if (watched != &view_) return false;
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) view_.update();
    if (event->type() != QEvent::Paint || !view_.hasFocus()) return false;
    static_cast<QObject&>(view_).event(event); // what is drawn without us, and then over it
    QPainter painter{&view_};
    painter.setPen(view_.palette().color(QPalette::Highlight));
    painter.drawRect(view_.rect().adjusted(0, 0, -1, -1));
    return true;
}

} // namespace letterloft
