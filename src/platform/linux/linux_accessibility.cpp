#include "platform/linux/linux_accessibility.h"

#include "platform/variants.h"

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

struct ApplicationElement final : AXUIElement
{
    explicit ApplicationElement(std::int32_t process)
        : pid(process)
    { }

    std::int32_t pid;
};

struct WindowElement final : AXUIElement
{
    WindowElement(std::uint32_t number, SessionApplicationRef application)
        : window(number)
        , owner(std::move(application))
    { }

    std::uint32_t window;
    SessionApplicationRef owner;
};

const WindowElement *asWindow(const AXUIElementRef &element)
{
    return dynamic_cast<const WindowElement *>(element.get());
}

AXAttributeValue failure(AXError error) { return {error, QVariant()}; }

AXAttributeValue success(const QVariant &value) { return {kAXErrorSuccess, value}; }

QString subrole(WindowKind kind)
{
    switch (kind) {
    case WindowKind::Standard:
        return u"AXStandardWindow"_s;
    case WindowKind::Dialog:
        return u"AXDialog"_s;
    case WindowKind::Desktop:
    case WindowKind::Dock:
    case WindowKind::Overlay:
        break;
    }
    return u"AXUnknown"_s;
}

} // namespace

LinuxAccessibility::LinuxAccessibility(SessionApplications *applications)
    : m_applications(applications)
{ }

bool LinuxAccessibility::AXIsProcessTrusted() const
{
    return m_applications && m_applications->session().isControllable();
}

bool LinuxAccessibility::AXIsProcessTrustedWithOptions(const QVariantMap &)
{
    return AXIsProcessTrusted();
}

AXUIElementRef LinuxAccessibility::AXUIElementCreateApplication(std::int32_t pid)
{
    return std::make_shared<ApplicationElement>(pid);
}

AXProcessIdentifier LinuxAccessibility::AXUIElementGetPid(const AXUIElementRef &element) const
{
    if (!element)
        return {kAXErrorIllegalArgument};
    if (const auto *application = dynamic_cast<const ApplicationElement *>(element.get())) {
        if (!m_applications || !m_applications->withProcess(application->pid))
            return {kAXErrorInvalidUIElement};
        return {kAXErrorSuccess, application->pid};
    }
    std::uint32_t window = 0;
    const AXError error = windowOf(element, &window);
    if (error != kAXErrorSuccess)
        return {error};
    return {kAXErrorSuccess, m_applications->ownerOf(window)->processIdentifier()};
}

AXAttributeValue LinuxAccessibility::AXUIElementCopyAttributeValue(const AXUIElementRef &element,
                                                                   const QString &attribute) const
{
    if (!element)
        return failure(kAXErrorIllegalArgument);
    if (const auto *application = dynamic_cast<const ApplicationElement *>(element.get()))
        return applicationAttribute(application->pid, attribute);
    std::uint32_t window = 0;
    const AXError error = windowOf(element, &window);
    return error == kAXErrorSuccess ? windowAttribute(window, attribute) : failure(error);
}

AXAttributeValue LinuxAccessibility::applicationAttribute(std::int32_t pid,
                                                          const QString &attribute) const
{
    const auto application = m_applications ? m_applications->withProcess(pid) : nullptr;
    if (!application)
        return failure(kAXErrorCannotComplete);
    const auto element = [this](std::uint32_t window) {
        return window ? success(QVariant::fromValue(elementFor(window))) : failure(kAXErrorNoValue);
    };
    if (attribute == "AXWindows"_L1) {
        QVariantList elements;
        for (const std::uint32_t window : application->windows())
            elements.append(QVariant::fromValue(elementFor(window)));
        return success(elements);
    }
    if (attribute == "AXMainWindow"_L1)
        return element(m_applications->frontmostWindow(*application));
    if (attribute == "AXFocusedWindow"_L1) {
        const std::uint32_t active = m_applications->session().activeWindow();
        return element(application->windows().contains(active) ? active : 0);
    }
    return failure(kAXErrorAttributeUnsupported);
}

AXAttributeValue LinuxAccessibility::windowAttribute(std::uint32_t id,
                                                     const QString &attribute) const
{
    const SessionWindow &window = *m_applications->window(id);
    if (attribute == "AXSubrole"_L1)
        return success(subrole(window.kind));
    if (attribute == "AXTitle"_L1)
        return window.title ? success(*window.title) : failure(kAXErrorNoValue);
    if (attribute == "AXMinimized"_L1)
        return success(window.minimized);
    if (attribute == "AXFullScreen"_L1)
        return success(window.fullScreen);
    return failure(kAXErrorAttributeUnsupported);
}

AXError LinuxAccessibility::AXUIElementSetAttributeValue(const AXUIElementRef &element,
                                                         const QString &attribute,
                                                         const QVariant &value)
{
    std::uint32_t window = 0;
    if (const AXError error = windowOf(element, &window); error != kAXErrorSuccess)
        return error;
    if (attribute != "AXMain"_L1 || boolean(value) != true)
        return kAXErrorAttributeUnsupported;
    m_applications->ownerOf(window)->setMainWindow(window);
    return kAXErrorSuccess;
}

AXError LinuxAccessibility::AXUIElementPerformAction(const AXUIElementRef &element,
                                                     const QString &action)
{
    std::uint32_t window = 0;
    if (const AXError error = windowOf(element, &window); error != kAXErrorSuccess)
        return error;
    if (action != "AXRaise"_L1)
        return kAXErrorActionUnsupported;
    return m_applications->session().raiseWindow(window) ? kAXErrorSuccess : kAXErrorCannotComplete;
}

AXError LinuxAccessibility::AXUIElementSetMessagingTimeout(const AXUIElementRef &element, float)
{
    return element ? kAXErrorSuccess : kAXErrorIllegalArgument;
}

AXError LinuxAccessibility::windowOf(const AXUIElementRef &element, std::uint32_t *window) const
{
    if (!element)
        return kAXErrorIllegalArgument;
    const WindowElement *windowElement = asWindow(element);
    if (!windowElement || !m_applications)
        return kAXErrorInvalidUIElement;
    // The number may have become that of another's window, or the window another application's.
    const SessionApplicationRef owner = m_applications->ownerOf(windowElement->window);
    if (!owner || owner != windowElement->owner)
        return kAXErrorInvalidUIElement;
    *window = windowElement->window;
    return kAXErrorSuccess;
}

AXUIElementRef LinuxAccessibility::elementFor(std::uint32_t window) const
{
    const SessionApplicationRef owner = m_applications->ownerOf(window);
    const auto held = m_elements.value(window).lock();
    if (held && asWindow(held)->owner == owner)
        return held;
    m_elements.removeIf([](const auto &entry) { return entry.value().expired(); });
    const auto element = std::make_shared<WindowElement>(window, owner);
    m_elements.insert(window, element);
    return element;
}

} // namespace tovel
