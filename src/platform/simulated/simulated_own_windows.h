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

    bool setCollectionBehavior(std::uint32_t windowNumber,
                               NSWindowCollectionBehavior behavior) override;
    bool setLevel(std::uint32_t windowNumber, NSWindowLevel level) override;
    bool makeKeyAndOrderFront(std::uint32_t windowNumber) override;

private:
    SimulatedState &m_state;
};

} // namespace tovel
