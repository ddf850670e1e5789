#pragma once

#include "platform/application.h"
#include "platform/platform.h"
#include "platform/simulated/simulated_accessibility.h"
#include "platform/simulated/simulated_hot_keys.h"
#include "platform/simulated/simulated_loader.h"
#include "platform/simulated/simulated_own_windows.h"
#include "platform/simulated/simulated_quartz.h"
#include "platform/simulated/simulated_state.h"
#include "platform/simulated/simulated_workspace.h"

namespace tovel {

// The contract, answered from one state.
class SimulatedPlatform final : public Platform
{
public:
    explicit SimulatedPlatform(SimulatedState &state)
        : m_state(state)
        , m_loader(state)
        , m_accessibility(state)
        , m_quartz(state)
        , m_workspace(state)
        , m_hotKeys(state)
        , m_ownWindows(state)
    { }

    DynamicLoader &loader() override { return m_loader; }
    Accessibility &accessibility() override { return m_accessibility; }
    Quartz &quartz() override { return m_quartz; }
    Workspace &workspace() override { return m_workspace; }
    UserDefaultsDomains &userDefaults() override { return m_state.userDefaults; }
    Clock &clock() override { return m_state.clock; }
    HotKeys &hotKeys() override { return m_hotKeys; }
    Application &application() override { return m_application; }
    OwnWindows &ownWindows() override { return m_ownWindows; }

private:
    SimulatedState &m_state;
    SimulatedLoader m_loader;
    SimulatedAccessibility m_accessibility;
    SimulatedQuartz m_quartz;
    SimulatedWorkspace m_workspace;
    SimulatedHotKeys m_hotKeys;
    Application m_application;
    SimulatedOwnWindows m_ownWindows;
};

} // namespace tovel
