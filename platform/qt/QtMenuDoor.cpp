#include "platform/qt/QtMenuDoor.h"

#include "platform/qt/QtBusCaller.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMetaType>

#include <utility>
#include <vector>

namespace letterloft {

namespace {

// Where Qt (6.4) puts the menu of a program's first status item: on a connection of its own, of this name.
const auto menuPath = QLatin1String{"/MenuBar"};
const auto interfaceName = QLatin1String{"com.canonical.dbusmenu"};
QString connectionName() {
    return QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
}

QMetaMethod slotNamed(const QObject& object, const QString& name) {
    const QMetaObject& all = *object.metaObject();
    for (int index = all.methodOffset(); index < all.methodCount(); ++index) {
        const QMetaMethod method = all.method(index);
        if (method.methodType() == QMetaMethod::Slot && name == QLatin1String{method.name()}) return method;
    }
    return {};
}

// Whether what came over the bus is of the value's type, and now is the value.
bool take(const QVariant& came, QVariant& value) {
    if (came.metaType() != QMetaType::fromType<QDBusArgument>()) {
        if (came.metaType() != value.metaType()) return false;
        value = came;
        return true;
    }
    const auto argument = came.value<QDBusArgument>();
    return argument.currentSignature() == QLatin1String{QDBusMetaType::typeToSignature(value.metaType())} &&
           QDBusMetaType::demarshall(argument, value.metaType(), value.data());
}

// The arguments of one call of a slot, whatever their types: its result, and then its parameters in order. Those that
// it fills in are references.
class Arguments {
public:
    explicit Arguments(const QMetaMethod& slot) : values_{QVariant{slot.returnMetaType()}} {
        for (const QByteArray& type : slot.parameterTypes()) {
            isResult_.push_back(type.endsWith('&'));
            values_.emplace_back(QMetaType::fromName(type.endsWith('&') ? type.chopped(1) : type));
        }
    }

    bool fillIn(const QVariantList& given) {
        qsizetype taken = 0;
        for (std::size_t index = 0; index < isResult_.size(); ++index) {
            if (isResult_[index]) continue;
            if (taken == given.size() || !take(given[taken++], values_[index + 1])) return false;
        }
        return taken == given.size();
    }

    void call(QObject& object, const QMetaMethod& slot) {
        std::vector<void*> places;
        for (QVariant& value : values_)
            places.push_back(value.data());
        QMetaObject::metacall(&object, QMetaObject::InvokeMetaMethod, slot.methodIndex(), places.data());
    }

    QVariantList results() const {
        QVariantList results;
        if (values_.front().isValid()) results << values_.front();
        for (std::size_t index = 0; index < isResult_.size(); ++index)
            if (isResult_[index]) results << values_[index + 1];
        return results;
    }

private:
    std::vector<QVariant> values_;
    std::vector<bool> isResult_;
};

} // namespace

// Hears every signal of the object, whatever its parameters are: each has a number behind QObject's own methods.
class QtMenuDoor::News final : public QObject {
public:
    News(QtMenuDoor& door, const QObject& object) : door_{door} {
        const QMetaObject& all = *object.metaObject();
        for (int index = all.methodOffset(); index < all.methodCount(); ++index) {
            if (all.method(index).methodType() != QMetaMethod::Signal) continue;
            const int number = staticMetaObject.methodCount() + static_cast<int>(signals_.size());
            QMetaObject::connect(&object, index, this, number, Qt::DirectConnection);
            signals_.push_back(all.method(index));
        }
    }

    int qt_metacall(QMetaObject::Call call, int number, void** arguments) override {
        number = QObject::qt_metacall(call, number, arguments);
        if (number < 0 || call != QMetaObject::InvokeMetaMethod) return number;
        door_.tell(signals_[static_cast<std::size_t>(number)], arguments);
        return -1;
    }

private:
    QtMenuDoor& door_;
    std::vector<QMetaMethod> signals_;
};

QtMenuDoor::QtMenuDoor() : bus_{connectionName()} {
    QObject* const object = bus_.objectRegisteredAt(menuPath);
    menu_ = object ? object->findChild<QDBusAbstractAdaptor*>({}, Qt::FindDirectChildrenOnly) : nullptr;
    if (!menu_) return;
    bus_.unregisterObject(menuPath);
    bus_.registerObject(menuPath, this, QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
    news_ = std::make_unique<News>(*this, *menu_);
}

QtMenuDoor::~QtMenuDoor() = default;

void QtMenuDoor::handOn(const QDBusMessage& call) {
    call.setDelayedReply(true);
    const QDBusMessage answer =
        mayCall(call) ? answerTo(call)
                      : call.createErrorReply(QDBusError::AccessDenied,
                                              QStringLiteral("This menu is open to programs of its own user only."));
    if (!call.isReplyRequired() || bus_.send(answer)) return;
    // Qt has the answer of GetProperty() empty, which no message can hold, and would leave the caller waiting.
    bus_.send(call.createErrorReply(QDBusError::Failed, call.member()));
}

// The bus gives no name twice.
bool QtMenuDoor::mayCall(const QDBusMessage& call) {
    if (call.service() == lastCaller_) return true;
    if (!isFromThisUser(bus_, call)) return false;
    lastCaller_ = call.service();
    return true;
}

QDBusMessage QtMenuDoor::answerTo(const QDBusMessage& call) {
    const QMetaMethod slot = menu_ ? slotNamed(*menu_, call.member()) : QMetaMethod{};
    if (!slot.isValid()) return call.createErrorReply(QDBusError::UnknownMethod, call.member());
    Arguments arguments{slot};
    if (!arguments.fillIn(call.arguments())) return call.createErrorReply(QDBusError::InvalidArgs, call.signature());
    arguments.call(*menu_, slot);
    return call.createReply(arguments.results());
}

void QtMenuDoor::tell(const QMetaMethod& signal, void** arguments) {
    QDBusMessage news = QDBusMessage::createSignal(menuPath, interfaceName, QLatin1String{signal.name()});
    const QList<QByteArray> types = signal.parameterTypes();
    for (qsizetype index = 0; index < types.size(); ++index)
        news << QVariant{QMetaType::fromName(types[index]), arguments[index + 1]};
    bus_.send(news);
}

} // namespace letterloft
