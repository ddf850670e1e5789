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

bool contains(const QList<Desktop> &desktops, std::uint64_t id)
{
    return std::any_of(desktops.cbegin(), desktops.cend(),
                       [id](const Desktop &desktop) { return desktop.id == id; });
}

} // namespace

struct TovelModel::MigrationCounts
{
    int moved = 0;
    int already = 0;
    int failed = 0;
    std::optional<TravelWindow> candidate; // the last window that is on the target
};

QCoro::Task<> TovelModel::migrate(Desktop target, std::optional<bool> followThisRun)
{
    if (m_busy)
        co_return;
    const QPointer<TovelModel> guard(this);
    m_stopRequested = false;
    m_untriedWindows = 0;
    refresh();
    setIssues({});
    publish(m_hasSkippedWindows, false, Property::hasSkippedWindows);
    if (const auto obstacle = migrationObstacle(target)) {
        setIssues({*obstacle});
        co_return;
    }
    if (flockDesktopID() == target.id)
        co_return;
    const QList<TravelWindow> list = traveling();
    if (list.isEmpty()) {
        setIssues({ModelTexts::nothingToMove()});
        co_return;
    }

    publish(m_busy, true, Property::busy);
    setIssues({});
    const auto counts = std::make_shared<MigrationCounts>();
    for (qsizetype i = 0; i < list.size(); ++i) {
        if (m_stopRequested) {
            m_untriedWindows = static_cast<int>(list.size() - i);
            break;
        }
        setMessage(ModelTexts::moving(i + 1, list.size()));
        co_await moveWindow(list.at(i), target.id, counts);
        if (!guard)
            co_return;
    }

    const auto skipped
        = std::count_if(m_windows.cbegin(), m_windows.cend(),
                        [](const TravelWindow &window) { return window.skipReason.has_value(); });
    publish(m_hasSkippedWindows, skipped != 0, Property::hasSkippedWindows);
    setMessage(ModelTexts::summary(counts->moved, counts->already, skipped, counts->failed));
    if (!m_stopRequested && followThisRun.value_or(m_follow) && counts->candidate) {
        const bool shown = co_await switchDesktop(target, counts->candidate);
        if (!guard)
            co_return;
        if (!shown && !m_stopRequested)
            appendIssue(ModelTexts::couldNotSwitch());
    }
    m_stopRequested = false;
    publish(m_busy, false, Property::busy);
    refresh();
    if (m_onMigrationFinished)
        m_onMigrationFinished();
}

std::optional<QString> TovelModel::migrationObstacle(const Desktop &target) const
{
    if (!m_trusted || !TAvailable())
        return ModelTexts::accessNeeded();
    if (!contains(m_desktops, target.id))
        return ModelTexts::desktopGone();
    return std::nullopt;
}

QCoro::Task<> TovelModel::moveWindow(TravelWindow window, std::uint64_t target,
                                     std::shared_ptr<MigrationCounts> counts)
{
    const QPointer<TovelModel> guard(this);
    Clock &clock = m_platform.clock();
    const QList<std::uint64_t> arrived{target};
    const QList<std::uint64_t> spaces = readWindowSpaces(window.id);
    if (spaces == arrived) {
        ++counts->already;
        counts->candidate = window;
        co_return;
    }
    if (spaces.size() != 1 || !contains(readDesktops(), spaces.first())) {
        appendIssue(ModelTexts::desktopChanged(window.appName));
        ++counts->failed;
        co_return;
    }
    if (!windowIsMovable(window)) {
        appendIssue(ModelTexts::windowChanged(window.appName));
        ++counts->failed;
        co_return;
    }
    const std::int32_t status = TMove(window.id, target);
    for (int check = 0; check < mostChecks; ++check) {
        co_await Sleep(clock, checkInterval);
        if (!guard)
            co_return;
        if (readWindowSpaces(window.id) == arrived) {
            ++counts->moved;
            counts->candidate = window;
            co_return;
        }
    }
    appendIssue(ModelTexts::couldNotMove(window.appName, status));
    ++counts->failed;
}

void TovelModel::stopMigration()
{
    if (m_busy)
        m_stopRequested = true;
}

void TovelModel::appendIssue(const QString &issue) { setIssues(m_issues + QStringList{issue}); }

} // namespace tovel
