#pragma once

#include "platform/clock.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace tovel {

// Time that passes only when told to. Counts in whole nanoseconds, so that sums of waits are exact.
class VirtualClock final : public Clock
{
public:
    VirtualClock();
    ~VirtualClock() override;

    double monotonicTime() const override;
    double CFAbsoluteTimeGetCurrent() const override;
    // A repeating timer needs an interval above 0. An interval below 0 counts as 0.
    [[nodiscard]] std::unique_ptr<Timer> startTimer(double interval, bool repeats,
                                                    std::function<void()> handler) override;

    // Lets the seconds pass, firing what comes due in order of due time, then of start; each
    // handler finds the time at which it was due, or the present when it is overdue.
    void advance(double seconds);

    // Lets time pass from one due time to the next until the predicate holds, no longer than the
    // seconds given. Tells whether it holds. Asks it at the start and after each handler.
    bool runUntil(const std::function<bool()> &predicate, double maximumSeconds);

    // Time that passes while the program is at work: nothing fires, not even what comes due.
    void advanceWallClock(double seconds);

    // Timers that are running.
    int timerCount() const;

private:
    struct Entry;
    struct State;
    class VirtualTimer;

    std::shared_ptr<State> m_state;
};

} // namespace tovel
