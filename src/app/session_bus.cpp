#include "app/session_bus.h"

#include <QMetaType>

#include <sys/stat.h>
#include <unistd.h>

namespace tovel {

namespace {

// Where the D-Bus library looks when no address is set, before it would start a bus.
bool hasUserBus()
{
    const QByteArray directory = qgetenv("XDG_RUNTIME_DIR");
    struct stat found
    {
    };
    return !directory.isEmpty() && stat((directory + "/bus").constData(), &found) == 0
        && S_ISSOCK(found.st_mode) && found.st_uid == getuid();
}

bool isKnown(const QByteArray &address)
{
    return address.isEmpty() ? hasUserBus() : !address.contains("autolaunch:");
}

struct FirstType
{
};

// Qt's thread that reads the bus goes on until statics are destroyed, the last made first: the
// types that it makes of messages must have been there before it.
void outliveBus() { qRegisterMetaType<FirstType>(); }

constexpr char addressVariable[] = "DBUS_SESSION_BUS_ADDRESS";

} // namespace

QDBusConnection sessionBus()
{
    outliveBus();
    return isKnown(qgetenv(addressVariable)) ? QDBusConnection::sessionBus()
                                             : QDBusConnection(QString());
}

NoBusStart::NoBusStart()
    : m_address(qgetenv(addressVariable))
    , m_isKnown(isKnown(m_address))
{
    outliveBus();
    if (!m_isKnown)
        qputenv(addressVariable, "disabled:"); // no transport has this name
}

NoBusStart::~NoBusStart()
{
    if (m_isKnown)
        return;
    QDBusConnection::sessionBus(); // which Qt remembers
    if (m_address.isEmpty())
        qunsetenv(addressVariable);
    else
        qputenv(addressVariable, m_address);
}

} // namespace tovel
