#pragma once

#include "model/choices.h"
#include "model/desktop.h"
#include "model/migration_record.h"
#include "model/running_app.h"
#include "model/travel_window.h"
#include "platform/platform.h"

#include <QCollator>
#include <QMap>
#include <QObject>
#include <QPointF>
#include <QSet>
#include <QStringList>

#include <QCoroTask>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace tovel {

class Timer;

// A desktop that was asked for, or why there is none: the part of a sentence after its capital
// letter, without a full stop.
struct NewDesktop
{
    std::optional<Desktop> desktop{};
    QString refusal{};
};

// What Tovel knows and does: the desktops, the applications, the flock's windows, the user's
// choices, and moving the flock. The only state that views show; they read it and call its
// operations. Knows nothing of views.
//
// Used from the main thread alone. An asynchronous operation holds that thread only between its
// waits; when the model is destroyed during one, the operation ends there without a further effect.
class TovelModel final : public QObject
{
    Q_OBJECT

public:
    enum class Property {
        desktops,
        apps,
        windows,
        selected,
        trusted,
        busy,
        message,
        hasSkippedWindows,
        issues,
        aliases,
        follow,
        iconStyle,
        pinned,
        choicesProblem,
    };
    Q_ENUM(Property)

    // Loads the stored choices, refreshes once, and from then on every 3 seconds while a window of
    // the program is visible and no migration runs. The platform must be the installed one and
    // must outlive the model and its suspended operations.
    explicit TovelModel(Platform &platform = currentPlatform(), QObject *parent = nullptr);
    ~TovelModel() override;

    const QList<Desktop> &desktops() const { return m_desktops; }
    const QList<RunningApp> &apps() const { return m_apps; } // as sortedApps() orders them
    const QList<TravelWindow> &windows() const { return m_windows; }
    const QSet<QString> &selected() const { return m_selected; } // the flock: bundle identifiers
    bool trusted() const { return m_trusted; } // whether windows may be looked at and moved
    bool busy() const { return m_busy; } // whether a migration runs
    const QString &message() const { return m_message; } // progress, or the last outcome
    bool hasSkippedWindows() const { return m_hasSkippedWindows; } // in the last migration
    const QStringList &issues() const { return m_issues; } // problems to show
    const QMap<QString, QString> &aliases() const { return m_aliases; } // names by Desktop::key()
    bool follow() const { return m_follow; } // whether to show the target after a migration
    TovelIconStyle iconStyle() const { return m_iconStyle; }
    bool pinned() const { return m_pinned; } // whether the panel stays above other windows
    // Why the choices above are not those that are stored; empty when they are. Choices that cannot
    // be read stay as they were, those that cannot be stored hold for this process.
    const QString &choicesProblem() const { return m_choicesProblem; }
    // Whether the stored choices could ever be read. Until then they are not empty but unknown, and
    // choicesProblem() says why.
    bool choicesKnown() const { return m_choices.areKnown(); }

    // Assignments that store the choice and call the callback, if any, also when the value is the
    // same as before. They give what storing came to.
    DefaultsOutcome setFollow(bool follow);
    DefaultsOutcome setIconStyle(TovelIconStyle style);
    DefaultsOutcome setPinned(bool pinned);

    void setMessage(const QString &message);
    void setIssues(const QStringList &issues);

    void onIconChanged(std::function<void(TovelIconStyle)> callback);
    void onPinChanged(std::function<void(bool)> callback);
    // Called at the end of every migration that began to move windows.
    void onMigrationFinished(std::function<void()> callback);

    // How often a display changed its shown desktop since the model was made.
    std::int64_t spaceChangeSerial() const { return m_spaceChangeSerial; }

    // Whether windows can be moved on this platform.
    bool available() const;

    // The applications of the flock, in their order.
    QList<RunningApp> chosenApps() const;

    // The windows that can move, how many of them each desktop holds, and the one desktop that
    // holds all of them, if there is one.
    QList<TravelWindow> traveling() const;
    QMap<std::uint64_t, int> distribution() const;
    std::optional<std::uint64_t> flockDesktopID() const;

    // Looks at everything afresh, also at what is stored; on the very first run also preselects a
    // flock, where there are windows to move. Nothing while a migration runs.
    void refresh();

    // Looks afresh at trust and desktops alone. Nothing while a migration runs.
    void refreshDesktopList();

    // The desktops as they are now; changes nothing.
    QList<Desktop> readDesktops() const;

    // The name the user gave, else "Desktop" with its number.
    QString name(const Desktop &desktop) const;

    // Stores the name as typed. One that is blank brings the default name back.
    DefaultsOutcome rename(const Desktop &desktop, const QString &newName);

    // For a display of one of desktops(). "Unknown display" and false for any other.
    QString displayName(const QString &display) const;
    bool displayIsBuiltIn(const QString &display) const;

    // Adds the application to the flock or removes it, and stores the flock.
    DefaultsOutcome select(const RunningApp &app, bool on);
    // The same of several: all of them are stored or none.
    DefaultsOutcome selectAll(const QList<RunningApp> &apps, bool on);

    // Starts an application; finishes when the outcome is known. A failure goes to issues().
    // Nothing while a migration runs.
    QCoro::Task<> reopen(RunningApp app);

    // Asks for the trust that trusted() needs, and opens the settings where it is granted.
    void requestAccess();

    // Moves every window that can move to the target, one after another, and asks the window
    // server after each where it is. Progress and summary go to message(), problems to issues().
    // Then shows the target if the user wants to follow, or as followThisRun says for this run
    // alone. Nothing while another migration runs.
    QCoro::Task<> migrate(Desktop target, std::optional<bool> followThisRun = std::nullopt);

    // A new desktop without windows, which desktops() then has. Without a name it has the lowest
    // number that is free. Nothing is made while a migration runs.
    NewDesktop makeDesktop(const QString &name);

    // Asks the running migration to end after the window it is on: the windows after it are not
    // tried, the summary tells of those before, and the target is not shown, or no further step
    // towards it is made. Windows moved already stay. Nothing when no migration runs.
    void stopMigration();

    // What the latest migration, or the one that runs, came to; it stays until the next is asked
    // for. It tells what message() and issues() tell, and more, and nobody is notified of it.
    const MigrationRecord &latestMigration() const { return m_latestMigration; }

    // Shows the desktop on its display: by bringing the window forward, when one is given that can
    // do it, else by pressing the keys that step between desktops. True when the desktop is shown.
    // The cursor, which tells the display, is put back afterwards.
    QCoro::Task<bool> switchDesktop(Desktop desktop, std::optional<TravelWindow> window);

Q_SIGNALS:
    // Before and after a property gets a different value. An equal value notifies nobody.
    void willChange(tovel::TovelModel::Property property);
    void didChange(tovel::TovelModel::Property property);

private:
    // Positions among all spaces of a display.
    struct Route
    {
        std::int64_t current = 0;
        std::int64_t target = 0;
    };

    template <typename Value>
    void publish(Value &field, const Value &value, Property property);

    // Publishes the choices, and calls back for those that are others now.
    void showChoices();
    void preselect(const QList<RunningApp> &running);
    void stayFresh();

    QList<RunningApp> runningApps() const;
    QList<RunningApp> rememberedApps(const QList<RunningApp> &running) const;
    QList<TravelWindow> readWindows() const;
    bool windowIsMovable(const TravelWindow &window) const;

    // A record of a migration that has not tried any window yet.
    MigrationRecord newRecord(std::uint64_t target) const;
    // Moves the window of this place in the record, and records what came of it.
    QCoro::Task<> moveWindow(TravelWindow window, qsizetype place);
    void settle(qsizetype place, WindowOutcome outcome, WindowReason reason = WindowReason::none,
                std::int32_t status = 0);
    // Shows the target if that is wanted for a window that is there; the windows are those moved.
    QCoro::Task<> follow(Desktop target, QList<TravelWindow> windows);
    // Adds to the record what is seen after the migration.
    void conclude();
    bool isStopping() const { return m_busy && m_latestMigration.stopped; }

    std::optional<Route> route(const Desktop &desktop) const;
    std::optional<QPointF> moveCursorTo(const Desktop &desktop);
    QCoro::Task<bool> bringUp(Desktop desktop, std::optional<TravelWindow> window);
    QCoro::Task<bool> stepTo(Desktop desktop);
    QCoro::Task<bool> stepArrived(Desktop desktop, std::int64_t from, std::int64_t serial);
    bool mayJump(const Desktop &desktop, const TravelWindow &window) const;
    NSRunningApplicationRef ownerOf(const TravelWindow &window) const;
    QCoro::Task<bool> jumpDirectly(Desktop desktop, TravelWindow window);

    Platform &m_platform;
    StoredChoices m_choices;
    QCollator m_collator;

    QList<Desktop> m_desktops;
    QList<RunningApp> m_apps;
    QList<TravelWindow> m_windows;
    QSet<QString> m_selected;
    bool m_trusted = false;
    bool m_busy = false;
    QString m_message;
    bool m_hasSkippedWindows = false;
    QStringList m_issues;
    QMap<QString, QString> m_aliases;
    bool m_follow = true;
    TovelIconStyle m_iconStyle = TovelIconStyle::dark;
    bool m_pinned = false;
    QString m_choicesProblem;

    std::function<void(TovelIconStyle)> m_onIconChanged;
    std::function<void(bool)> m_onPinChanged;
    std::function<void()> m_onMigrationFinished;

    std::int64_t m_spaceChangeSerial = 0;
    MigrationRecord m_latestMigration;
    Subscription m_spaceChanges;
    Subscription m_visibility;
    std::unique_ptr<Timer> m_timer;
};

template <typename Value>
void TovelModel::publish(Value &field, const Value &value, Property property)
{
    if (field == value) {
        field = value; // an equal value may hold newer handles
        return;
    }
    Q_EMIT willChange(property);
    field = value;
    Q_EMIT didChange(property);
}

} // namespace tovel
