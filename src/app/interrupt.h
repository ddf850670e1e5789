#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;

namespace tovel {

// Brings SIGINT, SIGTERM and SIGHUP into the event loop. One that comes half a second after the
// first, or later, ends the program at once, whatever it is doing; sooner ones are taken for echoes
// of the first. One object at a time.
class Interrupt final
{
public:
    // The handler is called on the thread of the event loop with the signal's number.
    explicit Interrupt(std::function<void(int)> handler);
    ~Interrupt();

    Interrupt(const Interrupt &) = delete;
    Interrupt &operator=(const Interrupt &) = delete;

private:
    void arrived();

    std::function<void(int)> m_handler;
    int m_pipe[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace tovel
