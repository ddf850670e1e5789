#include "support/memory_session.h"

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

MemorySession::MemorySession(bool isOneRow, const SessionCapabilities &capabilities)
    : m_screens{{7, u"DP-1"_s, QRectF(0, 0, 1280, 800), true},
                {3, u"DP-2"_s, QRectF(1280, 0, 1024, 768)}}
    , m_capabilities(capabilities)
{
    SessionOutput row{.shown = 11};
    row.workspaces = {{.id = 11, .uuid = u"one"_s}, {.id = 12}, {.id = 13}, {.id = 14}};
    SessionOutput other{.screen = 3, .shown = 21};
    other.workspaces = {{.id = 21}, {.id = 22}};
    if (!isOneRow)
        row.screen = 7;
    m_outputs.append(row);
    if (!isOneRow)
        m_outputs.append(other);
}

SessionOutput *MemorySession::outputOf(std::uint64_t workspace)
{
    for (SessionOutput &output : m_outputs) {
        for (const SessionWorkspace &candidate : output.workspaces) {
            if (candidate.id == workspace)
                return &output;
        }
    }
    return nullptr;
}

SessionWindow *MemorySession::find(std::uint32_t window)
{
    const auto found = std::ranges::find(m_windows, window, &SessionWindow::id);
    return found == m_windows.end() ? nullptr : &*found;
}

SessionWindow &MemorySession::window(std::uint32_t id)
{
    ++m_revision;
    return *find(id);
}

bool MemorySession::moveWindow(std::uint32_t window, std::uint64_t workspace)
{
    SessionWindow *moved = find(window);
    if (!moved || moved->workspaces.size() != 1 || !outputOf(workspace))
        return false;
    ++m_revision;
    moved->workspaces = {workspace};
    return true;
}

bool MemorySession::showWorkspace(std::uint64_t workspace)
{
    SessionOutput *output = outputOf(workspace);
    if (!output)
        return false;
    if (std::exchange(output->shown, workspace) != workspace) {
        ++m_revision;
        if (!std::exchange(m_isShowing, true)) {
            const auto tell = [this] {
                m_isShowing = false;
                m_shownHandler();
            };
            QMetaObject::invokeMethod(&m_context, tell, Qt::QueuedConnection);
        }
    }
    return true;
}

bool MemorySession::activateWindow(std::uint32_t window)
{
    if (!raiseWindow(window))
        return false;
    if (m_capabilities.activationShowsWorkspace)
        showWorkspace(find(window)->workspaces.first());
    return true;
}

bool MemorySession::raiseWindow(std::uint32_t window)
{
    const bool isThere = m_order.removeOne(window);
    if (isThere)
        m_order.prepend(window);
    ++m_revision;
    return isThere;
}

std::uint32_t MemorySession::ownWindow(const SessionOwnWindow &window)
{
    return find(window.x11Window) ? window.x11Window : 0;
}

bool MemorySession::setOnAllWorkspaces(std::uint32_t window, bool on)
{
    SessionWindow *changed = find(window);
    if (!changed)
        return false;
    const SessionOutput &row = *outputOf(changed->workspaces.first());
    changed->workspaces.clear();
    for (const SessionWorkspace &workspace : row.workspaces) {
        if (on || workspace.id == row.shown)
            changed->workspaces.append(workspace.id);
    }
    ++m_revision;
    return true;
}

KeyGrab MemorySession::grabKey(const SessionKey &key)
{
    if (m_taken.contains(key))
        return KeyGrab::Taken;
    m_grabbed.append(key);
    return KeyGrab::Granted;
}

void MemorySession::pressKey(const SessionKey &key)
{
    if (m_grabbed.contains(key))
        QMetaObject::invokeMethod(
            &m_context, [=, this] { m_keyHandler(key); }, Qt::QueuedConnection);
}

bool MemorySession::takeKey(const SessionKey &key)
{
    if (m_grabbed.contains(key))
        return false;
    m_taken.append(key);
    return true;
}

std::optional<QPointF> MemorySession::cursorPosition()
{
    if (m_capabilities.cursor == CursorAccess::Hidden)
        return std::nullopt;
    return m_cursor;
}

void MemorySession::moveCursor(QPointF position)
{
    m_cursor = position;
    ++m_cursorMoves;
}

std::uint32_t MemorySession::open(SessionWindow window)
{
    if (window.id == 0)
        window.id = ++m_lastNumber;
    ++m_revision;
    m_windows.append(window);
    m_order.prepend(window.id);
    return window.id;
}

void MemorySession::close(std::uint32_t window)
{
    ++m_revision;
    m_order.removeOne(window);
    m_windows.removeIf([window](const SessionWindow &other) { return other.id == window; });
}

} // namespace tovel
