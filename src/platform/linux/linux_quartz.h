#pragma once

#include "platform/linux/applications/session_applications.h"
#include "platform/quartz.h"

namespace tovel {

// Window information, the cursor and displays of a desktop session. The one keystroke it knows is
// the step to a neighbouring workspace, which it carries out by showing that workspace. Where the
// session does not let the cursor be moved, the place that it is moved to is only remembered, for
// the steps; where it does not even tell it, the cursor counts as outside of every display else.
class LinuxQuartz final : public Quartz
{
public:
    // Borrows; null where there is no session, and every call then answers nothing.
    explicit LinuxQuartz(SessionApplications *applications);

    std::optional<QVariantList> CGWindowListCopyWindowInfo(CGWindowListOption option,
                                                           std::uint32_t relativeTo) override;
    std::optional<CGEventSource> CGEventSourceCreate(CGEventSourceStateID state) override;
    std::optional<CGEvent> CGEventCreateKeyboardEvent(const CGEventSource &source,
                                                      std::uint16_t virtualKey,
                                                      bool keyDown) override;
    std::optional<CGEvent> CGEventCreate() override;
    void CGEventPost(CGEventTapLocation tap, const CGEvent &event) override;
    void CGWarpMouseCursorPosition(QPointF position) override;
    QRectF CGDisplayBounds(std::uint32_t display) const override;
    bool CGDisplayIsBuiltin(std::uint32_t display) const override;
    std::optional<QString> CGDisplayCreateUUIDFromDisplayID(std::uint32_t display) const override;

private:
    std::optional<SessionScreen> display(std::uint32_t number) const;
    void step(int towards);
    // The row that a step is for.
    std::optional<SessionOutput> steppedOutput() const;

    SessionApplications *m_applications;
    std::optional<QPointF> m_assumedCursor; // where the session's own does not tell
};

} // namespace tovel
