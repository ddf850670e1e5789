#pragma once

#include "platform/clock.h"

#include <functional>
#include <memory>

namespace tovel {

// The clock of a running system, on CLOCK_BOOTTIME: a timer that falls due while the machine
// sleeps fires when it wakes. Belongs to one thread that runs a Qt event loop; to be made after the
// QCoreApplication. Timers may outlive the clock and then never fire; a handler must not destroy
// the clock.
class BoottimeClock final : public Clock
{
public:
    BoottimeClock();
    ~BoottimeClock() override;

    double monotonicTime() const override;
    double CFAbsoluteTimeGetCurrent() const override;

    // Intervals below zero count as zero, and a repeating timer beats at most a thousand times a
    // second. A repeating timer that missed beats fires once for all of them and goes on in step.
    [[nodiscard]] std::unique_ptr<Timer> startTimer(double interval, bool repeats,
                                                    std::function<void()> handler) override;

    // Called just before each timer's handler, for whoever has to know that time has passed since
    // it last looked at the world. Empty to call nothing.
    void setWakeHandler(std::function<void()> handler);

private:
    class Schedule;

    std::shared_ptr<Schedule> m_schedule;
};

} // namespace tovel
