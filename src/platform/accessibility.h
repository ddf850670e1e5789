#pragma once

#include <QString>
#include <QVariant>

#include <cstdint>
#include <memory>

namespace tovel {

// Status of an accessibility call. Callers tell success from failure and nothing finer.
enum AXError : std::int32_t {
    kAXErrorSuccess = 0,
    kAXErrorFailure = -25200,
    kAXErrorIllegalArgument = -25201,
    kAXErrorInvalidUIElement = -25202,
    kAXErrorCannotComplete = -25204,
    kAXErrorAttributeUnsupported = -25205,
    kAXErrorActionUnsupported = -25206,
    kAXErrorAPIDisabled = -25211,
    kAXErrorNoValue = -25212,
};

// An application or a window as assistive programs see it. Opaque: only the backend that made an
// element can read it, and an element of another backend is answered kAXErrorInvalidUIElement.
// An element may outlive what it stands for; every call on it then fails.
class AXUIElement
{
public:
    virtual ~AXUIElement() = default;
};

// Shared ownership stands for the platform's retain and release. May be null.
using AXUIElementRef = std::shared_ptr<const AXUIElement>;

struct AXAttributeValue
{
    AXError error = kAXErrorFailure;
    QVariant value; // meaningful only on success
};

struct AXProcessIdentifier
{
    AXError error = kAXErrorFailure;
    std::int32_t pid = 0; // meaningful only on success
};

// Key of the options dictionary of AXIsProcessTrustedWithOptions; its value is a boolean.
inline constexpr char16_t kAXTrustedCheckOptionPrompt[] = u"AXTrustedCheckOptionPrompt";

// The accessibility interface. No call fails other than by its result; null elements are answered
// kAXErrorIllegalArgument.
class Accessibility
{
public:
    virtual ~Accessibility() = default;

    // Whether this process may look at and act on the windows of others, now. On a session where
    // that is the window manager's to grant: whether a manager that can do it is running.
    virtual bool AXIsProcessTrusted() const = 0;

    // The same answer; with kAXTrustedCheckOptionPrompt true, asks the user for trust when there
    // is none, where the session has something to ask with. Never waits for the user.
    virtual bool AXIsProcessTrustedWithOptions(const QVariantMap &options) = 0;

    // The element of an application. Never null; of a process that is not there, an element whose
    // every attribute fails.
    virtual AXUIElementRef AXUIElementCreateApplication(std::int32_t pid) = 0;

    virtual AXProcessIdentifier AXUIElementGetPid(const AXUIElementRef &element) const = 0;

    // Attributes answered for an application: "AXWindows" (list of elements), "AXMainWindow" and
    // "AXFocusedWindow" (an element). For a window: "AXSubrole" and "AXTitle" (text),
    // "AXMinimized" and "AXFullScreen" (boolean). Elements travel as variants of AXUIElementRef.
    // Any other name: kAXErrorAttributeUnsupported; an attribute without a value: kAXErrorNoValue.
    virtual AXAttributeValue AXUIElementCopyAttributeValue(const AXUIElementRef &element,
                                                           const QString &attribute) const = 0;

    // Windows take "AXMain" true: the window that the next activation of its application brings
    // to the front. Anything else: kAXErrorAttributeUnsupported.
    virtual AXError AXUIElementSetAttributeValue(const AXUIElementRef &element,
                                                 const QString &attribute, const QVariant &value)
        = 0;

    // Windows take "AXRaise". Anything else: kAXErrorActionUnsupported.
    virtual AXError AXUIElementPerformAction(const AXUIElementRef &element, const QString &action)
        = 0;

    // Bounds every later call on the element, in seconds. Where calls on elements never wait for
    // another program, accepted without effect.
    virtual AXError AXUIElementSetMessagingTimeout(const AXUIElementRef &element, float seconds)
        = 0;
};

} // namespace tovel

Q_DECLARE_METATYPE(tovel::AXUIElementRef)
