#include "updater/appcast_updater.h"

#include "platform/clock.h"
#include "platform/user_defaults.h"
#include "settings/bundle.h"
#include "updater/appcast.h"
#include "updater/feed_address.h"
#include "updater/update_user_driver.h"

#include <algorithm>
#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr double secondsPerDay = 24 * 60 * 60;

QString lastCheckTimeKey() { return u"SULastCheckTime"_s; }

} // namespace

class AppcastUpdater::Observation final : public KeyValueObservation
{
public:
    Observation(AppcastUpdater &updater, std::function<void()> handler)
        : m_updater(updater)
        , m_handler(std::move(handler))
    {
        m_updater.m_observations.push_back(this);
    }

    ~Observation() override { std::erase(m_updater.m_observations, this); }

    void notify() const { m_handler(); }

private:
    AppcastUpdater &m_updater;
    std::function<void()> m_handler;
};

UpdaterConfiguration updaterConfiguration(const Bundle &bundle)
{
    const auto value = [&bundle](const QString &key) {
        return text(bundle.objectForInfoDictionaryKey(key)).value_or(QString());
    };
    return {
        .feed = feedAddress(value(u"SUFeedURL"_s)),
        .automaticChecks
        = boolean(bundle.objectForInfoDictionaryKey(u"SUEnableAutomaticChecks"_s)).value_or(false),
        .current = {value(u"CFBundleVersion"_s), value(u"CFBundleShortVersionString"_s)}};
}

AppcastUpdater::AppcastUpdater(UpdaterConfiguration configuration, Clock &clock,
                               UserDefaults &defaults, UpdateUserDriver &driver,
                               SPUUpdaterDelegate *,
                               SPUStandardUserDriverDelegate *userDriverDelegate)
    : m_configuration(std::move(configuration))
    , m_clock(clock)
    , m_defaults(defaults)
    , m_driver(driver)
    , m_userDriverDelegate(userDriverDelegate)
    , m_reader(clock)
{ }

AppcastUpdater::~AppcastUpdater()
{
    Q_ASSERT(m_observations.empty());
    m_driver.dismiss();
}

void AppcastUpdater::startUpdater()
{
    if (std::exchange(m_started, true) || !m_configuration.feed)
        return;
    setCanCheck(true);
    schedule();
}

void AppcastUpdater::checkForUpdates()
{
    if (m_canCheck)
        check(Origin::user);
}

std::unique_ptr<KeyValueObservation> AppcastUpdater::observeCanCheckForUpdates(
    std::function<void()> handler)
{
    auto observation = std::make_unique<Observation>(*this, std::move(handler));
    observation->notify();
    return observation;
}

void AppcastUpdater::setCanCheck(bool canCheck)
{
    if (std::exchange(m_canCheck, canCheck) == canCheck)
        return;
    const auto observations = m_observations;
    for (const Observation *observation : observations) {
        // A handler may end any observation.
        if (std::ranges::find(m_observations, observation) != m_observations.end())
            observation->notify();
    }
}

bool AppcastUpdater::checksAutomatically() const
{
    return m_configuration.automaticChecks && m_userDriverDelegate
        && m_userDriverDelegate->supportsGentleScheduledUpdateReminders();
}

void AppcastUpdater::schedule()
{
    if (!checksAutomatically())
        return;
    const auto last = m_defaults.dictionaryRepresentation().realNumber(lastCheckTimeKey());
    const double elapsed = last ? m_clock.CFAbsoluteTimeGetCurrent() - *last : secondsPerDay;
    // A time to come was stored under a wrong clock and says nothing.
    const double wait = elapsed < 0 ? 0 : std::max(0.0, secondsPerDay - elapsed);
    m_nextCheck = m_clock.startTimer(wait, false, [this] { check(Origin::schedule); });
}

void AppcastUpdater::check(Origin origin)
{
    setCanCheck(false);
    m_nextCheck.reset();
    if (checksAutomatically())
        (void)m_defaults.setObject(lastCheckTimeKey(), m_clock.CFAbsoluteTimeGetCurrent());
    if (origin == Origin::user)
        m_driver.showChecking([this] { cancel(); });
    m_reader.read(*m_configuration.feed,
                  [this, origin](const FeedReading &reading) { takeFeed(origin, reading); });
}

void AppcastUpdater::cancel()
{
    m_reader.cancel();
    finish();
}

void AppcastUpdater::takeFeed(Origin origin, const FeedReading &reading)
{
    if (!reading.error.isEmpty()) {
        showFailure(origin, u"The update feed cannot be read. "_s + reading.error);
        return;
    }
    const AppcastReading feed = parseAppcast(reading.bytes);
    if (!feed.error.isEmpty()) {
        showFailure(origin, u"The update feed cannot be understood. "_s + feed.error);
        return;
    }
    if (!m_configuration.current.isKnown()) {
        showFailure(origin, u"The version of this program is not known."_s);
        return;
    }
    if (const auto update = newestUpdate(feed.items, m_configuration.current))
        showUpdate(origin, *update);
    else if (origin == Origin::user)
        m_driver.showUpToDate(m_configuration.current, [this] { finish(); });
    else
        finish();
}

void AppcastUpdater::showUpdate(Origin origin, const SUAppcastItem &item)
{
    if (m_userDriverDelegate) {
        const SPUUserUpdateState state{.userInitiated = origin == Origin::user};
        m_userDriverDelegate->standardUserDriverWillHandleShowingUpdate(true, item, state);
    }
    m_driver.showUpdateFound(m_configuration.current, item, [this] { finish(); });
}

void AppcastUpdater::showFailure(Origin origin, const QString &reason)
{
    if (origin == Origin::user)
        m_driver.showFailure(reason, [this] { finish(); });
    else
        finish();
}

void AppcastUpdater::finish()
{
    schedule();
    setCanCheck(true);
}

SPUStandardUpdaterControllerFactory appcastUpdaterFactory(UpdaterConfiguration configuration,
                                                          Clock &clock, UserDefaults &defaults,
                                                          UpdateUserDriver &driver)
{
    return [configuration = std::move(configuration), &clock, &defaults,
            &driver](bool startingUpdater, SPUUpdaterDelegate *updaterDelegate,
                     SPUStandardUserDriverDelegate *userDriverDelegate) {
        auto controller = std::make_unique<AppcastUpdater>(configuration, clock, defaults, driver,
                                                           updaterDelegate, userDriverDelegate);
        if (startingUpdater)
            controller->startUpdater();
        return controller;
    };
}

} // namespace tovel
