#pragma once

#include "platform/own_windows.h"

namespace tovel {

struct SimulatedState;

class SimulatedOwnWindows final : public OwnWindows
{
public:
    explicit SimulatedOwnWindows(SimulatedState &state)
        : m_state(state)
    { }

    std::uint32_t numberOf(const OwnWindow &window) override;
    bool setCollectionBehavior(const OwnWindow &window,
                               NSWindowCollectionBehavior behavior) override;
    bool setLevel(const OwnWindow &window, NSWindowLevel level) override;
    bool makeKeyAndOrderFront(const OwnWindow &window) override;

private:
    SimulatedState &m_state;
};

} // namespace tovel
