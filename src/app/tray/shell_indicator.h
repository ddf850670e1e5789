#pragma once

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QObject>

#include <memory>

namespace tovel {

// Whether GNOME Shell's extension of Tovel is there and serves this program: then it shows the icon
// in the top bar while no tray takes it. It never waits for an answer.
class ShellIndicator final : public QObject
{
    Q_OBJECT

public:
    explicit ShellIndicator(const QDBusConnection &bus);

    bool isThere() const { return m_isThere; }

Q_SIGNALS:
    void changed();

private:
    void ask();
    void setThere(bool isThere);

    QDBusConnection m_bus;
    QDBusServiceWatcher m_owner;
    std::unique_ptr<QDBusPendingCallWatcher> m_question; // the latest
    bool m_isThere = false;
};

} // namespace tovel
