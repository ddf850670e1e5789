#include "platform/simulated/simulated_own_windows.h"

#include "platform/simulated/simulated_state.h"

namespace tovel {

using namespace Qt::StringLiterals;

// A program that runs on the simulation has windows that the simulation does not have: requests for
// those are written down and have no effect.

bool SimulatedOwnWindows::setCollectionBehavior(std::uint32_t windowNumber,
                                                NSWindowCollectionBehavior behavior)
{
    m_state.note(u"collectionBehavior %1 %2"_s.arg(windowNumber).arg(behavior, 0, 16));
    SimWindow *window = m_state.findWindow(windowNumber);
    if (!window)
        return false;
    const bool onAll = behavior & NSWindowCollectionBehaviorCanJoinAllSpaces;
    window->spaces.clear();
    for (const SimDisplay &display : m_state.world.displays) {
        for (const SimSpace &space : display.spaces) {
            if (onAll || (window->spaces.isEmpty() && space.id == display.currentSpace))
                window->spaces.append(space.id);
        }
    }
    return true;
}

bool SimulatedOwnWindows::setLevel(std::uint32_t windowNumber, NSWindowLevel level)
{
    m_state.note(u"level %1 %2"_s.arg(windowNumber).arg(level));
    SimWindow *window = m_state.findWindow(windowNumber);
    if (window)
        window->layer = level;
    return window != nullptr;
}

bool SimulatedOwnWindows::makeKeyAndOrderFront(std::uint32_t windowNumber)
{
    m_state.note(u"makeKeyAndOrderFront %1"_s.arg(windowNumber));
    m_state.raiseWindow(windowNumber);
    return m_state.findWindow(windowNumber) != nullptr;
}

} // namespace tovel
