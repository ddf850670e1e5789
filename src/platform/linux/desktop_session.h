#pragma once

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <optional>

namespace tovel {

struct SessionScreen
{
    std::uint32_t number = 0; // never 0
    QString name;
    QRectF bounds; // global pixels
    bool builtIn = false;

    bool operator==(const SessionScreen &) const = default;
};

struct SessionWorkspace
{
    std::uint64_t id = 0; // never 0, unique over all outputs
    bool regular = true;

    bool operator==(const SessionWorkspace &) const = default;
};

// A row of workspaces of which one is shown.
struct SessionOutput
{
    QString identifier;
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
    QString instanceName;
    QString className;
    QString gtkApplicationId;
    QString kdeDesktopFile;

    bool operator==(const SessionWindow &) const = default;
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

// What one kind of session must be able to do. Reads answer from the present: a driver may keep a
// picture of the session, but has to verify it on the first read after invalidate() and after
// every request of its own. A session that is gone answers with nothing and refuses requests.
// Requests return whether they were sent; managers may ignore them.
class DesktopSession
{
public:
    virtual ~DesktopSession() = default;

    // Tells that time has passed since the last read.
    virtual void invalidate() = 0;

    // Changes whenever any of the answers below may have changed; reading it verifies the picture.
    virtual std::uint64_t revision() = 0;

    // Whether a window manager (or what takes its place) runs, now, able or not.
    virtual bool hasManager() = 0;

    // Whether the session can list windows, move them and show workspaces, now.
    virtual bool isControllable() = 0;

    // The primary screen first.
    virtual QList<SessionScreen> screens() = 0;

    virtual QList<SessionOutput> outputs() = 0;

    // Every managed window, oldest first. The reference holds until the next call of any method.
    virtual const QList<SessionWindow> &windows() = 0;

    // Their ids, front to back.
    virtual QList<std::uint32_t> stackingOrder() = 0;

    // The window that has the keyboard focus; 0 when none has.
    virtual std::uint32_t activeWindow() = 0;

    virtual bool moveWindow(std::uint32_t window, std::uint64_t workspace) = 0;
    virtual bool showWorkspace(std::uint64_t workspace) = 0;
    virtual bool activateWindow(std::uint32_t window) = 0;
    virtual bool raiseWindow(std::uint32_t window) = 0;

    // The next two are for windows of this program that are shown, and hold until they are hidden.
    // False for a window that the session does not have.

    // Puts the window on every workspace, or on the shown one again.
    virtual bool setOnAllWorkspaces(std::uint32_t window, bool on) = 0;

    // Keeps the window above ordinary windows, or among them again.
    virtual bool setAbove(std::uint32_t window, bool on) = 0;

    // Whether activating a window is known to show the workspace that it is on. False when in
    // doubt: where activation brings the window to the shown workspace, it would undo a move.
    virtual bool activationShowsWorkspace() = 0;

    virtual std::optional<QPointF> cursorPosition() = 0;
    virtual void moveCursor(QPointF position) = 0;

    // Takes a key for this program, whichever window has the keyboard. A grabbed key stays where it
    // is on the keyboard while layouts come and go. All or nothing: where one state of the locks is
    // another program's, none is taken. Not for a key that is grabbed already.
    virtual KeyGrab grabKey(const SessionKey &key) = 0;
    // Nothing happens for a key that is not grabbed.
    virtual void releaseKey(const SessionKey &key) = 0;
    // Called on the main thread from the event loop, once for each time that a grabbed key is
    // pressed, however long it is held.
    virtual void setKeyHandler(std::function<void(const SessionKey &key)> handler) = 0;

    // What a user of this session has to know that it cannot do; a sentence each.
    virtual QStringList limits() = 0;

    // Called on the main thread from the event loop after the shown workspace changed.
    virtual void setShownWorkspaceHandler(std::function<void()> handler) = 0;
};

} // namespace tovel
