#pragma once

#include "model/travel_window.h"

#include <QList>
#include <QMap>
#include <QSet>
#include <QString>

#include <cstdint>
#include <optional>

// The decisions that moving the flock rests on. Pure functions.
namespace tovel::MigrationRules {

// Why a window cannot move, in words for the user; nothing when it can. The first reason that holds
// counts: full screen, on several spaces, on none, on one that is not in userSpaces (the regular
// desktops). Being minimized is no reason.
std::optional<QString> skipReason(bool minimized, bool fullscreen,
                                  const QList<std::uint64_t> &spaces,
                                  const QSet<std::uint64_t> &userSpaces);

// How many of the windows are on each space; a window on two counts on both.
QMap<std::uint64_t, int> distribution(const QList<TravelWindow> &windows);

// The one space that all the windows are on; nothing when there are several or none.
std::optional<std::uint64_t> flockDesktop(const QList<TravelWindow> &windows);

} // namespace tovel::MigrationRules
