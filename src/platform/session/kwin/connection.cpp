#include "platform/session/kwin/connection.h"

#include "platform/session/wayland/wayland_socket.h"

#include <QDeadlineTimer>
#include <QSocketNotifier>

#include <wayland-client.h>

#include <cerrno>

#include <poll.h>

namespace tovel::kwin {

namespace {

// More rounds of questions than any answer leads to; a compositor that never comes to an end is
// taken as it is.
constexpr int MaximumRounds = 16;

void tellGlobal(void *data, wl_registry *, std::uint32_t name, const char *interface,
                std::uint32_t version)
{
    static_cast<Connection *>(data)->appear({name, interface, version});
}

void tellRemoval(void *data, wl_registry *, std::uint32_t name)
{
    static_cast<Connection *>(data)->vanish(name);
}

constexpr wl_registry_listener RegistryListener{tellGlobal, tellRemoval};

void tellDone(void *data, wl_callback *, std::uint32_t)
{
    static_cast<Connection *>(data)->answer();
}

constexpr wl_callback_listener SyncListener{tellDone};

} // namespace

std::unique_ptr<Connection> Connection::open(const QByteArray &name, Handlers handlers)
{
    const int socket = connectToCompositor(name);
    if (socket < 0)
        return nullptr;
    wl_display *display = wl_display_connect_to_fd(socket);
    if (!display)
        return nullptr; // it has closed the socket
    return std::unique_ptr<Connection>(new Connection(display, std::move(handlers)));
}

Connection::Connection(wl_display *display, Handlers handlers)
    : m_display(display)
    , m_handlers(std::move(handlers))
    , m_registry(wl_display_get_registry(display))
{
    wl_registry_add_listener(m_registry, &RegistryListener, this);
}

Connection::~Connection()
{
    m_handlers = {[](const Global &) {}, [](std::uint32_t) {}};
    settle(m_patience);
    m_notifier.reset();
    if (m_sync)
        wl_callback_destroy(m_sync);
    wl_registry_destroy(m_registry);
    wl_display_disconnect(m_display);
}

void *Connection::bind(const Global &global, const wl_interface *interface, std::uint32_t version)
{
    m_expectsMore = true;
    return wl_registry_bind(m_registry, global.name, interface, std::min(version, global.version));
}

void Connection::answer()
{
    wl_callback_destroy(std::exchange(m_sync, nullptr));
    m_isLate = false;
}

bool Connection::settle(std::chrono::milliseconds patience)
{
    m_patience = patience;
    // A late answer says nothing of what was sent after its question.
    if (m_isAlive && m_sync && !await(QDeadlineTimer(m_isLate ? patience * 0 : patience)))
        return false;
    const QDeadlineTimer deadline(patience);
    for (int round = 0; m_isAlive && round < MaximumRounds; ++round) {
        m_expectsMore = false;
        m_sync = wl_display_sync(m_display);
        wl_callback_add_listener(m_sync, &SyncListener, this);
        if (!await(deadline))
            return false;
        if (!m_expectsMore)
            break;
    }
    return m_isAlive;
}

bool Connection::await(const QDeadlineTimer &deadline)
{
    while (m_sync) {
        while (wl_display_prepare_read(m_display) != 0) {
            if (!dispatch())
                return false;
        }
        if (!m_sync) {
            wl_display_cancel_read(m_display);
            break;
        }
        pollfd readiness{wl_display_get_fd(m_display), POLLIN, 0};
        // What does not fit goes out as soon as there is room; a broken pipe still has events.
        if (wl_display_flush(m_display) < 0 && errno == EAGAIN)
            readiness.events |= POLLOUT;
        const int ready = poll(&readiness, 1, static_cast<int>(deadline.remainingTime()));
        const bool isReadable = ready > 0 && (readiness.revents & ~POLLOUT) != 0;
        if (!isReadable)
            wl_display_cancel_read(m_display);
        else if (wl_display_read_events(m_display) < 0)
            return fail(), false;
        if (!dispatch())
            return false;
        if (m_sync && deadline.hasExpired()) {
            m_isLate = true;
            return false;
        }
    }
    return true;
}

bool Connection::dispatch()
{
    if (wl_display_dispatch_pending(m_display) >= 0)
        return true;
    fail();
    return false;
}

void Connection::collect()
{
    if (!m_isAlive)
        return;
    while (wl_display_prepare_read(m_display) != 0) {
        if (!dispatch())
            return;
    }
    wl_display_flush(m_display);
    pollfd readiness{wl_display_get_fd(m_display), POLLIN, 0};
    if (poll(&readiness, 1, 0) <= 0)
        wl_display_cancel_read(m_display);
    else if (wl_display_read_events(m_display) < 0)
        return fail();
    dispatch();
}

void Connection::setReadableHandler(std::function<void()> handler)
{
    m_readableHandler = std::move(handler);
    m_notifier
        = std::make_unique<QSocketNotifier>(wl_display_get_fd(m_display), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
        collect();
        m_readableHandler();
    });
}

void Connection::fail()
{
    m_isAlive = false;
    if (m_notifier)
        m_notifier->setEnabled(false);
}

} // namespace tovel::kwin
