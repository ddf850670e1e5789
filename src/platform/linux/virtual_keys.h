#pragma once

#include <cstdint>
#include <optional>

namespace tovel {

// Virtual key codes of the platform, which name keys by where they are on the keyboard, and key
// positions of the session: the codes of the kernel's input subsystem (linux/input-event-codes.h;
// an X key code less 8). Both ignore the layout, so a stored code means the same key everywhere.
// One-to-one: each of the two has at most one of the other.

std::optional<std::uint32_t> virtualKeyAt(std::uint32_t position);
std::optional<std::uint32_t> positionOfVirtualKey(std::uint32_t virtualKey);

} // namespace tovel
