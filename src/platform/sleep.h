#pragma once

#include "platform/clock.h"

#include <coroutine>
#include <memory>

namespace tovel {

// Awaitable that suspends a coroutine for some seconds on a clock: co_await Sleep(clock, 0.1).
// The clock must outlive the wait.
class Sleep
{
public:
    Sleep(Clock &clock, double seconds)
        : m_clock(clock)
        , m_seconds(seconds)
    { }

    bool await_ready() const noexcept { return false; }

    void await_suspend(std::coroutine_handle<> waiting)
    {
        m_timer = m_clock.startTimer(m_seconds, false, [waiting] { waiting.resume(); });
    }

    void await_resume() const noexcept { }

private:
    Clock &m_clock;
    double m_seconds;
    std::unique_ptr<Timer> m_timer;
};

} // namespace tovel
