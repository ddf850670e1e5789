#pragma once

#include "platform/own_windows.h"

class QWindow;

namespace tovel {

// The number and title by which the platform finds a window. Call it after the window was shown.
OwnWindow ownWindow(const QWindow &window);

} // namespace tovel
