#include "platform/session/wayland/wayland_socket.h"

#include <cstdint>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tovel {

namespace {

bool isOwn(int socket)
{
    ucred peer{};
    socklen_t size = sizeof(peer);
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == getuid();
}

} // namespace

// Connecting fails rather than waits when too many others are waiting already.
int connectToCompositor(const QByteArray &name)
{
    const QByteArray path = name.startsWith('/') ? name : qgetenv("XDG_RUNTIME_DIR") + '/' + name;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.isEmpty() || static_cast<std::size_t>(path.size()) >= sizeof(address.sun_path))
        return -1;
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0)
        return -1;
    const auto *generic = reinterpret_cast<const sockaddr *>(&address);
    if (connect(socket, generic, sizeof(address)) == 0 && isOwn(socket))
        return socket;
    close(socket);
    return -1;
}

bool isCompositorAnswering(const QByteArray &name, std::chrono::milliseconds patience)
{
    const int socket = connectToCompositor(name);
    if (socket < 0)
        return false;
    // To the display, object 1: request 0, in 12 bytes, with the new object 2.
    static constexpr std::uint32_t sync[] = {1, 12 << 16, 2};
    pollfd reply{socket, POLLIN, 0};
    char first = 0;
    const bool isAnswering = send(socket, sync, sizeof sync, MSG_NOSIGNAL) == sizeof sync
        && poll(&reply, 1, static_cast<int>(patience.count())) == 1
        && recv(socket, &first, 1, 0) == 1;
    close(socket);
    return isAnswering;
}

} // namespace tovel
