#pragma once

#include <QDBusConnection>
#include <QJsonValue>
#include <QPoint>
#include <QString>

#include <cstdint>

namespace tovel {

// Someone at a session of GNOME Shell that evaluates scripts: what its user does, and what the
// Shell itself says. Knows nothing of the code under test.
class GnomeUser final
{
public:
    // Of the bus that the environment names when it is first asked for: Qt would keep the process's
    // own when that has gone.
    QDBusConnection bus() const;

    // What the script comes to; undefined where it fails. The names Meta, GLib and Gio stand for
    // their libraries, Main for the Shell's own module, row for the workspaces, listed for the
    // windows that have a size, oldest first, and numbered(N) for the one with the Shell's sequence
    // number.
    QJsonValue evaluate(const QString &script) const;
    // Whether it comes to true in good time.
    bool holds(const QString &script) const;

    // By the kernel's codes.
    void holdKey(std::uint32_t key, bool down);
    void moveCursor(QPoint way);
    void holdButton(std::int32_t button, bool down);

private:
    void notify(const QString &method, const QVariantList &arguments);

    mutable QDBusConnection m_bus{QString()};
    QString m_remote; // the session of the keyboard and the mouse
};

} // namespace tovel
