#pragma once

#include "platform/session/desktop_session.h"

#include <QObject>

#include <utility>

namespace tovel {

// A session in memory: nobody needs a screen for it. Its users and their programs are the test, by
// the operations at the end. A window of the program's own is named by its number. Everything takes
// effect at once; what is told of it comes from the event loop.
class MemorySession final : public DesktopSession
{
public:
    // With the screens DP-1, 1280 by 800 pixels, and DP-2 to its right, 1024 by 768. A row of four
    // workspaces from number 11 on is on the first one, and one of two from number 21 on is on the
    // other; or the first row spans both.
    explicit MemorySession(bool isOneRow, const SessionCapabilities &capabilities = {});

    void invalidate() override { m_heldRevision.reset(); }
    std::uint64_t revision() override { return m_heldRevision.value_or(m_revision); }
    QString name() override { return QStringLiteral("Memory 1"); }
    bool hasManager() override { return true; }
    bool isControllable() override { return m_controllable; }
    SessionCapabilities capabilities() override { return m_capabilities; }
    QList<SessionScreen> screens() override { return m_screens; }
    QList<SessionOutput> outputs() override { return m_outputs; }
    const QList<SessionWindow> &windows() override { return m_windows; }
    QList<std::uint32_t> stackingOrder() override { return m_order; }
    std::uint32_t activeWindow() override { return 0; }
    bool moveWindow(std::uint32_t window, std::uint64_t workspace) override;
    bool showWorkspace(std::uint64_t workspace) override;
    bool activateWindow(std::uint32_t window) override;
    bool raiseWindow(std::uint32_t window) override;
    std::uint32_t ownWindow(const SessionOwnWindow &window) override;
    bool setOnAllWorkspaces(std::uint32_t window, bool on) override;
    bool setAbove(std::uint32_t window, bool) override { return find(window) != nullptr; }
    std::optional<QPointF> cursorPosition() override;
    void moveCursor(QPointF position) override;
    KeyGrab grabKey(const SessionKey &key) override;
    void releaseKey(const SessionKey &key) override { m_grabbed.removeOne(key); }
    void setKeyHandler(std::function<void(const SessionKey &)> handler) override
    {
        m_keyHandler = std::move(handler);
    }
    QStringList limits() override { return {}; }
    void setShownWorkspaceHandler(std::function<void()> handler) override
    {
        m_shownHandler = std::move(handler);
    }

    // Gives the number, which is the window's own if it has one, and otherwise new.
    std::uint32_t open(SessionWindow window);
    void close(std::uint32_t window);
    // To change it.
    SessionWindow &window(std::uint32_t id);
    void pressKey(const SessionKey &key);
    // By another program, for good; whether it got the key.
    bool takeKey(const SessionKey &key);
    // Nothing that happens is noticed until the next invalidate().
    void hold() { m_heldRevision = m_revision; }
    void setControllable(bool controllable) { m_controllable = controllable; }
    int cursorMoves() const { return m_cursorMoves; }

private:
    SessionOutput *outputOf(std::uint64_t workspace);
    SessionWindow *find(std::uint32_t window);

    QList<SessionScreen> m_screens;
    QList<SessionOutput> m_outputs;
    SessionCapabilities m_capabilities;
    std::uint64_t m_revision = 1;
    std::optional<std::uint64_t> m_heldRevision;
    bool m_controllable = true;
    QList<SessionWindow> m_windows;
    QList<std::uint32_t> m_order; // front to back
    QList<SessionKey> m_grabbed;
    QList<SessionKey> m_taken;
    std::uint32_t m_lastNumber = 0;
    QPointF m_cursor;
    int m_cursorMoves = 0;
    std::function<void()> m_shownHandler;
    std::function<void(const SessionKey &)> m_keyHandler;
    bool m_isShowing = false; // that is still to be told
    QObject m_context;
};

} // namespace tovel
