#pragma once

#include "platform/session/desktop_session.h"
#include "platform/session/gnome/picture.h"
#include "platform/session/gnome/shell_bus.h"
#include "platform/session/gnome/shell_extension.h"

#include <QDBusConnection>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <chrono>
#include <memory>

namespace tovel::gnome {

// A session of GNOME Shell, which shows windows to its extensions alone: by Tovel's own one, while
// that is enabled and the screen is not locked. Workspaces are one row over all screens, or on the
// primary one. When the Shell or the extension goes, or does not answer, the session is gone until
// it does.
class GnomeSession final : public DesktopSession
{
public:
    // Null where no GNOME Shell is on the session's bus.
    static std::unique_ptr<GnomeSession> open(const QDBusConnection &bus);
    ~GnomeSession() override;

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
    bool placeWindow(std::uint32_t window, QPoint corner) override;
    std::optional<QPointF> cursorPosition() override;
    void moveCursor(QPointF position) override;
    KeyGrab grabKey(const SessionKey &key) override;
    void releaseKey(const SessionKey &key) override;
    void setKeyHandler(std::function<void(const SessionKey &key)> handler) override;
    QStringList limits() override;
    bool requestAccess(std::chrono::milliseconds patience) override;
    void setShownWorkspaceHandler(std::function<void()> handler) override;

private:
    explicit GnomeSession(const QDBusConnection &bus);

    Picture &current();
    void lookAgain();
    void keepOnAllWorkspaces();
    bool request(const QString &method, const QVariantList &arguments);
    void listen();
    void hear();
    void notice();
    std::optional<std::uint64_t> shownWorkspace() const;

    ShellBus m_bus;
    ShellExtension m_extension;
    Picture m_picture;
    Snapshot m_snapshot; // that the picture shows
    QList<NamedMonitor> m_monitors; // of the snapshot's
    bool m_isStale = true;
    QString m_shellVersion;
    QSet<std::uint32_t> m_onAllWorkspaces; // windows of this program

    std::function<void()> m_shownWorkspaceHandler;
    std::optional<std::uint64_t> m_notifiedWorkspace;
    bool m_isListening = false;
    QTimer m_pause; // between two looks that the extension asks for
    bool m_hasHeard = false; // of a change in that time
    QObject m_context;
};

} // namespace tovel::gnome
