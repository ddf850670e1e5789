#pragma once

#include "platform/own_windows.h"

class QWindow;

namespace tovel {

// What the platform knows the window by. It has to have been shown.
OwnWindow ownWindow(const QWindow &window);

} // namespace tovel
