#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QMetaMethod>
#include <QObject>
#include <QPointer>

#include <memory>

namespace letterloft {

// The way to the menu over the session bus, open to programs of this user alone: a bus can be told to let others in. Qt
// (6.4) puts a status item's menu there and asks nobody who calls, so this takes the place of Qt's object, and hands on
// to it what may be handed on, and from it what it tells everybody.
class QtMenuDoor final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QString TextDirection READ textDirection)

public:
    // To be made when the status item has its menu and is not yet shown. Without a menu on the bus nothing comes of it.
    QtMenuDoor();
    ~QtMenuDoor() override;

    uint version() const { return menu_->property("Version").toUInt(); }
    QString status() const { return menu_->property("Status").toString(); }
    QString textDirection() const { return menu_->property("TextDirection").toString(); }

    // What a method is called with is for Qt's object to know: each is taken as it comes.
public Q_SLOTS:
    void AboutToShow(const QDBusMessage& call) { handOn(call); }
    void AboutToShowGroup(const QDBusMessage& call) { handOn(call); }
    void Event(const QDBusMessage& call) { handOn(call); }
    void EventGroup(const QDBusMessage& call) { handOn(call); }
    void GetGroupProperties(const QDBusMessage& call) { handOn(call); }
    void GetLayout(const QDBusMessage& call) { handOn(call); }
    void GetProperty(const QDBusMessage& call) { handOn(call); }

private:
    class News;

    void handOn(const QDBusMessage& call);
    bool mayCall(const QDBusMessage& call);
    QDBusMessage answerTo(const QDBusMessage& call);
    void tell(const QMetaMethod& signal, void** arguments);

    QDBusConnection bus_;
    QPointer<QDBusAbstractAdaptor> menu_;
    std::unique_ptr<News> news_;
    QString lastCaller_;
};

} // namespace letterloft
