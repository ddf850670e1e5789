#include "app/session_bus.h"

#include <QMetaType>

#include <algorithm>
#include <cstddef>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tovel {

namespace {

constexpr char addressVariable[] = "DBUS_SESSION_BUS_ADDRESS";
constexpr int patience = 2000; // milliseconds

// Where the D-Bus library looks when no address is set, before it would start a bus.
QByteArray userBusAddress()
{
    const QByteArray directory = qgetenv("XDG_RUNTIME_DIR");
    struct stat found
    {
    };
    const bool isThere = !directory.isEmpty() && stat((directory + "/bus").constData(), &found) == 0
        && S_ISSOCK(found.st_mode) && found.st_uid == getuid();
    return isThere ? "unix:path=" + directory.toPercentEncoding("/-_.") + "/bus" : QByteArray();
}

// The path of the socket, behind a zero byte where it is no file. Empty for other transports.
QByteArray socketPath(const QByteArray &address)
{
    if (!address.startsWith("unix:"))
        return {};
    for (const QByteArray &pair : address.mid(5).split(',')) {
        if (pair.startsWith("path="))
            return QByteArray::fromPercentEncoding(pair.mid(5));
        if (pair.startsWith("abstract="))
            return '\0' + QByteArray::fromPercentEncoding(pair.mid(9));
    }
    return {};
}

// Whether anybody answers the first line of the authentication (D-Bus Specification,
// "Authentication Protocol") at the socket. The D-Bus library waits for that without an end.
bool answers(const QByteArray &path)
{
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    if (path.size() >= qsizetype(sizeof place.sun_path))
        return false;
    std::copy(path.begin(), path.end(), place.sun_path);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0)
        return false;
    static constexpr char question[] = "\0AUTH\r\n";
    pollfd reply{socket, POLLIN, 0};
    const bool isAnswered = connect(socket, reinterpret_cast<sockaddr *>(&place), length) == 0
        && write(socket, question, sizeof question - 1) == qsizetype(sizeof question - 1)
        && poll(&reply, 1, patience) == 1 && (reply.revents & POLLIN);
    close(socket);
    return isAnswered;
}

// Whether there is a bus to connect to: it has an address that starts none, and answers. Of the
// transports, sockets of this machine are asked; the address's first one counts.
bool findBus()
{
    const QByteArray set = qgetenv(addressVariable);
    const QByteArray address = set.isEmpty() ? userBusAddress() : set;
    if (address.isEmpty() || address.contains("autolaunch:"))
        return false;
    const QByteArray path = socketPath(address.split(';').first());
    return path.isEmpty() || answers(path);
}

bool hasBus()
{
    static const bool has = findBus();
    return has;
}

struct FirstType
{
};

// Qt's thread that reads the bus goes on until statics are destroyed, the last made first: the
// types that it makes of messages must have been there before it.
void outliveBus() { qRegisterMetaType<FirstType>(); }

} // namespace

QDBusConnection sessionBus()
{
    outliveBus();
    return hasBus() ? QDBusConnection::sessionBus() : QDBusConnection(QString());
}

NoBusStart::NoBusStart()
    : m_address(qgetenv(addressVariable))
{
    outliveBus();
    if (!hasBus())
        qputenv(addressVariable, "disabled:"); // no transport has this name
}

NoBusStart::~NoBusStart()
{
    if (hasBus())
        return;
    QDBusConnection::sessionBus(); // which Qt remembers
    if (m_address.isEmpty())
        qunsetenv(addressVariable);
    else
        qputenv(addressVariable, m_address);
}

} // namespace tovel
