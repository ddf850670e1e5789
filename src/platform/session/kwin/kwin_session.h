#pragma once

#include "platform/session/desktop_session.h"
#include "platform/session/kwin/bus_calls.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <memory>

namespace tovel::kwin {

class Compositor;
class KWinService;
class Shortcuts;
struct Identities;
struct Window;

// A Wayland session of KWin. Its virtual desktops are one row over all screens. Which windows there
// are it tells only to programs that a desktop file permits (X-KDE-Wayland-Interfaces). When KWin
// goes, or does not answer, the session is gone until it does.
class KWinSession final : public DesktopSession
{
public:
    // Null when the compositor on the socket is not KWin, or does not answer. The name is that of
    // WAYLAND_DISPLAY; the bus is the session's.
    static std::unique_ptr<KWinSession> open(const QByteArray &socket, const QDBusConnection &bus);
    ~KWinSession() override;

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

private:
    KWinSession(const QByteArray &socket, const QDBusConnection &bus);

    bool refresh();
    bool update();
    bool connect();
    void disconnect();
    void attempt();
    void askForShown();
    void askForPermission();
    std::uint64_t workspaceOf(const QString &uuid);
    QString uuidOf(std::uint64_t workspace);
    const Window *find(std::uint32_t window);
    SessionWindow describe(const Window &window);
    void listen();
    void watch();
    void notice();
    Shortcuts &shortcuts();

    QByteArray m_socket;
    std::unique_ptr<Identities> m_identities;
    std::unique_ptr<Compositor> m_compositor; // null while there is none
    BusCalls m_calls;
    std::unique_ptr<KWinService> m_service;
    std::unique_ptr<Shortcuts> m_shortcuts; // once a key was wanted
    std::function<void(const SessionKey &key)> m_keyHandler;
    QDeadlineTimer m_nextAttempt;
    bool m_isStale = true;
    bool m_isAnswering = false;
    std::uint64_t m_listedRevision = 0;
    QList<SessionWindow> m_windows;
    QString m_notified; // the desktop that the handler knows of
    std::function<void()> m_shownWorkspaceHandler;
    bool m_isListening = false;
    QTimer m_attempts; // to find a KWin that was gone
    QObject m_context;
};

} // namespace tovel::kwin
