#include "platform/linux/linux_own_windows.h"

#include <algorithm>

#include <unistd.h>

namespace tovel {

namespace {

SessionOwnWindow sessionWindow(const OwnWindow &window)
{
    return {window.windowNumber, static_cast<std::int32_t>(::getpid()), window.title};
}

} // namespace

void LinuxOwnWindows::prepare(const OwnWindow &window)
{
    if (m_session)
        m_session->prepareOwnWindow(sessionWindow(window));
}

bool LinuxOwnWindows::setCollectionBehavior(const OwnWindow &window,
                                            NSWindowCollectionBehavior behavior)
{
    const bool onAll = behavior & NSWindowCollectionBehaviorCanJoinAllSpaces;
    const std::uint32_t id = numberOf(window);
    return id != 0 && m_session->setOnAllWorkspaces(id, onAll);
}

// 0 also where the session places no windows.
std::uint32_t LinuxOwnWindows::numberToPlace(const OwnWindow &window)
{
    const std::uint32_t id = numberOf(window);
    return id != 0 && m_session->capabilities().placesWindows ? id : 0;
}

std::optional<QPoint> LinuxOwnWindows::frameOrigin(const OwnWindow &window)
{
    const std::uint32_t id = numberToPlace(window);
    if (id == 0)
        return std::nullopt;
    const auto &windows = m_session->windows();
    const auto found = std::ranges::find(windows, id, &SessionWindow::id);
    return found == windows.end() ? std::nullopt : std::optional(found->frame.topLeft().toPoint());
}

bool LinuxOwnWindows::setFrameOrigin(const OwnWindow &window, QPoint origin)
{
    const std::uint32_t id = numberToPlace(window);
    return id != 0 && m_session->placeWindow(id, origin);
}

bool LinuxOwnWindows::setLevel(const OwnWindow &window, NSWindowLevel level)
{
    const std::uint32_t id = numberOf(window);
    return id != 0 && m_session->setAbove(id, level > NSNormalWindowLevel);
}

bool LinuxOwnWindows::makeKeyAndOrderFront(const OwnWindow &window)
{
    const std::uint32_t id = numberOf(window);
    if (id == 0)
        return false;
    // A window that has the keyboard already is not raised by being activated everywhere.
    m_session->raiseWindow(id);
    return m_session->activateWindow(id);
}

std::uint32_t LinuxOwnWindows::numberOf(const OwnWindow &window)
{
    return m_session ? m_session->ownWindow(sessionWindow(window)) : 0;
}

} // namespace tovel
