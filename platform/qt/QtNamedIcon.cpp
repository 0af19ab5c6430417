#include "platform/qt/QtNamedIcon.h"

#include <QIconEngine>
#include <QPainter>
#include <QStandardPaths>

#include <utility>

namespace letterloft {

namespace {

// QIcon::fromTheme would look through the theme and draw what it finds, which here nobody sees.
class NamedIconEngine final : public QIconEngine {
public:
    NamedIconEngine(QIcon icon, QString name) : icon_{std::move(icon)}, name_{std::move(name)} {}

    QString iconName() override { return name_; }
    QIconEngine* clone() const override { return new NamedIconEngine{*this}; }
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override {
        return icon_.availableSizes(mode, state);
    }
    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return icon_.actualSize(size, mode, state);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return icon_.pixmap(size, mode, state);
    }
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
        icon_.paint(painter, rect, Qt::AlignCenter, mode, state);
    }

private:
    QIcon icon_;
    QString name_;
};

} // namespace

QIcon withSymbolicName(const QIcon& icon, const QString& name) {
    const QString file = QStringLiteral("icons/hicolor/symbolic/apps/%1.svg").arg(name);
    if (icon.isNull() || QStandardPaths::locate(QStandardPaths::GenericDataLocation, file).isEmpty()) return icon;
    return QIcon{new NamedIconEngine{icon, name}};
}

} // namespace letterloft
