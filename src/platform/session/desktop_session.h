#pragma once

#include "platform/session/session_records.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>

namespace tovel {

// What one kind of session must be able to do. Reads answer from the present: a driver may keep a
// picture of the session, but has to verify it on the first read after invalidate() and after
// every request of its own. A session that is gone answers with nothing and refuses requests, and
// no call waits for one that is silent for longer than a deadline of the driver's.
// Requests return whether they were sent; what they name is looked for in the verified picture, and
// what is not there is refused. Managers may ignore what was sent.
class DesktopSession
{
public:
    // What was sent has reached the session before its driver goes.
    virtual ~DesktopSession() = default;

    // Tells that time has passed since the last read.
    virtual void invalidate() = 0;

    // Changes whenever any of the answers below may have changed; reading it verifies the picture.
    virtual std::uint64_t revision() = 0;

    // What the session calls itself, with its version where it tells that; empty when unknown.
    virtual QString name() = 0;

    // Whether a window manager (or what takes its place) runs, now, able or not.
    virtual bool hasManager() = 0;

    // Whether the session can list windows, move them and show workspaces, now.
    virtual bool isControllable() = 0;

    // Of a session that can be controlled.
    virtual SessionCapabilities capabilities() = 0;

    // The primary screen first.
    virtual QList<SessionScreen> screens() = 0;

    // The row of the primary screen first. None without a manager, whatever it has left behind.
    virtual QList<SessionOutput> outputs() = 0;

    // Every managed window, oldest first. The reference holds until the next call of any method.
    virtual const QList<SessionWindow> &windows() = 0;

    // Their ids, front to back.
    virtual QList<std::uint32_t> stackingOrder() = 0;

    // The window that has the keyboard focus; 0 when none has.
    virtual std::uint32_t activeWindow() = 0;

    // Refused for a window that is on all workspaces, and for a workspace that is gone.
    virtual bool moveWindow(std::uint32_t window, std::uint64_t workspace) = 0;

    // On the screen that the workspace belongs to, whichever has the cursor or the keyboard.
    virtual bool showWorkspace(std::uint64_t workspace) = 0;

    // Only called where the capabilities say that workspaces can be made. The new one is without
    // windows, and an empty name is that of the lowest number that is free. A session that keeps
    // no empty workspaces has it in its rows until the last of its windows has left it.
    virtual MadeWorkspace makeWorkspace(const QString &) { return {}; }

    virtual bool activateWindow(std::uint32_t window) = 0;

    // Without activating it. Refused where a window cannot be raised alone.
    virtual bool raiseWindow(std::uint32_t window) = 0;

    // The id of a window of this program, 0 when the session does not have it (yet). Asked at each
    // request, because a window that was hidden may come back as another. Where the process has
    // several windows of that title, the one that appeared last.
    virtual std::uint32_t ownWindow(const SessionOwnWindow &window) = 0;

    // Before such a window is shown that is to be on all workspaces then: has it come up with the
    // size that it asks for, where the session would give it another one first.
    virtual void prepareOwnWindow(const SessionOwnWindow &) { }

    // The next two are for windows of this program that are shown, and hold until they are hidden.
    // False for a window that the session does not have.

    // Puts the window on every workspace of its screen at least, or on the shown one again.
    virtual bool setOnAllWorkspaces(std::uint32_t window, bool on) = 0;

    // Keeps the window above ordinary windows, or among them again.
    virtual bool setAbove(std::uint32_t window, bool on) = 0;

    // Puts the corner of a window of this program there, in global pixels, as far as it can be
    // reached there. Only called where the capabilities say that windows can be placed.
    virtual bool placeWindow(std::uint32_t, QPoint) { return false; }

    // In global pixels; absent also where the capabilities say that it is hidden.
    virtual std::optional<QPointF> cursorPosition() = 0;

    // Only called where the capabilities say that the cursor can be moved.
    virtual void moveCursor(QPointF position) = 0;

    // Takes a key for this program, whichever window has the keyboard. A grabbed key stays where it
    // is on the keyboard while layouts come and go. All or nothing: where one state of the locks is
    // another program's, none is taken. Not for a key that is grabbed already. Impossible also
    // while whoever gives keys is not there: to be asked for again once the session can be
    // controlled.
    virtual KeyGrab grabKey(const SessionKey &key) = 0;
    // Nothing happens for a key that is not grabbed.
    virtual void releaseKey(const SessionKey &key) = 0;
    // Called on the main thread from the event loop, once for each time that a grabbed key is
    // pressed, however long it is held.
    virtual void setKeyHandler(std::function<void(const SessionKey &key)> handler) = 0;

    // What a user of this session has to know that it cannot do, beyond its capabilities, or why it
    // cannot be controlled; a sentence each.
    virtual QStringList limits() = 0;

    // For a session that cannot be controlled: does what can be done at once about that, because
    // the user asked for it, and waits for so long at most until that takes effect. Whether it is
    // still to do so in a moment. What is left to do is among the limits afterwards.
    virtual bool requestAccess(std::chrono::milliseconds) { return false; }

    // Called on the main thread from the event loop after the shown workspace of any output
    // changed.
    virtual void setShownWorkspaceHandler(std::function<void()> handler) = 0;
};

} // namespace tovel
