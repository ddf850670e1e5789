#pragma once

#include "platform/accessibility.h"
#include "platform/linux/applications/session_applications.h"

#include <QHash>

namespace tovel {

// Accessibility over a desktop session: what assistive programs could ask of applications is
// answered from what the session says of their windows, so no call waits for an application.
class LinuxAccessibility final : public Accessibility
{
public:
    // Borrows; null where there is no session, and every call then fails or denies.
    explicit LinuxAccessibility(SessionApplications *applications);

    bool AXIsProcessTrusted() const override;
    // A session has nothing to prompt with: trust comes with a capable window manager.
    bool AXIsProcessTrustedWithOptions(const QVariantMap &options) override;
    AXUIElementRef AXUIElementCreateApplication(std::int32_t pid) override;
    AXProcessIdentifier AXUIElementGetPid(const AXUIElementRef &element) const override;
    AXAttributeValue AXUIElementCopyAttributeValue(const AXUIElementRef &element,
                                                   const QString &attribute) const override;
    AXError AXUIElementSetAttributeValue(const AXUIElementRef &element, const QString &attribute,
                                         const QVariant &value) override;
    AXError AXUIElementPerformAction(const AXUIElementRef &element, const QString &action) override;
    AXError AXUIElementSetMessagingTimeout(const AXUIElementRef &element, float seconds) override;

    // The window number behind a window's element, while that window is there and its
    // application's.
    AXError windowOf(const AXUIElementRef &element, std::uint32_t *window) const;

private:
    AXUIElementRef elementFor(std::uint32_t window) const;
    AXAttributeValue applicationAttribute(std::int32_t pid, const QString &attribute) const;
    AXAttributeValue windowAttribute(std::uint32_t window, const QString &attribute) const;

    SessionApplications *m_applications;
    // One element per window of an application for as long as anybody holds it, so that equal means
    // the same.
    mutable QHash<std::uint32_t, std::weak_ptr<const AXUIElement>> m_elements;
};

} // namespace tovel
