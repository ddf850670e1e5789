#pragma once

#include "platform/own_windows.h"
#include "platform/session/desktop_session.h"

namespace tovel {

// The program's own windows, as far as the session says which of its windows they are.
class LinuxOwnWindows final : public OwnWindows
{
public:
    // Borrows; null where there is no session, and nothing can be asked for then.
    explicit LinuxOwnWindows(DesktopSession *session)
        : m_session(session)
    { }

    std::uint32_t numberOf(const OwnWindow &window) override;
    void prepare(const OwnWindow &window) override;
    bool setCollectionBehavior(const OwnWindow &window,
                               NSWindowCollectionBehavior behavior) override;
    std::optional<QPoint> frameOrigin(const OwnWindow &window) override;
    bool setFrameOrigin(const OwnWindow &window, QPoint origin) override;
    bool setLevel(const OwnWindow &window, NSWindowLevel level) override;
    bool makeKeyAndOrderFront(const OwnWindow &window) override;

private:
    std::uint32_t numberToPlace(const OwnWindow &window);

    DesktopSession *m_session;
};

} // namespace tovel
