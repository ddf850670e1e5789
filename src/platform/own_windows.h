#pragma once

#include <QPoint>
#include <QString>

#include <cstdint>
#include <optional>

namespace tovel {

using NSWindowCollectionBehavior = std::uint64_t;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorDefault = 0;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorCanJoinAllSpaces = 1;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorFullScreenAuxiliary = 256;

using NSWindowLevel = int;
inline constexpr NSWindowLevel NSNormalWindowLevel = 0;
inline constexpr NSWindowLevel NSFloatingWindowLevel = 3;

// One of the program's own windows, by what its toolkit knows of it. Windows that are shown at one
// time have different titles.
struct OwnWindow
{
    std::uint32_t windowNumber = 0; // 0 where the toolkit's number is not the window system's
    QString title{};

    bool operator==(const OwnWindow &) const = default;
};

// What the program asks for its own windows (NSWindow). A request is for a window that is shown and
// holds until it is hidden: ask again after each showing, for it may have become another window.
// It tells whether it was made, which says nothing of its outcome; for a window that is not there
// it is not.
class OwnWindows
{
public:
    virtual ~OwnWindows() = default;

    // The number by which the window server knows the window; 0 while it does not.
    virtual std::uint32_t numberOf(const OwnWindow &window) = 0;

    // For a window that is about to be shown, and then asks to be on every space: where a session
    // would give it the place and size of others first, it does not.
    virtual void prepare(const OwnWindow &) { }

    // With NSWindowCollectionBehaviorCanJoinAllSpaces the window is on every space; without it, on
    // the one that is shown. Whether it may appear beside a full-screen window is the session's to
    // decide.
    virtual bool setCollectionBehavior(const OwnWindow &window, NSWindowCollectionBehavior behavior)
        = 0;

    // The corner of the window's frame, in sessions whose programs are not told by their toolkit;
    // absent in others, and while the window server does not know the window.
    virtual std::optional<QPoint> frameOrigin(const OwnWindow &) { return std::nullopt; }

    // Puts the corner there. Only sessions that tell it do.
    virtual bool setFrameOrigin(const OwnWindow &, QPoint) { return false; }

    // At the floating level the window is above the ordinary windows of every program.
    virtual bool setLevel(const OwnWindow &window, NSWindowLevel level) = 0;

    // Brings the window to the front and gives it the keyboard, as if the user had asked for it:
    // other programs' claim to the keyboard does not hold it back.
    virtual bool makeKeyAndOrderFront(const OwnWindow &window) = 0;
};

} // namespace tovel
