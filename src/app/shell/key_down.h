#pragma once

#include "settings/shortcut.h"

#include <optional>

class QKeyEvent;

namespace tovel {

// A key press of an X11 or Wayland session as the shortcut's rules want it: the key by its
// position, Super as Command and Alt as Option. The flags are those of the four modifiers alone.
// Nothing for a key that is itself a modifier, and for one at a position that no virtual key has.
std::optional<KeyDownEvent> keyDown(const QKeyEvent &event);

} // namespace tovel
