#pragma once

#include "platform/linux/session_applications.h"
#include "platform/quartz.h"

namespace tovel {

// Window information, the cursor and displays of a desktop session. The one keystroke it knows is
// the step to a neighbouring workspace, which it carries out by showing that workspace.
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
    std::optional<SessionScreen> screen(std::uint32_t display) const;
    void step(int towards);

    SessionApplications *m_applications;
};

} // namespace tovel
