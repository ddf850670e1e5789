#pragma once

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <optional>

// What a session tells of itself, and what it is told. A driver fills in as much as its session
// gives; whatever is left at its default counts as unknown.
namespace tovel {

struct SessionScreen
{
    std::uint32_t number = 0; // never 0, unique among the screens
    QString name; // as its user knows it; unique, and the same each time the screen is there
    QRectF bounds; // global pixels
    bool builtIn = false;

    bool operator==(const SessionScreen &) const = default;
};

struct SessionWorkspace
{
    // Never 0, unique over all outputs. The same for as long as the workspace lives, and never
    // another's afterwards, however the session numbers its own.
    std::uint64_t id = 0;
    bool regular = true;
    // What the workspace is known by when the session runs again; empty: by nothing but its id.
    QString uuid{};
    // That somebody chose for it in the session (workspace_names.h); empty where nobody did.
    QString name{};

    bool operator==(const SessionWorkspace &) const = default;
};

// What became of a request for a workspace.
struct MadeWorkspace
{
    std::uint64_t id = 0; // 0: none was made
    QString refusal{}; // why; the part of a sentence after its capital letter, without a full stop
};

// A row of workspaces of which one is shown: on one screen, or on all of them together. A session
// has one row for all screens, or rows that each name a screen of their own. Screens without a row
// show windows that are on every workspace.
struct SessionOutput
{
    std::optional<std::uint32_t> screen; // its number; absent: the row spans all screens
    // Whether it is the session's one row whichever screens come and go, although it names one.
    bool isLone = false;
    QList<SessionWorkspace> workspaces;
    std::optional<std::uint64_t> shown;

    bool operator==(const SessionOutput &) const = default;
};

enum class WindowKind {
    Standard,
    Dialog,
    Desktop, // the background with its icons
    Dock, // panels and bars
    Overlay, // menus, tooltips, notifications, splash screens
};

struct SessionWindow
{
    // Never 0. A driver that gives ids of its own gives none twice; where they are the session's,
    // one may come again as another window's, told apart by process and application.
    std::uint32_t id = 0;
    WindowKind kind = WindowKind::Standard;
    std::optional<QString> title;
    bool minimized = false;
    bool fullScreen = false;
    bool skipsTaskBar = false;
    QList<std::uint64_t> workspaces; // every one that it is on
    QRectF frame; // of the content, global pixels
    std::uint32_t transientFor = 0; // 0: none
    std::int32_t process = 0; // 0: unknown, or not on this machine

    // What tells the application apart, as far as the window carries it.
    QString appId; // of a Wayland window (xdg-shell)
    QString sandboxId; // the application that the session knows the sandbox of its program by
    QString instanceName;
    QString className;
    QString gtkApplicationId;
    QString kdeDesktopFile;

    bool operator==(const SessionWindow &) const = default;
};

// One of this program's windows that is shown, by what its toolkit knows of it.
struct SessionOwnWindow
{
    std::uint32_t x11Window = 0; // 0: it is none of X11
    std::int32_t process = 0;
    QString title{};

    bool operator==(const SessionOwnWindow &) const = default;
};

// A key by where it is on the keyboard, whatever the layout, together with the modifier keys that
// are down. Caps Lock and the like do not count.
struct SessionKey
{
    std::uint32_t position = 0; // the kernel's code (linux/input-event-codes.h)
    bool shift = false;
    bool control = false;
    bool alt = false;
    bool super = false;

    bool operator==(const SessionKey &) const = default;
};

enum class KeyGrab {
    Granted,
    Taken, // another program has the key
    Impossible, // no such key or modifier, or no global keys in this session
};

enum class CursorAccess {
    Hidden, // cannot be read; whether it could be moved does not matter, for nothing puts it back
    Readable,
    Movable, // and readable
};

// What not every kind of session can do. A request that the session cannot carry out is refused as
// well, but known beforehand.
struct SessionCapabilities
{
    CursorAccess cursor = CursorAccess::Movable;
    bool globalKeys = true;
    // Of this program's windows.
    bool above = true;
    bool onAllWorkspaces = true;
    // Whether they can be put at a place; where they cannot, their toolkit or nobody can.
    bool placesWindows = false;
    // Whether workspaces stay while they are empty and not shown.
    bool keepsEmptyWorkspaces = true;
    // Whether workspaces can be made, by their names.
    bool makesWorkspaces = false;
    // Whether activating a window is known to show the workspace that it is on. False when in
    // doubt: where activation brings the window to the shown workspace, it would undo a move.
    bool activationShowsWorkspace = false;

    bool operator==(const SessionCapabilities &) const = default;
};

} // namespace tovel
