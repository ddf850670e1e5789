#include "platform/session/gnome/shell_bus.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

#include <limits>

namespace tovel::gnome {

using namespace Qt::StringLiterals;

namespace {

constexpr int Deadline = 1000; // milliseconds

QDBusMessage messageFor(const ShellBus::Method &method, const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(method.service, method.path, method.interface,
                                                  method.name);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return message;
}

ShellBus::Method getterOf(const ShellBus::Method &method)
{
    return {method.service, method.path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s};
}

bool isOverdue(const QDBusMessage &reply)
{
    const auto error = QDBusError(reply).type();
    return error == QDBusError::NoReply || error == QDBusError::Timeout
        || error == QDBusError::TimedOut;
}

} // namespace

ShellBus::ShellBus(const QDBusConnection &bus)
    : m_bus(bus)
{ }

QDBusMessage ShellBus::call(const Method &method, const QVariantList &arguments)
{
    const QDBusMessage message = messageFor(method, arguments);
    if (!m_bus.isConnected())
        return message.createErrorReply(QDBusError::Disconnected, u"there is no bus"_s);
    if (isSilent())
        return message.createErrorReply(QDBusError::NoReply, u"GNOME Shell does not answer"_s);
    const QDBusMessage reply = m_bus.call(message, QDBus::Block, Deadline);
    if (isOverdue(reply))
        awaitReturn();
    return reply;
}

QVariant ShellBus::property(const Method &method, const QString &name)
{
    const QDBusMessage reply = call(getterOf(method), {method.interface, name});
    return reply.type() == QDBusMessage::ReplyMessage
        ? reply.arguments().value(0).value<QDBusVariant>().variant()
        : QVariant();
}

QString ShellBus::ownerOf(const QString &service)
{
    const QString bus = u"org.freedesktop.DBus"_s;
    const QDBusMessage reply = m_bus.call(
        messageFor({bus, u"/org/freedesktop/DBus"_s, bus, u"GetNameOwner"_s}, {service}),
        QDBus::Block, Deadline);
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0).toString()
                                                      : QString();
}

// A property, because pings are answered beside the Shell's own work.
void ShellBus::awaitReturn()
{
    const Method shell{ShellService, ShellPath, ShellService, {}};
    m_question = m_bus.asyncCall(messageFor(getterOf(shell), {ShellService, u"ShellVersion"_s}),
                                 std::numeric_limits<int>::max());
    auto *watcher = new QDBusPendingCallWatcher(*m_question, &m_context);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &m_context, [this, watcher] {
        watcher->deleteLater();
        if (m_returned)
            m_returned();
    });
}

bool ShellBus::isSilent()
{
    if (m_question && m_question->isFinished())
        m_question.reset();
    return m_question.has_value();
}

bool ShellBus::isShellThere() const
{
    return m_bus.isConnected() && m_bus.interface()->isServiceRegistered(ShellService);
}

bool ShellBus::isExtensionThere() const
{
    return m_bus.isConnected() && m_bus.interface()->isServiceRegistered(ExtensionService);
}

} // namespace tovel::gnome
