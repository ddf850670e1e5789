#pragma once

#include <QDateTime>
#include <QString>
#include <QUrl>

#include <functional>
#include <memory>

namespace tovel {

// One release as a feed describes it. All texts are plain and safe to show.
struct SUAppcastItem
{
    QString title;
    QString versionString; // what releases are ordered by; may be empty
    QString displayVersionString; // what the user reads; may be empty when versionString is not
    QString itemDescription; // release notes
    QUrl infoURL; // the release's page, https; empty when there is none
    QDateTime date; // invalid when the feed does not tell

    bool operator==(const SUAppcastItem &) const = default;
};

struct SPUUserUpdateState
{
    bool userInitiated = false;

    bool operator==(const SPUUserUpdateState &) const = default;
};

// Ends the observation when destroyed; its handler is not running then and is not called again.
class KeyValueObservation
{
public:
    virtual ~KeyValueObservation() = default;
};

// Who finds out whether there is a newer version.
class SPUUpdater
{
public:
    virtual ~SPUUpdater() = default;

    // Whether a check by the user can begin now.
    virtual bool canCheckForUpdates() const = 0;

    // Calls the handler once before this call returns, and after every change of
    // canCheckForUpdates(), on the thread that changes it. Must not outlive the updater.
    [[nodiscard]] virtual std::unique_ptr<KeyValueObservation> observeCanCheckForUpdates(
        std::function<void()> handler)
        = 0;
};

// What an updater asks of the program about checking. It has an answer of its own to everything.
class SPUUpdaterDelegate
{
public:
    virtual ~SPUUpdaterDelegate() = default;
};

// What the updater's own windows ask of the program and tell it.
class SPUStandardUserDriverDelegate
{
public:
    virtual ~SPUStandardUserDriverDelegate() = default;

    // Whether the program copes with an update that the user did not ask for just now. Checks on a
    // schedule are made only for a program that does.
    virtual bool supportsGentleScheduledUpdateReminders() const = 0;

    // An update is about to be shown; by the updater itself when the first argument is true.
    virtual void standardUserDriverWillHandleShowingUpdate(bool handleShowingUpdate,
                                                           const SUAppcastItem &update,
                                                           const SPUUserUpdateState &state)
        = 0;
};

// An updater together with the windows in which it talks to the user.
class SPUStandardUpdaterController
{
public:
    virtual ~SPUStandardUpdaterController() = default;

    virtual SPUUpdater &updater() = 0;

    // For a controller that was made without starting its updater, which cannot check until then.
    // Without effect on a started one.
    virtual void startUpdater() = 0;

    // A check that the user asked for: tells its outcome in any case. Nothing happens while the
    // updater cannot check.
    virtual void checkForUpdates() = 0;
};

// initWithStartingUpdater:updaterDelegate:userDriverDelegate: - makes a controller, whose updater
// starts at once when the flag is set. The delegates are borrowed, may be null and must outlive it.
using SPUStandardUpdaterControllerFactory
    = std::function<std::unique_ptr<SPUStandardUpdaterController>(
        bool startingUpdater, SPUUpdaterDelegate *updaterDelegate,
        SPUStandardUserDriverDelegate *userDriverDelegate)>;

} // namespace tovel
