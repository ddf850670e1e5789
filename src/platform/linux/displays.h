#pragma once

#include "platform/session/desktop_session.h"

#include <QList>
#include <QString>

#include <optional>

// Displays are what a session shows a workspace of its own on: each of its screens, or all of them
// together where one row of workspaces spans them.
namespace tovel {

// The display that has the primary screen first. One that is made of several screens has the
// number of the primary one and the bounds of all.
QList<SessionScreen> displaysOf(DesktopSession &session);

// The same each time the display is there.
QString displayUuid(const SessionScreen &display);

// What a row of workspaces names its display by: the display's UUID; "Main" for all of them, and
// for the session's one row whatever displays there are. The UUID of no display where the row's
// screen is not there.
QString displayIdentifier(const SessionOutput &output, const QList<SessionScreen> &displays);

// The number of the display at the place.
std::optional<std::uint32_t> displayAt(QPointF position, const QList<SessionScreen> &displays);

} // namespace tovel
