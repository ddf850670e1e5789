#pragma once

#include <QList>
#include <QString>

#include <cstdint>
#include <optional>

namespace tovel {

// Why a migration did not begin to move windows.
enum class MigrationObstacle {
    noAccess, // windows may not be looked at, or cannot be moved
    desktopGone, // the target is no desktop any more
    nothingToMove, // no window can move
    alreadyThere, // every window that can move is on the target; nobody need be told
};

enum class WindowOutcome {
    untried,
    moved,
    already, // was on the target when its turn came
    skipped, // could not move when the migration began
    failed,
};

// Why a window was not moved, or did not stay.
enum class WindowReason {
    none,
    cannotMove, // skipped: as WindowRecord::skipReason says
    desktopChanged, // failed: at its turn it was not on one desktop
    windowChanged, // failed: at its turn it was another window, or could not move any more
    notConfirmed, // failed: it did not arrive in time; the move gave WindowRecord::status
    stopped, // untried: the migration was asked to stop before its turn
    cameTooLate, // untried or skipped: it can move, but only since the migration began
    putBack, // moved or already: it had arrived, and was elsewhere when the migration ended
};

// What a migration came to for one window.
struct WindowRecord
{
    std::uint32_t id = 0; // as TravelWindow has them
    QString appID{};
    QString appName{};
    QString title{};
    std::optional<std::uint64_t> origin{}; // the one desktop it was on before
    WindowOutcome outcome = WindowOutcome::untried;
    WindowReason reason = WindowReason::none;
    QString skipReason{}; // for the user
    std::int32_t status = 0;

    bool operator==(const WindowRecord &) const = default;
};

// What a migration came to; while it runs, so far. Outcomes stay as they were when the window's
// turn was over; what was found when the migration ended adds reasons alone.
struct MigrationRecord
{
    std::uint64_t target = 0; // the desktop
    std::optional<MigrationObstacle> obstacle{}; // none when it began to move windows
    // As they were listed at the start, then those that came too late.
    QList<WindowRecord> windows{};
    bool stopped = false; // on request
    bool followWanted = false; // whether the target was to be shown
    bool shown = false; // whether it was
    bool seenAfterwards = false; // whether windows could still be looked at in the end
    // Whether in the end every window that can move, or could in the beginning, was on the target
    // or gone.
    bool complete = false;

    bool operator==(const MigrationRecord &) const = default;
};

// Whether the window was seen on the target.
bool hasArrived(const WindowRecord &window);

qsizetype count(const MigrationRecord &record, WindowOutcome outcome);
qsizetype count(const MigrationRecord &record, WindowReason reason);

// Whether the target was to be shown for a window that is there, and was not, unasked. Of a record
// whose migration has ended.
bool hasFailedToFollow(const MigrationRecord &record);

} // namespace tovel
