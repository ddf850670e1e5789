#pragma once

#include "platform/accessibility.h"

#include <QList>
#include <QString>

#include <cstdint>
#include <optional>

namespace tovel {

// One window of an application of the flock. Either backed by an accessibility element, or known
// from the window inventory alone: exactly one of element and ownerPID is there.
struct TravelWindow
{
    std::uint32_t id = 0; // the window number; the identity
    AXUIElementRef element;
    QString appID; // bundle identifier
    QString appName;
    QString title;
    QList<std::uint64_t> spaces; // every space the window is on, in the window server's order
    std::optional<QString> skipReason; // why the window cannot move; absent when it can
    std::optional<std::int32_t> ownerPID;

    // Elements are handles, and a window may have several: what counts is whether there is one.
    bool operator==(const TravelWindow &other) const
    {
        return id == other.id && !element == !other.element && appID == other.appID
            && appName == other.appName && title == other.title && spaces == other.spaces
            && skipReason == other.skipReason && ownerPID == other.ownerPID;
    }
};

} // namespace tovel
