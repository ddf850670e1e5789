#pragma once

#include "platform/session/i3/frames.h"

#include <QByteArray>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

class QSocketNotifier;

namespace tovel::i3 {

// Who listens at a socket's path: a program of this user, or another user's, which is not asked.
enum class Listener { Nobody, Own, Anothers };

Listener listenerAt(const QByteArray &path);

// A connection to the socket of i3 or sway. No call waits for longer than it is told to; a session
// that did not answer by then, or sent what is no frame, is gone for good for this connection.
class IpcConnection final
{
public:
    // Null when nobody listens there, or not to this user, or another user does.
    static std::unique_ptr<IpcConnection> open(const QByteArray &path);
    ~IpcConnection();

    IpcConnection(const IpcConnection &) = delete;
    IpcConnection &operator=(const IpcConnection &) = delete;

    bool isAlive() const { return m_socket >= 0; }

    // The reply. Events that the session sent before it are there to take then.
    std::optional<QByteArray> ask(MessageType type, const QByteArray &payload,
                                  std::chrono::milliseconds patience);

    // Those that have arrived, oldest first. Does not wait. Where more have arrived than it takes
    // in one go, the handler is called again.
    std::vector<Frame> takeEvents();
    bool hasEvents() const { return !m_events.empty(); }

    // Called from the event loop when there may be events to take, and when the session is gone.
    void setReadableHandler(std::function<void()> handler);

private:
    using Deadline = std::chrono::steady_clock::time_point;

    explicit IpcConnection(int socket);

    bool send(const QByteArray &bytes, Deadline deadline);
    bool await(short events, Deadline deadline) const;
    // Some of what is there; false when the session is gone.
    bool receive();
    // An event to take; false for what is none, and for more than anybody takes.
    bool keep(Frame &&frame);
    void drop();

    int m_socket; // -1: gone
    FrameReader m_reader;
    std::vector<Frame> m_events;
    qsizetype m_eventBytes = 0;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::function<void()> m_readableHandler;
};

} // namespace tovel::i3
