#pragma once

#include "platform/updater.h"
#include "settings/bundle.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace tovel {

// Update checking as the program's menus and settings see it: whether a check can be made, and
// making one. Knows nothing of feeds, versions or windows; those are the updater's.
//
// Used from the main thread alone; the updater may tell its changes on any thread.
class TovelUpdates final : public QObject,
                           public SPUUpdaterDelegate,
                           public SPUStandardUserDriverDelegate
{
    Q_OBJECT

public:
    // Nothing is made before start(). The second function brings the program to the front,
    // whatever other application is there.
    TovelUpdates(SPUStandardUpdaterControllerFactory makeController,
                 std::function<void()> activateIgnoringOtherApps, QObject *parent = nullptr);
    ~TovelUpdates() override;

    // Whether the updater can check. Follows the updater one turn of the event loop later; false
    // before start().
    bool canCheck() const { return m_canCheck; }

    // Makes the controller, which starts its updater at once. Without effect the second time.
    void start();

    // Comes to the front and checks. Does nothing while canCheck() is false.
    void check();

    // "Version 1.2 (34)", with "?" for a part that the bundle does not state as a text.
    static QString versionDescription(const Bundle &bundle = mainBundle());

    bool supportsGentleScheduledUpdateReminders() const override { return true; }

    // Comes to the front, one turn of the event loop later, when the updater shows the update.
    void standardUserDriverWillHandleShowingUpdate(bool handleShowingUpdate,
                                                   const SUAppcastItem &update,
                                                   const SPUUserUpdateState &state) override;

Q_SIGNALS:
    void canCheckChanged();

private:
    void setCanCheck(bool canCheck);

    SPUStandardUpdaterControllerFactory m_makeController;
    std::function<void()> m_activate;
    bool m_canCheck = false;
    std::unique_ptr<SPUStandardUpdaterController> m_controller;
    std::unique_ptr<KeyValueObservation> m_observation; // after the controller, to end before it
};

} // namespace tovel
