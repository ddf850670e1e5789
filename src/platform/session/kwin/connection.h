#pragma once

#include <QByteArray>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

struct wl_callback;
struct wl_display;
struct wl_interface;
struct wl_registry;
class QDeadlineTimer;
class QSocketNotifier;

namespace tovel::kwin {

// What a compositor offers (wl_registry).
struct Global
{
    std::uint32_t name = 0;
    QByteArray interface;
    std::uint32_t version = 0;
};

// A connection to a Wayland compositor. Nothing waits for longer than it is told to: when the
// compositor is silent for so long, it is late, and nobody waits for it again until it has
// answered. When it is gone, isAlive() says so for good.
class Connection final
{
public:
    struct Handlers
    {
        std::function<void(const Global &)> appeared;
        std::function<void(std::uint32_t name)> vanished;
    };

    // Null when nobody listens on the socket, or somebody of another user does. The name is that of
    // WAYLAND_DISPLAY. Does not wait.
    static std::unique_ptr<Connection> open(const QByteArray &name, Handlers handlers);
    // Waits until what was sent has arrived, as long as the patience of the last settle().
    ~Connection();

    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    bool isAlive() const { return m_isAlive; }
    bool isLate() const { return m_isLate; }

    // A proxy of the interface, in the version at most. Counts as a request that brings events.
    void *bind(const Global &global, const wl_interface *interface, std::uint32_t version);

    // That something was requested which events will tell of.
    void expectMore() { m_expectsMore = true; }

    // Waits until the compositor has handled everything sent, and what its events made us send; the
    // events of it all have been taken then. False when it is late or gone.
    bool settle(std::chrono::milliseconds patience);

    // Takes the events that have arrived, without waiting.
    void collect();

    // Called from the event loop after events were taken there, and when the compositor is gone.
    void setReadableHandler(std::function<void()> handler);

    // For the library's callbacks.
    void appear(const Global &global) const { m_handlers.appeared(global); }
    void vanish(std::uint32_t name) const { m_handlers.vanished(name); }
    void answer();

private:
    Connection(wl_display *display, Handlers handlers);

    bool await(const QDeadlineTimer &deadline);
    bool dispatch();
    void fail();

    wl_display *m_display;
    Handlers m_handlers;
    wl_registry *m_registry = nullptr;
    wl_callback *m_sync = nullptr; // asked and not answered
    bool m_isAlive = true;
    bool m_isLate = false;
    bool m_expectsMore = true;
    std::chrono::milliseconds m_patience{0};
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::function<void()> m_readableHandler;
};

} // namespace tovel::kwin
