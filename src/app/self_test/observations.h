#pragma once

#include "model/desktop.h"
#include "platform/accessibility.h"

#include <QList>
#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <optional>

namespace tovel {

class Platform;

// The first desktop that its display shows.
std::optional<Desktop> firstShown(const QList<Desktop> &desktops);

// The other desktops of the desktop's display, in the same order; of no desktop, none.
QList<Desktop> othersOnDisplay(const QList<Desktop> &desktops,
                               const std::optional<Desktop> &desktop);

// The bounds dictionary of a window, as it is now.
std::optional<QVariantMap> windowBounds(Platform &platform, std::uint32_t window);

// The element under which the process lists the window; null when it lists none.
AXUIElementRef listedWindow(Platform &platform, std::int32_t pid, std::uint32_t window);

} // namespace tovel
