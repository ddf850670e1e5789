#pragma once

#include <QDBusServiceWatcher>
#include <QObject>

class QDBusConnection;

namespace tovel {

// Whether GNOME Shell's extension of Tovel is there, which shows the icon in the top bar while no
// tray takes it. It never waits for an answer.
class ShellIndicator final : public QObject
{
    Q_OBJECT

public:
    explicit ShellIndicator(const QDBusConnection &bus);

    bool isThere() const { return m_isThere; }

Q_SIGNALS:
    void changed();

private:
    void setThere(bool isThere);

    QDBusServiceWatcher m_owner;
    bool m_isThere = false;
};

} // namespace tovel
