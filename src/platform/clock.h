#pragma once

#include <functional>
#include <memory>

namespace tovel {

// A running timer; stops when destroyed. May be destroyed from within its own handler.
class Timer
{
public:
    virtual ~Timer() = default;
};

// Time, and the only way to wait for it. Counts on while the machine sleeps.
class Clock
{
public:
    virtual ~Clock() = default;

    // Seconds on a monotonic clock with an arbitrary start.
    virtual double monotonicTime() const = 0;

    // Seconds of wall-clock time since 2001-01-01 00:00:00 UTC.
    virtual double CFAbsoluteTimeGetCurrent() const = 0;

    // Calls the handler on the main thread after the interval in seconds, once, or again after
    // every further interval. Never calls it from within this call. Timers that are due together
    // fire in the order in which they were started.
    [[nodiscard]] virtual std::unique_ptr<Timer> startTimer(double interval, bool repeats,
                                                            std::function<void()> handler)
        = 0;
};

} // namespace tovel
