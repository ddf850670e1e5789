#include "platform/session/gnome/shell_extension.h"

#include <QDBusError>
#include <QDBusVariant>

#include <algorithm>

namespace tovel::gnome {

using namespace Qt::StringLiterals;

namespace {

const QString Path = u"/org/tovel/Shell1"_s;

enum Modifier : std::uint32_t { Shift = 1, Control = 4, Alt = 8, Super = 64 };

std::uint32_t modifiersOf(const SessionKey &key)
{
    return (key.shift ? Shift : 0U) | (key.control ? Control : 0U) | (key.alt ? Alt : 0U)
        | (key.super ? Super : 0U);
}

QVariantList argumentsOf(const SessionKey &key) { return {key.position, modifiersOf(key)}; }

ShellExtension::Presence presenceAfter(const QDBusMessage &reply)
{
    switch (QDBusError(reply).type()) {
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        return ShellExtension::Presence::Silent;
    case QDBusError::AccessDenied:
        return ShellExtension::Presence::Refusing;
    default:
        return ShellExtension::Presence::Absent;
    }
}

bool isReply(const QDBusMessage &message) { return message.type() == QDBusMessage::ReplyMessage; }

} // namespace

ShellExtension::ShellExtension(ShellBus &bus)
    : m_bus(bus)
{ }

// Of the Shell itself: whoever else has the extension's name is not to be taken for it, and a Shell
// that has taken the place of another is met anew.
QDBusMessage ShellExtension::ask(const QString &method, const QVariantList &arguments)
{
    return m_bus.call({m_owner, Path, ExtensionService, method}, arguments);
}

// One that is silent is the same when it answers again, or is found to be another.
void ShellExtension::lose(Presence presence)
{
    m_presence = presence;
    if (presence != Presence::Silent)
        m_owner.clear();
}

bool ShellExtension::meet()
{
    const QString owner = m_bus.ownerOf(ShellService);
    if (owner.isEmpty()) {
        lose(Presence::Absent);
        return false;
    }
    const QDBusMessage reply
        = m_bus.call({owner, Path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s},
                     {ExtensionService, u"Version"_s});
    if (!isReply(reply)) {
        lose(presenceAfter(reply));
        return false;
    }
    m_version = reply.arguments().value(0).value<QDBusVariant>().variant().toUInt();
    if (m_version != KnownVersion) {
        lose(Presence::OtherVersion);
        return false;
    }
    m_owner = owner;
    m_isNumberedAnew = true;
    m_revision = 0;
    // It has given up those of one that went.
    for (const SessionKey &key : m_keys)
        ask(u"GrabKey"_s, argumentsOf(key));
    return true;
}

std::optional<ShellExtension::Reading> ShellExtension::read()
{
    if (m_owner.isEmpty() && !meet())
        return std::nullopt;
    QDBusMessage reply = ask(u"Snapshot"_s, {m_revision});
    if (QDBusError(reply).type() == QDBusError::ServiceUnknown) {
        if (!meet())
            return std::nullopt;
        reply = ask(u"Snapshot"_s, {m_revision});
    }
    const QVariantList told = reply.arguments();
    if (!isReply(reply) || reply.signature() != u"ts") {
        lose(presenceAfter(reply));
        return std::nullopt;
    }
    m_presence = Presence::There;
    Reading reading;
    const quint64 revision = told[0].toULongLong();
    reading.text = told[1].toString();
    reading.isSame = m_revision != 0 && revision == m_revision && reading.text.isEmpty();
    m_revision = revision;
    reading.isNumberedAnew = std::exchange(m_isNumberedAnew, false);
    reading.isSameShell = std::exchange(m_lastOwner, m_owner) == m_owner;
    return reading;
}

bool ShellExtension::request(const QString &method, const QVariantList &arguments)
{
    if (m_presence != Presence::There)
        return false;
    const QDBusMessage reply = ask(method, arguments);
    return isReply(reply);
}

std::optional<QPointF> ShellExtension::cursorPosition()
{
    if (m_presence != Presence::There)
        return std::nullopt;
    const QDBusMessage reply = ask(u"CursorPosition"_s);
    if (!isReply(reply) || reply.signature() != u"dd")
        return std::nullopt;
    return QPointF(reply.arguments()[0].toDouble(), reply.arguments()[1].toDouble());
}

KeyGrab ShellExtension::grabKey(const SessionKey &key)
{
    if (m_presence != Presence::There)
        return KeyGrab::Impossible;
    const QDBusMessage reply = ask(u"GrabKey"_s, argumentsOf(key));
    if (!isReply(reply))
        return KeyGrab::Impossible;
    if (!reply.arguments().value(0).toBool())
        return KeyGrab::Taken;
    m_keys.push_back(key);
    return KeyGrab::Granted;
}

void ShellExtension::releaseKey(const SessionKey &key)
{
    if (std::erase(m_keys, key) > 0)
        request(u"ReleaseKey"_s, argumentsOf(key));
}

void ShellExtension::setKeyHandler(std::function<void(const SessionKey &key)> handler)
{
    m_keyHandler = std::move(handler);
    if (!m_bus.connection().isConnected() || std::exchange(m_hearsKeys, true))
        return;
    QDBusConnection bus = m_bus.connection();
    bus.connect(ShellService, Path, ExtensionService, u"KeyPressed"_s, this,
                SLOT(press(uint, uint)));
}

void ShellExtension::listen()
{
    if (!m_bus.connection().isConnected() || std::exchange(m_isListening, true))
        return;
    QDBusConnection bus = m_bus.connection();
    bus.connect(ShellService, Path, ExtensionService, u"Changed"_s, this, SLOT(change()));
    m_watcher.setConnection(bus);
    m_watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_watcher.addWatchedService(ExtensionService);
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] {
        m_owner.clear();
        change();
    });
}

void ShellExtension::change()
{
    if (m_changed)
        m_changed();
}

void ShellExtension::press(uint position, uint modifiers)
{
    for (const SessionKey &key : std::vector<SessionKey>(m_keys)) {
        const bool isIt = key.position == position && modifiersOf(key) == modifiers;
        if (isIt && m_keyHandler)
            m_keyHandler(key);
    }
}

} // namespace tovel::gnome
