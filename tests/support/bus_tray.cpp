#include "support/bus_tray.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QUuid>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

QDBusMessage toItem(const QString &service, const QString &interface, const QString &method)
{
    return QDBusMessage::createMethodCall(service, u"/StatusNotifierItem"_s, interface, method);
}

} // namespace

BusTray::BusTray(const QString &busAddress, Manner manner)
    : m_bus(QDBusConnection::connectToBus(busAddress, QUuid::createUuid().toString()))
    , m_manner(manner)
{
    m_bus.registerVirtualObject(u"/StatusNotifierWatcher"_s, this);
    m_bus.registerService(u"org.kde.StatusNotifierWatcher"_s);
}

QDBusMessage BusTray::toMenu(const QString &method) const
{
    const QVariant path = itemProperties()[u"Menu"_s];
    return QDBusMessage::createMethodCall(m_items.value(0), path.value<QDBusObjectPath>().path(),
                                          u"com.canonical.dbusmenu"_s, method);
}

BusTray::~BusTray() { QDBusConnection::disconnectFromBus(m_bus.name()); }

QVariantMap BusTray::itemProperties() const
{
    QDBusMessage question
        = toItem(m_items.value(0), u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s);
    question << u"org.kde.StatusNotifierItem"_s;
    return qdbus_cast<QVariantMap>(m_bus.call(question).arguments().value(0));
}

void BusTray::activateItem() const
{
    QDBusMessage request = toItem(m_items.value(0), u"org.kde.StatusNotifierItem"_s, u"Activate"_s);
    request << 0 << 0;
    m_bus.send(request);
}

QStringList BusTray::menu() const
{
    m_bus.call(toMenu(u"AboutToShow"_s) << 0);
    const QDBusMessage layout = m_bus.call(toMenu(u"GetLayout"_s) << 0 << 1 << QStringList());
    QStringList lines;
    m_lines.clear();
    const auto top = layout.arguments().value(1).value<QDBusArgument>();
    int id = 0;
    QVariantMap properties;
    QVariantList children;
    top.beginStructure();
    top >> id >> properties >> children;
    top.endStructure();
    for (const QVariant &child : children) {
        const auto item = child.value<QDBusArgument>();
        item.beginStructure();
        item >> id >> properties;
        item.endStructure();
        const QString label = properties[u"label"_s].toString();
        lines.append((properties[u"toggle-state"_s].toInt() == 1 ? u"✓ "_s : QString()) + label);
        m_lines[label] = id;
    }
    return lines;
}

bool BusTray::choose(const QString &label) const
{
    QDBusMessage event = toMenu(u"Event"_s);
    event << m_lines.value(label) << u"clicked"_s << QVariant::fromValue(QDBusVariant(0)) << 0u;
    return m_lines.contains(label) && m_bus.send(event);
}

bool BusTray::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    ++m_questions;
    const bool registers = message.member() == u"RegisterStatusNotifierItem"_s;
    if (m_manner == Manner::Silent)
        return true;
    if (registers && m_manner == Manner::Refusing) {
        m_bus.send(message.createErrorReply(QDBusError::AccessDenied, u"no"_s));
        return true;
    }
    if (registers && !m_items.contains(message.arguments().value(0).toString()))
        m_items.append(message.arguments().value(0).toString());
    const QVariant hasHost
        = m_manner == Manner::Mistyped ? QVariant(QStringList{u"true"_s}) : QVariant(true);
    m_bus.send(registers ? message.createReply()
                         : message.createReply(QVariant::fromValue(QDBusVariant(hasHost))));
    return true;
}

} // namespace tovel
