#pragma once

#include "platform/session/desktop_session.h"

#include <QByteArray>
#include <QObject>

#include <memory>

namespace tovel::x11 {

class Connection;
enum class Name : std::size_t;
class KeyGrabs;
class WindowMirror;

// A session of X11 with a window manager that follows the Extended Window Manager Hints. The
// manager's desktops are one row over all screens: EWMH knows no other. They are told apart by
// their numbers; when some went away, all that are left count as new ones.
class X11Session final : public DesktopSession
{
public:
    // Null when no X server answers on the display (empty: the environment's).
    static std::unique_ptr<X11Session> open(const QByteArray &display);
    ~X11Session() override;

    void invalidate() override;
    std::uint64_t revision() override;
    QString name() override;
    bool hasManager() override;
    bool isControllable() override;
    SessionCapabilities capabilities() override;
    QList<SessionScreen> screens() override;
    QList<SessionOutput> outputs() override;
    const QList<SessionWindow> &windows() override;
    QList<std::uint32_t> stackingOrder() override;
    std::uint32_t activeWindow() override;
    bool moveWindow(std::uint32_t window, std::uint64_t workspace) override;
    bool showWorkspace(std::uint64_t workspace) override;
    bool activateWindow(std::uint32_t window) override;
    bool raiseWindow(std::uint32_t window) override;
    std::uint32_t ownWindow(const SessionOwnWindow &window) override;
    bool setOnAllWorkspaces(std::uint32_t window, bool on) override;
    bool setAbove(std::uint32_t window, bool on) override;
    std::optional<QPointF> cursorPosition() override;
    void moveCursor(QPointF position) override;
    KeyGrab grabKey(const SessionKey &key) override;
    void releaseKey(const SessionKey &key) override;
    void setKeyHandler(std::function<void(const SessionKey &key)> handler) override;
    QStringList limits() override;
    void setShownWorkspaceHandler(std::function<void()> handler) override;

    // Where i3 listens to other programs; empty where no i3 tells.
    QByteArray managerSocket();

private:
    explicit X11Session(std::unique_ptr<Connection> connection);

    WindowMirror &current();
    bool supports(Name name);
    bool exists(std::uint32_t window);
    bool shownWorkspaceChanged() const;
    void noticeShownWorkspace();
    void listen();
    void awaitKeys();
    void noticeKeys();

    std::unique_ptr<Connection> m_connection;
    std::unique_ptr<WindowMirror> m_mirror;
    std::unique_ptr<KeyGrabs> m_keyGrabs;
    bool m_isStale = true;
    std::uint64_t m_listedRevision = 0;
    QList<SessionWindow> m_windows;
    std::optional<std::uint32_t> m_notifiedDesktop;
    std::function<void()> m_shownWorkspaceHandler;
    std::function<void(const SessionKey &key)> m_keyHandler;
    bool m_isListening = false;
    bool m_areKeysAwaited = false;
    QObject m_context;
};

} // namespace tovel::x11
