#pragma once

#include "platform/session/desktop_session.h"

#include <QByteArray>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <memory>
#include <vector>

namespace tovel::x11 {
class X11Session;
}

namespace tovel::i3 {

struct AssignedWorkspace;
struct Version;
class IpcConnection;
class Picture;

// A session of i3 or of sway, by the IPC protocol that both speak. There is one row of workspaces
// for each output; a workspace is what its name says. What i3 leaves to X11 (the cursor, keys,
// what a window says of itself) is asked of X11's driver.
class I3Session final : public DesktopSession
{
public:
    // Null when neither sway nor i3 answers there, or not to this user.
    static std::unique_ptr<I3Session> open(const QByteArray &path);
    // With the session of X11 that i3 manages; null where its display cannot be reached. It is left
    // alone where the result is null.
    static std::unique_ptr<I3Session> open(const QByteArray &path,
                                           std::unique_ptr<x11::X11Session> &&x11);
    ~I3Session() override;

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
    MadeWorkspace makeWorkspace(const QString &name) override;
    bool activateWindow(std::uint32_t window) override;
    // Neither raises a window that it does not give the keyboard.
    bool raiseWindow(std::uint32_t window) override;
    std::uint32_t ownWindow(const SessionOwnWindow &window) override;
    void prepareOwnWindow(const SessionOwnWindow &window) override;
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
    struct Binding
    {
        SessionKey key;
        QString command;
    };

    explicit I3Session(const QByteArray &path);

    bool connect();
    bool isConnected() const;
    Picture &current();
    void lookAgain();
    void lose();
    bool command(const QByteArray &text);
    bool commandFor(std::uint32_t window, const QByteArray &text);
    bool isSway() const;
    QString ownName() const;
    QString silence() const;
    void readConfiguration();
    void listen();
    void followEvents();
    void awaitEvents();
    void noticeEvents();
    QList<std::optional<std::uint64_t>> shownWorkspaces() const;

    QByteArray m_path;
    std::unique_ptr<x11::X11Session> m_x11;
    std::unique_ptr<IpcConnection> m_connection;
    std::unique_ptr<Version> m_version;
    std::unique_ptr<Picture> m_picture;
    QList<AssignedWorkspace> m_assigned;
    QList<AssignedWorkspace> m_made; // here, and not there before they get a window
    QByteArray m_tree; // that the picture shows
    std::uint64_t m_x11Revision = 0;
    bool m_isStale = true;
    std::chrono::milliseconds m_patience; // with each of its answers
    std::chrono::steady_clock::time_point m_nextAttempt;
    QTimer m_attempts;

    std::vector<Binding> m_bindings;
    std::uint64_t m_lastBinding = 0;
    std::function<void(const SessionKey &key)> m_keyHandler;
    std::function<void()> m_shownWorkspaceHandler;
    QList<std::optional<std::uint64_t>> m_notifiedWorkspaces;
    bool m_isListening = false;
    bool m_areEventsAwaited = false;
    QObject m_context;
};

} // namespace tovel::i3
