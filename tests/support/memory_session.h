#pragma once

#include "platform/session/desktop_session.h"

#include <QObject>

#include <utility>

namespace tovel {

// A session in memory, without keys, and of which no window is the program's own: nobody needs a
// screen for it. Its users and their programs are the test, by the operations at the end.
// Everything takes effect at once.
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
    QList<std::uint32_t> stackingOrder() override;
    std::uint32_t activeWindow() override { return 0; }
    bool moveWindow(std::uint32_t window, std::uint64_t workspace) override;
    bool showWorkspace(std::uint64_t workspace) override;
    bool activateWindow(std::uint32_t) override { return false; }
    bool raiseWindow(std::uint32_t) override { return false; }
    std::uint32_t ownWindow(const SessionOwnWindow &) override { return 0; }
    bool setOnAllWorkspaces(std::uint32_t, bool) override { return false; }
    bool setAbove(std::uint32_t, bool) override { return false; }
    std::optional<QPointF> cursorPosition() override;
    void moveCursor(QPointF position) override;
    KeyGrab grabKey(const SessionKey &) override { return KeyGrab::Impossible; }
    void releaseKey(const SessionKey &) override { }
    void setKeyHandler(std::function<void(const SessionKey &)>) override { }
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
    // Nothing that happens is noticed until the next invalidate().
    void hold() { m_heldRevision = m_revision; }
    void setControllable(bool controllable) { m_controllable = controllable; }
    QPointF cursor() const { return m_cursor; }
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
    std::uint32_t m_lastNumber = 0;
    QPointF m_cursor;
    int m_cursorMoves = 0;
    std::function<void()> m_shownHandler;
    bool m_isShowing = false; // that is still to be told
    QObject m_context;
};

} // namespace tovel
