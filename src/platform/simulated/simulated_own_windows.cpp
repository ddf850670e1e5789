#include "platform/simulated/simulated_own_windows.h"

#include "platform/simulated/simulated_state.h"

namespace tovel {

using namespace Qt::StringLiterals;

// A program that runs on the simulation has windows that the simulation does not have: requests for
// those are written down and have no effect.

std::uint32_t SimulatedOwnWindows::numberOf(const OwnWindow &window)
{
    return m_state.findWindow(window.windowNumber) ? window.windowNumber : 0;
}

bool SimulatedOwnWindows::setCollectionBehavior(const OwnWindow &window,
                                                NSWindowCollectionBehavior behavior)
{
    m_state.note(u"collectionBehavior %1 %2"_s.arg(window.windowNumber).arg(behavior, 0, 16));
    SimWindow *found = m_state.findWindow(window.windowNumber);
    if (!found)
        return false;
    const bool onAll = behavior & NSWindowCollectionBehaviorCanJoinAllSpaces;
    found->spaces.clear();
    for (const SimDisplay &display : m_state.world.displays) {
        for (const SimSpace &space : display.spaces) {
            if (onAll || (found->spaces.isEmpty() && space.id == display.currentSpace))
                found->spaces.append(space.id);
        }
    }
    return true;
}

bool SimulatedOwnWindows::setLevel(const OwnWindow &window, NSWindowLevel level)
{
    m_state.note(u"level %1 %2"_s.arg(window.windowNumber).arg(level));
    SimWindow *found = m_state.findWindow(window.windowNumber);
    if (found)
        found->layer = level;
    return found != nullptr;
}

bool SimulatedOwnWindows::makeKeyAndOrderFront(const OwnWindow &window)
{
    m_state.note(u"makeKeyAndOrderFront %1"_s.arg(window.windowNumber));
    m_state.raiseWindow(window.windowNumber);
    return m_state.findWindow(window.windowNumber) != nullptr;
}

} // namespace tovel
