#pragma once

#include <QList>

#include <functional>
#include <memory>

class QSocketNotifier;

namespace tovel {

// Brings SIGINT, SIGTERM and SIGHUP into the event loop. One that comes half a second after the
// first, or later, ends the program at once, whatever it is doing; sooner ones are taken for echoes
// of the first. So does the first one itself, three seconds later, when nothing came of it: what
// hangs is not left to hang. Uses the process's alarm. One object at a time.
class Interrupt final
{
public:
    // What has to come of the first signal in time: the handler's call, or the program's end, even
    // where that is still to come when this object goes.
    enum class Deadline { Call, End };

    // The handler is called on the thread of the event loop with the signal's number.
    explicit Interrupt(std::function<void(int)> handler, Deadline deadline = Deadline::Call);
    ~Interrupt();

    Interrupt(const Interrupt &) = delete;
    Interrupt &operator=(const Interrupt &) = delete;

private:
    void arrived();

    std::function<void(int)> m_handler;
    Deadline m_deadline;
    int m_pipe[2] = {-1, -1};
    QList<int> m_caught;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace tovel
