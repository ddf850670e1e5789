#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVariantList>

#include <cstdint>
#include <memory>
#include <optional>

namespace tovel {

using CGWindowListOption = std::uint32_t;
inline constexpr CGWindowListOption kCGWindowListOptionIncludingWindow = 8;
inline constexpr CGWindowListOption kCGWindowListExcludeDesktopElements = 16;

// Keys of a window information dictionary.
inline constexpr char16_t kCGWindowNumber[] = u"kCGWindowNumber"; // number, unsigned 32-bit
inline constexpr char16_t kCGWindowOwnerPID[] = u"kCGWindowOwnerPID"; // number, signed 32-bit
inline constexpr char16_t kCGWindowLayer[] = u"kCGWindowLayer"; // number; 0 is ordinary
inline constexpr char16_t kCGWindowBounds[] = u"kCGWindowBounds"; // dictionary: "X", "Y",
                                                                  // "Width", "Height", reals

using CGEventSourceStateID = std::int32_t;
inline constexpr CGEventSourceStateID kCGEventSourceStateHIDSystemState = 1;

using CGEventTapLocation = std::uint32_t;
inline constexpr CGEventTapLocation kCGHIDEventTap = 0;

using CGEventFlags = std::uint64_t;
inline constexpr CGEventFlags kCGEventFlagMaskControl = 0x40000;
inline constexpr CGEventFlags kCGEventFlagMaskSecondaryFn = 0x800000;

// Virtual key codes of the two arrow keys that step between desktops.
inline constexpr std::uint16_t kVK_LeftArrow = 123;
inline constexpr std::uint16_t kVK_RightArrow = 124;

struct CGEventSource
{
    CGEventSourceStateID state = 0;
};

// An event that was created and may be posted. A value of its own; posting copies it.
struct CGEvent
{
    bool isKeyboard = false;
    std::uint16_t virtualKey = 0;
    bool keyDown = false;
    CGEventFlags flags = 0;
    QPointF location; // of the cursor when the event was created, in global points
};

// Window information, keyboard events, the cursor, and displays.
class Quartz
{
public:
    virtual ~Quartz() = default;

    // Window information dictionaries, front to back: of every window, or with
    // kCGWindowListOptionIncludingWindow of the given window alone. Absent when the window server
    // does not answer. Window geometry is that of the content without the manager's frame, in
    // global points.
    virtual std::optional<QVariantList> CGWindowListCopyWindowInfo(CGWindowListOption option,
                                                                   std::uint32_t relativeTo)
        = 0;

    // Absent when no source can be made.
    virtual std::optional<CGEventSource> CGEventSourceCreate(CGEventSourceStateID state) = 0;

    // Absent when no event can be made.
    virtual std::optional<CGEvent> CGEventCreateKeyboardEvent(const CGEventSource &source,
                                                              std::uint16_t virtualKey,
                                                              bool keyDown)
        = 0;

    // An empty event, which knows where the cursor is. Absent when that cannot be told. Where only
    // the display of the next steps has to be told, the cursor is outside of every display until it
    // is moved.
    virtual std::optional<CGEvent> CGEventCreate() = 0;

    // Hands the event to the system. Control with an arrow key asks for a step to the neighbouring
    // desktop of the display under the cursor; no answer says whether it happens.
    virtual void CGEventPost(CGEventTapLocation tap, const CGEvent &event) = 0;

    // Where the cursor cannot be moved, the place counts for the steps that are posted next.
    virtual void CGWarpMouseCursorPosition(QPointF position) = 0;

    // Global points, origin at the top left; empty for a display that is not there.
    virtual QRectF CGDisplayBounds(std::uint32_t display) const = 0;

    virtual bool CGDisplayIsBuiltin(std::uint32_t display) const = 0;

    // The display's UUID as text; absent for a display that is not there.
    virtual std::optional<QString> CGDisplayCreateUUIDFromDisplayID(
        std::uint32_t display) const = 0;
};

} // namespace tovel
