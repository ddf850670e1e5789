#include "platform/simulated/virtual_clock.h"

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace tovel {

namespace {

constexpr double nanosecondsPerSecond = 1e9;
// Starts that nobody takes for each other or for 0.
constexpr double monotonicStart = 1000;
constexpr double absoluteStart = 700000000;

std::int64_t nanoseconds(double seconds)
{
    return std::max<std::int64_t>(0, std::llround(seconds * nanosecondsPerSecond));
}

} // namespace

struct VirtualClock::Entry
{
    std::int64_t due = 0;
    std::int64_t interval = 0;
    bool repeats = false;
    std::function<void()> handler;
};

struct VirtualClock::State
{
    std::int64_t now = 0;
    std::vector<std::shared_ptr<Entry>> entries; // in order of start

    // The entry that comes due first, no later than the limit.
    std::shared_ptr<Entry> next(std::int64_t limit) const
    {
        const auto first
            = std::ranges::min_element(entries, {}, [](const auto &e) { return e->due; });
        return first != entries.end() && (*first)->due <= limit ? *first : nullptr;
    }

    void fire(const std::shared_ptr<Entry> &entry)
    {
        now = std::max(now, entry->due);
        if (entry->repeats)
            entry->due += entry->interval;
        else
            std::erase(entries, entry);
        // A copy, which outlives a timer that its handler destroys.
        const auto handler = entry->handler;
        handler();
    }
};

class VirtualClock::VirtualTimer final : public Timer
{
public:
    VirtualTimer(std::weak_ptr<State> state, std::shared_ptr<Entry> entry)
        : m_state(std::move(state))
        , m_entry(std::move(entry))
    { }

    ~VirtualTimer() override
    {
        if (const auto state = m_state.lock())
            std::erase(state->entries, m_entry);
        m_entry->handler = nullptr;
    }

private:
    std::weak_ptr<State> m_state;
    std::shared_ptr<Entry> m_entry;
};

VirtualClock::VirtualClock()
    : m_state(std::make_shared<State>())
{ }

VirtualClock::~VirtualClock() = default;

double VirtualClock::monotonicTime() const
{
    return monotonicStart + static_cast<double>(m_state->now) / nanosecondsPerSecond;
}

double VirtualClock::CFAbsoluteTimeGetCurrent() const
{
    return absoluteStart + static_cast<double>(m_state->now) / nanosecondsPerSecond;
}

std::unique_ptr<Timer> VirtualClock::startTimer(double interval, bool repeats,
                                                std::function<void()> handler)
{
    auto entry = std::make_shared<Entry>();
    entry->interval = nanoseconds(interval);
    Q_ASSERT(!repeats || entry->interval > 0);
    entry->due = m_state->now + entry->interval;
    entry->repeats = repeats;
    entry->handler = std::move(handler);
    m_state->entries.push_back(entry);
    return std::make_unique<VirtualTimer>(m_state, std::move(entry));
}

void VirtualClock::advance(double seconds)
{
    runUntil([] { return false; }, seconds);
}

bool VirtualClock::runUntil(const std::function<bool()> &predicate, double maximumSeconds)
{
    // A handler may end the clock's owner; the state must see the loop out.
    const auto state = m_state;
    const std::int64_t end = state->now + nanoseconds(maximumSeconds);
    while (!predicate()) {
        const auto entry = state->next(end);
        if (!entry) {
            state->now = std::max(state->now, end);
            return predicate();
        }
        state->fire(entry);
    }
    return true;
}

void VirtualClock::advanceWallClock(double seconds) { m_state->now += nanoseconds(seconds); }

int VirtualClock::timerCount() const { return static_cast<int>(m_state->entries.size()); }

} // namespace tovel
