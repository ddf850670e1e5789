#pragma once

#include "settings/shortcut.h"

#include <optional>

class QKeyEvent;

namespace tovel {

// Whether the key only changes what others mean.
bool isModifier(const QKeyEvent &event);

// A key press of an X11 or Wayland session as the shortcut's rules want it: the key by its
// position, Super as Command and Alt as Option. The flags are those of the four modifiers alone.
// The characters of a keypad's key are those of its position, whatever Num Lock says; those of a
// key that has none, and stands on keyboards for what it is called, are its name. Nothing for a key
// at a position that no virtual key has, and for one that no label could name.
std::optional<KeyDownEvent> keyDown(const QKeyEvent &event);

} // namespace tovel
