#include "platform/session/i3/ipc_connection.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tovel::i3 {

namespace {

// Nobody sends so many in one turn of the event loop; a session that floods is given up.
constexpr std::size_t MaximumEvents = 10000;
constexpr qsizetype MaximumEventBytes = MaximumPayload;

// A socket that another user has made may be anything. root, whom no user can keep out, is not kept
// from any.
bool isOwn(int socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::geteuid() == 0
        || (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0
            && peer.uid == ::geteuid());
}

// -1 where nobody listens.
int connectTo(const QByteArray &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.isEmpty() || static_cast<std::size_t>(path.size()) >= sizeof address.sun_path)
        return -1;
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0)
        return -1;
    // Where the queue of those who want in is full, a socket that does not block says so at once.
    if (::connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
        return socket;
    ::close(socket);
    return -1;
}

} // namespace

Listener listenerAt(const QByteArray &path)
{
    const int socket = connectTo(path);
    if (socket < 0)
        return Listener::Nobody;
    const Listener listener = isOwn(socket) ? Listener::Own : Listener::Anothers;
    ::close(socket);
    return listener;
}

std::unique_ptr<IpcConnection> IpcConnection::open(const QByteArray &path)
{
    const int socket = connectTo(path);
    if (socket >= 0 && isOwn(socket))
        return std::unique_ptr<IpcConnection>(new IpcConnection(socket));
    if (socket >= 0)
        ::close(socket);
    return nullptr;
}

IpcConnection::IpcConnection(int socket)
    : m_socket(socket)
{ }

IpcConnection::~IpcConnection() { drop(); }

void IpcConnection::drop()
{
    // It may be the one that has called.
    if (m_notifier) {
        m_notifier->setEnabled(false);
        m_notifier.release()->deleteLater();
    }
    if (m_socket >= 0)
        ::close(std::exchange(m_socket, -1));
}

bool IpcConnection::await(short events, Deadline deadline) const
{
    using namespace std::chrono;
    for (;;) {
        const auto left = ceil<milliseconds>(deadline - steady_clock::now());
        // However fast it sends.
        if (left <= 0ms)
            return false;
        pollfd waited{m_socket, events, 0};
        const int ready = ::poll(&waited, 1, static_cast<int>(left.count()));
        if (ready >= 0 || errno != EINTR)
            return ready > 0;
    }
}

bool IpcConnection::send(const QByteArray &bytes, Deadline deadline)
{
    for (qsizetype at = 0; at < bytes.size();) {
        const ssize_t sent = ::send(m_socket, bytes.constData() + at,
                                    static_cast<std::size_t>(bytes.size() - at), MSG_NOSIGNAL);
        if (sent > 0)
            at += sent;
        else if (errno != EINTR && (errno != EAGAIN || !await(POLLOUT, deadline)))
            return false;
    }
    return true;
}

bool IpcConnection::receive()
{
    std::array<char, 1 << 16> bytes;
    const ssize_t size = ::recv(m_socket, bytes.data(), bytes.size(), 0);
    if (size > 0)
        m_reader.append({bytes.data(), static_cast<qsizetype>(size)});
    return size > 0 || (size < 0 && (errno == EAGAIN || errno == EINTR));
}

bool IpcConnection::keep(Frame &&frame)
{
    m_eventBytes += frame.payload.size();
    if (!isEvent(frame.type) || m_events.size() == MaximumEvents
        || m_eventBytes > MaximumEventBytes)
        return false;
    m_events.push_back(std::move(frame));
    return true;
}

std::optional<QByteArray> IpcConnection::ask(MessageType type, const QByteArray &payload,
                                             std::chrono::milliseconds patience)
{
    const Deadline deadline = std::chrono::steady_clock::now() + patience;
    bool isThere = isAlive() && send(frameBytes(type, payload), deadline);
    while (isThere) {
        while (auto frame = isThere ? m_reader.take() : std::nullopt) {
            if (frame->type == type)
                return frame->payload;
            isThere = keep(*std::move(frame));
        }
        isThere = isThere && !m_reader.isBroken() && await(POLLIN, deadline) && receive();
    }
    drop();
    return std::nullopt;
}

std::vector<Frame> IpcConnection::takeEvents()
{
    if (isAlive()) {
        bool isThere = receive();
        while (auto frame = isThere ? m_reader.take() : std::nullopt)
            isThere = keep(*std::move(frame));
        if (!isThere || m_reader.isBroken())
            drop();
    }
    m_eventBytes = 0;
    return std::exchange(m_events, {});
}

void IpcConnection::setReadableHandler(std::function<void()> handler)
{
    m_readableHandler = std::move(handler);
    m_notifier.reset();
    if (!m_readableHandler || !isAlive())
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_socket, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { m_readableHandler(); });
}

} // namespace tovel::i3
