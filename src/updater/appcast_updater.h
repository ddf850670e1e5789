#pragma once

#include "platform/updater.h"
#include "updater/feed_reader.h"
#include "updater/update_choice.h"

#include <QUrl>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tovel {

class Bundle;
class Clock;
class Timer;
class UpdateUserDriver;
class UserDefaults;

struct UpdaterConfiguration
{
    std::optional<QUrl> feed; // absent when there is none that may be read
    bool automaticChecks = false;
    ProgramVersion current;

    bool operator==(const UpdaterConfiguration &) const = default;
};

// From the texts "SUFeedURL", "CFBundleVersion" and "CFBundleShortVersionString" and the boolean
// "SUEnableAutomaticChecks" of the information dictionary. What is of another kind is absent.
UpdaterConfiguration updaterConfiguration(const Bundle &bundle);

// Checks a feed for a newer release and tells of it. Does not download or install any.
//
// It can check when it is started, has a feed address and has no check under way; a check lasts
// until the user is done with what it showed. Without automatic checks it makes none of its own
// accord. With them it makes one when it starts, unless one was made in the day before, and one a
// day from then on; such a check shows nothing but an update. The time of the latest one is then
// stored under "SULastCheckTime", in seconds of CFAbsoluteTimeGetCurrent().
class AppcastUpdater final : public SPUStandardUpdaterController, private SPUUpdater
{
public:
    // All that is borrowed must outlive the updater; the delegates may be null.
    AppcastUpdater(UpdaterConfiguration configuration, Clock &clock, UserDefaults &defaults,
                   UpdateUserDriver &driver, SPUUpdaterDelegate *updaterDelegate,
                   SPUStandardUserDriverDelegate *userDriverDelegate);
    // Ends a check that is under way.
    ~AppcastUpdater() override;

    SPUUpdater &updater() override { return *this; }
    void startUpdater() override;
    void checkForUpdates() override;

private:
    enum class Origin { user, schedule };
    class Observation;

    bool canCheckForUpdates() const override { return m_canCheck; }
    std::unique_ptr<KeyValueObservation> observeCanCheckForUpdates(
        std::function<void()> handler) override;

    void setCanCheck(bool canCheck);
    bool checksAutomatically() const;
    void schedule();
    void check(Origin origin);
    void cancel();
    void takeFeed(Origin origin, const FeedReading &reading);
    void showUpdate(Origin origin, const SUAppcastItem &item);
    void showFailure(Origin origin, const QString &reason);
    void finish();

    UpdaterConfiguration m_configuration;
    Clock &m_clock;
    UserDefaults &m_defaults;
    UpdateUserDriver &m_driver;
    SPUStandardUserDriverDelegate *m_userDriverDelegate;
    FeedReader m_reader;
    bool m_started = false;
    bool m_canCheck = false;
    std::unique_ptr<Timer> m_nextCheck;
    std::vector<Observation *> m_observations; // each takes itself out
};

// What makes such updaters. All that is borrowed must outlive them.
SPUStandardUpdaterControllerFactory appcastUpdaterFactory(UpdaterConfiguration configuration,
                                                          Clock &clock, UserDefaults &defaults,
                                                          UpdateUserDriver &driver);

} // namespace tovel
