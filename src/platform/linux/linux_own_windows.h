#pragma once

#include "platform/linux/desktop_session.h"
#include "platform/own_windows.h"

namespace tovel {

// The program's own windows, by the ids that the session has for them.
class LinuxOwnWindows final : public OwnWindows
{
public:
    // Borrows; null where there is no session, and nothing can be asked for then.
    explicit LinuxOwnWindows(DesktopSession *session)
        : m_session(session)
    { }

    bool setCollectionBehavior(std::uint32_t windowNumber,
                               NSWindowCollectionBehavior behavior) override
    {
        const bool onAll = behavior & NSWindowCollectionBehaviorCanJoinAllSpaces;
        return m_session && m_session->setOnAllWorkspaces(windowNumber, onAll);
    }

    bool setLevel(std::uint32_t windowNumber, NSWindowLevel level) override
    {
        return m_session && m_session->setAbove(windowNumber, level > NSNormalWindowLevel);
    }

    bool makeKeyAndOrderFront(std::uint32_t windowNumber) override
    {
        if (!m_session)
            return false;
        // A window that has the keyboard already is not raised by being activated everywhere.
        m_session->raiseWindow(windowNumber);
        return m_session->activateWindow(windowNumber);
    }

private:
    DesktopSession *m_session;
};

} // namespace tovel
