#pragma once

#include "platform/session/gnome/shell_bus.h"
#include "platform/session/session_records.h"

#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace tovel::gnome {

// The interface that this is written for (org.tovel.Shell1.Version).
inline constexpr std::uint32_t KnownVersion = 1;

// Tovel's extension of GNOME Shell, as it is on the bus (gnome/org.tovel.Shell1.xml).
class ShellExtension final : public QObject
{
    Q_OBJECT

public:
    // Borrows it. The handlers are called from the event loop.
    explicit ShellExtension(ShellBus &bus);

    enum class Presence { Absent, Silent, OtherVersion, Refusing, There };
    Presence presence() const { return m_presence; }
    // Of the interface, where that is another one.
    std::uint32_t version() const { return m_version; }

    struct Reading
    {
        // Whether it is the session of the last reading; the text is empty then.
        bool isSame = false;
        // Whether everything is numbered anew since then, and whether by the same Shell.
        bool isNumberedAnew = false;
        bool isSameShell = true;
        QString text{};
    };
    // Nothing where the extension cannot be asked: presence() then says why.
    std::optional<Reading> read();
    // The next one has the text, whatever was read.
    void forget() { m_revision = 0; }

    // Whether it was carried out. Arguments have to be of the types of the interface.
    bool request(const QString &method, const QVariantList &arguments);
    std::optional<QPointF> cursorPosition();

    // A key that was granted is taken again whenever the extension comes back.
    KeyGrab grabKey(const SessionKey &key);
    void releaseKey(const SessionKey &key);

    // Something may have changed; also when the extension came or went.
    void setChangeHandler(std::function<void()> handler) { m_changed = std::move(handler); }
    void setKeyHandler(std::function<void(const SessionKey &key)> handler);
    // Without it, nothing but readings tells of changes.
    void listen();

private Q_SLOTS:
    void change();
    void press(uint position, uint modifiers);

private:
    QDBusMessage ask(const QString &method, const QVariantList &arguments = {});
    bool meet();
    void lose(Presence presence);

    ShellBus &m_bus;
    Presence m_presence = Presence::Absent;
    std::uint32_t m_version = 0;
    QString m_owner; // the Shell's name on the bus, once the version is known
    QString m_lastOwner;
    bool m_isNumberedAnew = false;
    quint64 m_revision = 0;
    std::vector<SessionKey> m_keys;
    QDBusServiceWatcher m_watcher;
    std::function<void()> m_changed;
    std::function<void(const SessionKey &key)> m_keyHandler;
    bool m_isListening = false;
    bool m_hearsKeys = false;
};

} // namespace tovel::gnome
