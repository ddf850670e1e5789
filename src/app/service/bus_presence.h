#pragma once

#include <QDBusConnection>
#include <QObject>

namespace tovel {

class ApplicationAdaptor;
class CommandAdaptor;

// What became of the wish to be the one Tovel of the session.
enum class Claim {
    Ours, // this process has the name
    Taken, // a Tovel runs already
    Unanswered, // one runs already, but does not answer
    Unowned, // there is no bus, or its Tovel is one of another display: this one is on its own
};

// The program on the session bus: one object with org.freedesktop.Application and org.tovel.Tovel1.
class BusPresence final : public QObject
{
    Q_OBJECT

public:
    explicit BusPresence(const QDBusConnection &bus);
    ~BusPresence() override;

    // Puts the object on the bus, then asks for the name. Calls of others wait for the event loop.
    Claim claim();

    // Has the Tovel that runs already show its panel; false when it does not answer.
    bool activateOther();

    // Whatever the bus said no longer holds.
    Q_SIGNAL void busLost();

    ApplicationAdaptor &application() { return *m_application; }
    CommandAdaptor &commands() { return *m_commands; }

private:
    QDBusConnection m_bus;
    ApplicationAdaptor *m_application;
    CommandAdaptor *m_commands;
};

} // namespace tovel
