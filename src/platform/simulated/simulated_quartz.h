#pragma once

#include "platform/quartz.h"

namespace tovel {

struct SimulatedState;

class SimulatedQuartz final : public Quartz
{
public:
    explicit SimulatedQuartz(SimulatedState &state);

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
    SimulatedState &m_state;
};

} // namespace tovel
