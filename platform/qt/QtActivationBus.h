#pragma once

#include <QDBusContext>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>

namespace letterloft {

// The program's name on the session bus, for a desktop that starts or raises programs there:
// org.freedesktop.Application of the Desktop Entry Specification 1.5. Whatever a caller of this
// user asks for, it gets the same: the program shows itself.
class QtActivationBus final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    // `activated` runs from the event loop. Without a session bus, or with the name taken, nothing comes of it.
    explicit QtActivationBus(std::function<void()> activated);

    // Asks the program that has the name to show itself; returns when it has answered, false if it did not.
    static bool askRunningProgram();

public Q_SLOTS:
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(const QString& name, const QVariantList& parameters, const QVariantMap& platformData);

private:
    void activate();

    std::function<void()> activated_;
};

} // namespace letterloft
