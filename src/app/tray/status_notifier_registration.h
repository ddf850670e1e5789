#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

#include <memory>

class QDBusMessage;
class QDBusPendingCallWatcher;

namespace tovel {

// Registers an item with the session's org.kde.StatusNotifierWatcher (StatusNotifierItem of
// freedesktop.org), and again whenever the watcher or the tray is another one. It never waits for
// an answer, and starts no service.
class StatusNotifierRegistration final : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Undecided, // the watcher has yet to answer, or does not take the item
        NoTray, // there is no watcher, or no tray behind it, and it answers whoever asks
        Registered,
    };

    // The item's name on the bus.
    StatusNotifierRegistration(const QDBusConnection &bus, const QString &service);
    ~StatusNotifierRegistration() override;

    State state() const { return m_state; }

Q_SIGNALS:
    void stateChanged();

private Q_SLOTS:
    void ask();

private:
    void takeAnswer(const QDBusMessage &answer);
    void takeDescription(const QDBusMessage &description);
    void takeReceipt(const QDBusMessage &receipt);
    void call(const QDBusMessage &message,
              void (StatusNotifierRegistration::*take)(const QDBusMessage &));
    void setState(State state);

    QDBusConnection m_bus;
    QString m_service;
    QDBusServiceWatcher m_owner;
    std::unique_ptr<QDBusPendingCallWatcher> m_call;
    State m_state = State::Undecided;
};

} // namespace tovel
