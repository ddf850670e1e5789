#include "app/service/running_tovel.h"

#include "app/service/bus_names.h"

#include <QDBusVariant>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 5000; // milliseconds

} // namespace

QDBusMessage callOfRunningTovel(const QString &interface, const QString &method,
                                const QVariantList &arguments)
{
    QDBusMessage call
        = QDBusMessage::createMethodCall(BusNames::Service, BusNames::Path, interface, method);
    call.setAutoStartService(false);
    call.setArguments(arguments);
    return call;
}

RunningTovel findRunningTovel(const QDBusConnection &bus)
{
    if (!bus.isConnected())
        return RunningTovel::None;
    const QDBusMessage reply
        = bus.call(callOfRunningTovel(u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
                                      {BusNames::Interface, u"Display"_s}),
                   QDBus::Block, patience);
    if (reply.errorName() == "org.freedesktop.DBus.Error.NoReply"_L1
        || reply.errorName() == "org.freedesktop.DBus.Error.Timeout"_L1)
        return RunningTovel::Silent;
    if (reply.type() != QDBusMessage::ReplyMessage)
        return RunningTovel::None;
    const QVariant display = reply.arguments().value(0).value<QDBusVariant>().variant();
    const bool isOurs
        = display.typeId() == QMetaType::QString && isSameDisplay(ownDisplay(), display.toString());
    return isOurs ? RunningTovel::Answers : RunningTovel::None;
}

} // namespace tovel
