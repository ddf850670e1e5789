#include "model/migration_record.h"

#include <algorithm>

namespace tovel {

bool hasArrived(const WindowRecord &window)
{
    return window.outcome == WindowOutcome::moved || window.outcome == WindowOutcome::already;
}

qsizetype count(const MigrationRecord &record, WindowOutcome outcome)
{
    return std::count_if(record.windows.cbegin(), record.windows.cend(),
                         [&](const WindowRecord &window) { return window.outcome == outcome; });
}

qsizetype count(const MigrationRecord &record, WindowReason reason)
{
    return std::count_if(record.windows.cbegin(), record.windows.cend(),
                         [&](const WindowRecord &window) { return window.reason == reason; });
}

bool hasFailedToFollow(const MigrationRecord &record)
{
    return !record.obstacle && record.followWanted && !record.shown && !record.stopped
        && std::any_of(record.windows.cbegin(), record.windows.cend(), hasArrived);
}

} // namespace tovel
