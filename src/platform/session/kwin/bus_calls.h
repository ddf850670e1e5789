#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>

namespace tovel::kwin {

// Calls on the session bus to the services that are all KWin's own. One that is silent is waited
// for once: for some seconds then, or until there is another KWin, nothing is asked.
class BusCalls final
{
public:
    explicit BusCalls(const QDBusConnection &bus)
        : m_bus(bus)
    { }

    QDBusConnection &bus() { return m_bus; }

    bool isSilent() const { return !m_silence.hasExpired(); }
    void expectAnswers() { m_silence.setRemainingTime(0); }

    // The reply; not one of that type where there is none within a second.
    QDBusMessage ask(QDBusMessage call);
    // The same of what is to be carried out late rather than never.
    QDBusMessage demand(const QDBusMessage &call);

    // Is carried out before whatever is asked later.
    void tell(QDBusMessage call);

private:
    QDBusConnection m_bus;
    QDeadlineTimer m_silence{0}; // how long nobody waits
};

} // namespace tovel::kwin
