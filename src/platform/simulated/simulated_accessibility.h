#pragma once

#include "platform/accessibility.h"

#include <QByteArray>

namespace tovel {

struct SimulatedState;
struct SimWindow;

class SimulatedAccessibility final : public Accessibility
{
public:
    explicit SimulatedAccessibility(SimulatedState &state);

    bool AXIsProcessTrusted() const override;
    bool AXIsProcessTrustedWithOptions(const QVariantMap &options) override;
    AXUIElementRef AXUIElementCreateApplication(std::int32_t pid) override;
    AXProcessIdentifier AXUIElementGetPid(const AXUIElementRef &element) const override;
    AXAttributeValue AXUIElementCopyAttributeValue(const AXUIElementRef &element,
                                                   const QString &attribute) const override;
    AXError AXUIElementSetAttributeValue(const AXUIElementRef &element, const QString &attribute,
                                         const QVariant &value) override;
    AXError AXUIElementPerformAction(const AXUIElementRef &element, const QString &action) override;
    AXError AXUIElementSetMessagingTimeout(const AXUIElementRef &element, float seconds) override;

private:
    SimulatedState &m_state;
};

// The window that an element of this desktop stands for; null when there is none (any more).
SimWindow *simulatedWindow(SimulatedState &state, const AXUIElementRef &element);

// The window element that a remote token names, or null. Records the probe and takes its time.
// A token is 20 bytes, little-endian: process (32 bits), 0 (32 bits), 0x636F636F (32 bits),
// element id (64 bits).
AXUIElementRef elementOfRemoteToken(SimulatedState &state, const QByteArray &token);

} // namespace tovel
