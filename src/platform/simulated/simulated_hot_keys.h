#pragma once

#include "platform/hot_keys.h"

namespace tovel {

struct SimulatedState;

class SimulatedHotKeys final : public HotKeys
{
public:
    explicit SimulatedHotKeys(SimulatedState &state);

    EventTargetRef GetApplicationEventTarget() override;
    EventHandlerInstallation InstallEventHandler(EventTargetRef target, EventHandlerUPP handler,
                                                 std::span<const EventTypeSpec> types,
                                                 void *userData) override;
    HotKeyRegistration RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                           EventHotKeyID id, EventTargetRef target,
                                           std::uint32_t options) override;
    OSStatus UnregisterEventHotKey(EventHotKeyRef hotKey) override;

private:
    SimulatedState &m_state;
    std::uint64_t m_lastHandle = 0;
};

} // namespace tovel
