#pragma once

#include "platform/session/desktop_session.h"

#include <QStringList>

namespace tovel {

// What a user of the session has to know that it cannot do, now; a sentence each.
QStringList sessionLimits(DesktopSession &session);

} // namespace tovel
