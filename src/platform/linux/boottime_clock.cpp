#include "platform/linux/boottime_clock.h"

#include <QSocketNotifier>

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>

#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

namespace tovel {

namespace {

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t shortestBeat = 1'000'000;
constexpr double longestInterval = 1e9; // seconds; keeps every sum far from overflow

std::int64_t nanosecondsOn(clockid_t clock)
{
    timespec now{};
    ::clock_gettime(clock, &now);
    return now.tv_sec * nanosecondsPerSecond + now.tv_nsec;
}

std::int64_t nanoseconds(double seconds)
{
    // Written so that NaN counts as zero.
    if (!(seconds > 0))
        return 0;
    return static_cast<std::int64_t>(std::min(seconds, longestInterval) * nanosecondsPerSecond);
}

// When a timer fires; the serial keeps timers of one moment in the order of their start.
using Due = std::pair<std::int64_t, std::uint64_t>;

struct Beat
{
    Due due;
    std::int64_t interval = 0;
    bool repeats = false;
    std::function<void()> handler;
};

} // namespace

// All timers of a clock, on one descriptor that is armed for the earliest. One descriptor per timer
// would leave the order of timers that are due together to the event loop.
class BoottimeClock::Schedule final
{
public:
    Schedule()
        : m_descriptor(::timerfd_create(CLOCK_BOOTTIME, TFD_NONBLOCK | TFD_CLOEXEC))
    {
        if (m_descriptor < 0) {
            qWarning("No timer descriptor could be made; timers will not fire.");
            return;
        }
        m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                         [this] { fireDue(); });
    }

    ~Schedule()
    {
        m_notifier.reset();
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    Schedule(const Schedule &) = delete;
    Schedule &operator=(const Schedule &) = delete;

    std::shared_ptr<Beat> start(std::int64_t interval, bool repeats, std::function<void()> handler)
    {
        auto beat = std::make_shared<Beat>();
        beat->interval = repeats ? std::max(interval, shortestBeat) : interval;
        beat->due = {nanosecondsOn(CLOCK_BOOTTIME) + beat->interval, m_nextSerial++};
        beat->repeats = repeats;
        beat->handler = std::move(handler);
        m_beats.emplace(beat->due, beat);
        arm();
        return beat;
    }

    void stop(const Beat &beat)
    {
        m_beats.erase(beat.due);
        arm();
    }

    std::function<void()> wakeHandler;

private:
    void fireDue()
    {
        std::uint64_t expirations = 0;
        [[maybe_unused]] const auto count = ::read(m_descriptor, &expirations, sizeof expirations);
        m_armedFor = 0;

        const std::int64_t now = nanosecondsOn(CLOCK_BOOTTIME);
        while (!m_beats.empty() && m_beats.begin()->first.first <= now) {
            const std::shared_ptr<Beat> beat = m_beats.begin()->second;
            m_beats.erase(m_beats.begin());
            if (beat->repeats) {
                const std::int64_t missed = (now - beat->due.first) / beat->interval;
                beat->due.first += (missed + 1) * beat->interval;
                m_beats.emplace(beat->due, beat);
            }
            // Before the handler, because that may run an event loop of its own.
            arm();
            if (const auto wake = wakeHandler)
                wake();
            beat->handler();
        }
        arm();
    }

    void arm()
    {
        const std::int64_t due = m_beats.empty() ? 0 : m_beats.begin()->first.first;
        if (m_descriptor < 0 || due == m_armedFor)
            return;
        m_armedFor = due;
        itimerspec setting{};
        setting.it_value.tv_sec = due / nanosecondsPerSecond;
        setting.it_value.tv_nsec = due % nanosecondsPerSecond;
        ::timerfd_settime(m_descriptor, TFD_TIMER_ABSTIME, &setting, nullptr);
    }

    int m_descriptor;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::map<Due, std::shared_ptr<Beat>> m_beats;
    std::uint64_t m_nextSerial = 0;
    std::int64_t m_armedFor = 0;
};

BoottimeClock::BoottimeClock()
    : m_schedule(std::make_shared<Schedule>())
{ }

BoottimeClock::~BoottimeClock() = default;

double BoottimeClock::monotonicTime() const
{
    return static_cast<double>(nanosecondsOn(CLOCK_BOOTTIME)) / nanosecondsPerSecond;
}

double BoottimeClock::CFAbsoluteTimeGetCurrent() const
{
    constexpr std::int64_t referenceDate = 978'307'200 * nanosecondsPerSecond;
    return static_cast<double>(nanosecondsOn(CLOCK_REALTIME) - referenceDate)
        / nanosecondsPerSecond;
}

std::unique_ptr<Timer> BoottimeClock::startTimer(double interval, bool repeats,
                                                 std::function<void()> handler)
{
    class ScheduledTimer final : public Timer
    {
    public:
        ScheduledTimer(std::weak_ptr<Schedule> schedule, std::shared_ptr<Beat> beat)
            : m_schedule(std::move(schedule))
            , m_beat(std::move(beat))
        { }

        ~ScheduledTimer() override
        {
            if (const auto schedule = m_schedule.lock())
                schedule->stop(*m_beat);
        }

    private:
        std::weak_ptr<Schedule> m_schedule;
        std::shared_ptr<Beat> m_beat;
    };

    return std::make_unique<ScheduledTimer>(
        m_schedule, m_schedule->start(nanoseconds(interval), repeats, std::move(handler)));
}

void BoottimeClock::setWakeHandler(std::function<void()> handler)
{
    m_schedule->wakeHandler = std::move(handler);
}

} // namespace tovel
