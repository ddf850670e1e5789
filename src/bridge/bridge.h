#pragma once

#include "platform/accessibility.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>

#include <cstdint>
#include <optional>

// The one place that talks to the window server and to the private half of accessibility. Entry
// points are bound by name at the first use on a platform; one that is missing makes the functions
// that need it answer their neutral value. Nothing here throws or waits. Everything asks
// currentPlatform(), from the main thread.
namespace tovel {

// Window elements by window number.
using WindowTable = QMap<std::uint32_t, AXUIElementRef>;

// Status of TMove when the bridge is not usable.
inline constexpr std::int32_t kBridgeUnavailable = 1006;

// Whether windows can be moved at all: every entry point that TMove and its verification need is
// bound. The entry points of the inventory and of the asynchronous move are not asked for.
bool TAvailable();

// One dictionary per display, in the window server's order: "Display Identifier" (text), "Spaces"
// (array of space dictionaries), "Current Space" (a space dictionary). A space has
// "ManagedSpaceID" (number), "type" (number, 0 is a regular desktop) and may have "uuid" and
// "name" (texts).
// Empty when the window server cannot be asked or does not answer.
QVariantList TDisplays();

// Ids of the spaces a window is on, of every kind; empty also when it cannot be told.
QVariantList TWindowSpaces(std::uint32_t window);

// Whether the window server says that the window is not on screen. False when it cannot be told.
bool TWindowIsOrderedOut(std::uint32_t window);

// The ordinary windows on the user's desktops, front to back, as dictionaries: "id" (number, the
// window), "pid" (number, its owner), "minimized" (number, 0 or 1). Windows off the normal layer,
// narrower or lower than 32 points, or ordered out while their application is not hidden are left
// out. Empty when it cannot be told.
QVariantList TWindowInventory();

// The window number behind an element; 0 for a null element or when it cannot be told.
std::uint32_t TWindowID(const AXUIElementRef &element);

// Puts the element into the table when it is a standard window or a dialog of the process and has
// a window number, and bounds its later calls to 0.3 s. Replaces an element under the same number;
// otherwise changes nothing.
void rememberWindow(const AXUIElementRef &element, std::int32_t pid, WindowTable &windows);

// The elements of all standard windows and dialogs of a running process, in no particular order:
// those the application names itself, and those found by probing element identifiers. Spends at
// most 0.06 s and 1,152 probes on the latter; what one call found, the next one keeps. Empty
// without accessibility trust and for a process that is not running.
QList<AXUIElementRef> TApplicationWindows(std::int32_t pid);

// One attribute of an element; nothing for a null element or a failed read.
std::optional<QVariant> attribute(const AXUIElementRef &element, const QString &name);

// Asks for the window to be put on the desktop. 0 when the request was handed over,
// kBridgeUnavailable when it cannot be made, else the window server's error. Success says nothing
// of the outcome: ask TWindowSpaces afterwards.
std::int32_t TMove(std::uint32_t window, std::uint64_t desktop);

// Presses Control with an arrow key: one desktop to the right or left on the display under the
// cursor. True when the key was pressed and released, which says nothing of the outcome.
bool TPostDesktopStep(bool toRight);

} // namespace tovel
