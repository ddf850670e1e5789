#include "bridge/bridge.h"
#include "model/migration_rules.h"
#include "model/readings.h"
#include "model/texts.h"
#include "model/tovel_model.h"
#include "platform/sleep.h"

#include <QPointer>

#include <algorithm>

namespace tovel {

namespace {

constexpr double checkInterval = 0.06;
constexpr int mostChecks = 12;

WindowRecord recordOf(const TravelWindow &window)
{
    WindowRecord record{window.id, window.appID, window.appName, window.title};
    if (window.spaces.size() == 1)
        record.origin = window.spaces.first();
    if (window.skipReason) {
        record.outcome = WindowOutcome::skipped;
        record.reason = WindowReason::cannotMove;
        record.skipReason = *window.skipReason;
    }
    return record;
}

} // namespace

MigrationRecord TovelModel::newRecord(std::uint64_t target) const
{
    MigrationRecord record;
    record.target = target;
    for (const TravelWindow &window : m_windows)
        record.windows.append(recordOf(window));
    if (!m_trusted || !TAvailable()) {
        record.obstacle = MigrationObstacle::noAccess;
    } else if (!desktopWithID(m_desktops, target)) {
        record.obstacle = MigrationObstacle::desktopGone;
    } else if (flockDesktopID() == target) {
        record.obstacle = MigrationObstacle::alreadyThere;
        for (WindowRecord &window : record.windows) {
            if (window.outcome == WindowOutcome::untried)
                window.outcome = WindowOutcome::already;
        }
    } else if (count(record, WindowOutcome::untried) == 0) {
        record.obstacle = MigrationObstacle::nothingToMove;
    }
    return record;
}

QCoro::Task<> TovelModel::migrate(Desktop target, std::optional<bool> followThisRun)
{
    if (m_busy)
        co_return;
    const QPointer<TovelModel> guard(this);
    refresh();
    publish(m_hasSkippedWindows, false, Property::hasSkippedWindows);
    const QList<TravelWindow> windows = m_windows;
    m_latestMigration = newRecord(target.id);
    setIssues(ModelTexts::issues(m_latestMigration));
    if (m_latestMigration.obstacle) {
        conclude();
        co_return;
    }

    publish(m_busy, true, Property::busy);
    const qsizetype traveling = count(m_latestMigration, WindowOutcome::untried);
    qsizetype position = 0;
    for (qsizetype place = 0; place < windows.size(); ++place) {
        if (windows.at(place).skipReason)
            continue;
        if (m_latestMigration.stopped) {
            settle(place, WindowOutcome::untried, WindowReason::stopped);
            continue;
        }
        setMessage(ModelTexts::moving(++position, traveling));
        co_await moveWindow(windows.at(place), place);
        if (!guard)
            co_return;
    }
    publish(m_hasSkippedWindows, count(m_latestMigration, WindowOutcome::skipped) != 0,
            Property::hasSkippedWindows);
    setMessage(ModelTexts::summary(m_latestMigration));
    m_latestMigration.followWanted = followThisRun.value_or(m_follow);
    co_await follow(target, windows);
    if (!guard)
        co_return;
    publish(m_busy, false, Property::busy);
    refresh();
    conclude();
    if (m_onMigrationFinished)
        m_onMigrationFinished();
}

// The window brought forward is the last one that is on the target.
QCoro::Task<> TovelModel::follow(Desktop target, QList<TravelWindow> windows)
{
    const QList<WindowRecord> &records = m_latestMigration.windows;
    const auto last = std::find_if(records.crbegin(), records.crend(), hasArrived);
    if (m_latestMigration.stopped || !m_latestMigration.followWanted || last == records.crend())
        co_return;
    const QPointer<TovelModel> guard(this);
    const TravelWindow window = windows.at(std::distance(last, records.crend()) - 1);
    const bool shown = co_await switchDesktop(target, window);
    if (!guard)
        co_return;
    m_latestMigration.shown = shown;
    if (hasFailedToFollow(m_latestMigration))
        setIssues(m_issues + QStringList{ModelTexts::couldNotSwitch()});
}

QCoro::Task<> TovelModel::moveWindow(TravelWindow window, qsizetype place)
{
    const QPointer<TovelModel> guard(this);
    Clock &clock = m_platform.clock();
    const std::uint64_t target = m_latestMigration.target;
    const QList<std::uint64_t> arrived{target};
    const QList<std::uint64_t> spaces = readWindowSpaces(window.id);
    if (spaces == arrived) {
        settle(place, WindowOutcome::already);
        co_return;
    }
    if (spaces.size() != 1 || !desktopWithID(readDesktops(), spaces.first())) {
        settle(place, WindowOutcome::failed, WindowReason::desktopChanged);
        co_return;
    }
    if (!windowIsMovable(window)) {
        settle(place, WindowOutcome::failed, WindowReason::windowChanged);
        co_return;
    }
    m_latestMigration.windows[place].origin = spaces.first();
    const std::int32_t status = TMove(window.id, target);
    for (int check = 0; check < mostChecks; ++check) {
        co_await Sleep(clock, checkInterval);
        if (!guard)
            co_return;
        if (readWindowSpaces(window.id) == arrived) {
            settle(place, WindowOutcome::moved);
            co_return;
        }
    }
    settle(place, WindowOutcome::failed, WindowReason::notConfirmed, status);
}

void TovelModel::settle(qsizetype place, WindowOutcome outcome, WindowReason reason,
                        std::int32_t status)
{
    WindowRecord &window = m_latestMigration.windows[place];
    window.outcome = outcome;
    window.reason = reason;
    window.status = status;
    setIssues(m_issues + ModelTexts::issues(window));
}

void TovelModel::conclude()
{
    MigrationRecord &record = m_latestMigration;
    record.seenAfterwards = m_trusted && TAvailable();
    record.complete = record.seenAfterwards;
    for (const TravelWindow &window : std::as_const(m_windows)) {
        if (window.spaces == QList<std::uint64_t>{record.target})
            continue;
        auto entry = std::find_if(
            record.windows.begin(), record.windows.end(), [&](const WindowRecord &candidate) {
                return candidate.id == window.id && candidate.appID == window.appID;
            });
        if (entry != record.windows.end() && entry->outcome != WindowOutcome::skipped) {
            record.complete = false;
            if (hasArrived(*entry))
                entry->reason = WindowReason::putBack;
        } else if (!window.skipReason) {
            if (entry == record.windows.end())
                entry = record.windows.insert(entry, recordOf(window));
            entry->reason = WindowReason::cameTooLate;
            record.complete = false;
        }
    }
}

void TovelModel::stopMigration()
{
    if (m_busy)
        m_latestMigration.stopped = true;
}

} // namespace tovel
