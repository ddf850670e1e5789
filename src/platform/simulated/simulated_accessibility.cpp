#include "platform/simulated/simulated_accessibility.h"

#include "platform/simulated/simulated_state.h"

#include <QtEndian>

#include <algorithm>

namespace tovel {

namespace {

class SimElement final : public AXUIElement
{
public:
    SimElement(std::uint64_t ofDesktop, std::int32_t ofPid, std::uint32_t ofWindow,
               std::uint64_t withSerial)
        : desktop(ofDesktop)
        , pid(ofPid)
        , window(ofWindow)
        , serial(withSerial)
    { }

    const std::uint64_t desktop;
    const std::int32_t pid;
    const std::uint32_t window; // 0 for the application itself
    const std::uint64_t serial;
};

AXUIElementRef elementOf(const SimulatedState &state, const SimWindow &window)
{
    return std::make_shared<SimElement>(state.identity, window.pid, window.number,
                                        state.windowSerials.value(window.number));
}

// What an element stands for at the moment; both null when it is gone or another desktop's.
struct Subject
{
    std::shared_ptr<SimRunningApplication> application{};
    SimWindow *window = nullptr;
    AXError error = kAXErrorInvalidUIElement;
};

Subject subjectOf(SimulatedState &state, const AXUIElementRef &reference)
{
    if (!reference)
        return {.error = kAXErrorIllegalArgument};
    const auto *element = dynamic_cast<const SimElement *>(reference.get());
    if (!element || element->desktop != state.identity)
        return {};
    if (element->window == 0) {
        auto application = state.findApplication(element->pid);
        const auto error = application ? kAXErrorSuccess : kAXErrorInvalidUIElement;
        return {.application = std::move(application), .error = error};
    }
    SimWindow *window = state.findWindow(element->window);
    if (!window || state.windowSerials.value(element->window) != element->serial)
        return {};
    return {.window = window, .error = kAXErrorSuccess};
}

AXAttributeValue answer(const QVariant &value) { return {kAXErrorSuccess, value}; }

AXAttributeValue answer(const std::optional<QString> &text)
{
    return text ? answer(QVariant(*text)) : AXAttributeValue{kAXErrorNoValue, {}};
}

AXAttributeValue windowAttribute(const SimWindow &window, const QString &attribute)
{
    if (const auto replaced = window.attributes.constFind(attribute);
        replaced != window.attributes.constEnd())
        return *replaced;
    if (attribute == u"AXSubrole")
        return answer(window.subrole);
    if (attribute == u"AXTitle")
        return answer(window.title);
    if (attribute == u"AXMinimized")
        return answer(QVariant(window.minimized));
    if (attribute == u"AXFullScreen")
        return answer(QVariant(window.fullScreen));
    return {kAXErrorAttributeUnsupported, {}};
}

AXAttributeValue windowNumbered(SimulatedState &state, std::optional<std::uint32_t> number)
{
    const SimWindow *window = number ? state.findWindow(*number) : nullptr;
    if (!window)
        return {kAXErrorNoValue, {}};
    return answer(QVariant::fromValue(elementOf(state, *window)));
}

AXAttributeValue applicationAttribute(SimulatedState &state, const SimApplication &application,
                                      const QString &attribute)
{
    if (const auto replaced = application.attributes.constFind(attribute);
        replaced != application.attributes.constEnd())
        return *replaced;
    if (attribute == u"AXMainWindow")
        return windowNumbered(state, application.mainWindow);
    if (attribute == u"AXFocusedWindow")
        return windowNumbered(state, application.focusedWindow);
    if (attribute != u"AXWindows")
        return {kAXErrorAttributeUnsupported, {}};
    QVariantList elements;
    for (const SimWindow &window : state.world.windows) {
        if (window.pid == application.pid && window.listed)
            elements.append(QVariant::fromValue(elementOf(state, window)));
    }
    return answer(QVariant(elements));
}

} // namespace

SimulatedAccessibility::SimulatedAccessibility(SimulatedState &state)
    : m_state(state)
{ }

bool SimulatedAccessibility::AXIsProcessTrusted() const { return m_state.world.trusted; }

bool SimulatedAccessibility::AXIsProcessTrustedWithOptions(const QVariantMap &options)
{
    const bool prompt
        = boolean(options.value(QString::fromUtf16(kAXTrustedCheckOptionPrompt))).value_or(false);
    if (prompt && !m_state.world.trusted)
        m_state.note(QStringLiteral("prompt"));
    return m_state.world.trusted;
}

AXUIElementRef SimulatedAccessibility::AXUIElementCreateApplication(std::int32_t pid)
{
    return std::make_shared<SimElement>(m_state.identity, pid, 0, 0);
}

AXProcessIdentifier SimulatedAccessibility::AXUIElementGetPid(const AXUIElementRef &element) const
{
    const Subject subject = subjectOf(m_state, element);
    if (subject.error != kAXErrorSuccess)
        return {subject.error, 0};
    if (subject.application)
        return {kAXErrorSuccess, subject.application->record.pid};
    return subject.window->elementPid.value_or(
        AXProcessIdentifier{kAXErrorSuccess, subject.window->pid});
}

AXAttributeValue SimulatedAccessibility::AXUIElementCopyAttributeValue(
    const AXUIElementRef &element, const QString &attribute) const
{
    const Subject subject = subjectOf(m_state, element);
    if (subject.error != kAXErrorSuccess)
        return {subject.error, {}};
    if (!m_state.world.trusted)
        return {kAXErrorAPIDisabled, {}};
    if (subject.application)
        return applicationAttribute(m_state, subject.application->record, attribute);
    return windowAttribute(*subject.window, attribute);
}

AXError SimulatedAccessibility::AXUIElementSetAttributeValue(const AXUIElementRef &element,
                                                             const QString &attribute,
                                                             const QVariant &value)
{
    const Subject subject = subjectOf(m_state, element);
    if (subject.error != kAXErrorSuccess)
        return subject.error;
    if (!m_state.world.trusted)
        return kAXErrorAPIDisabled;
    if (!subject.window || attribute != u"AXMain" || boolean(value) != true)
        return kAXErrorAttributeUnsupported;
    const auto application = m_state.findApplication(subject.window->pid);
    if (!application)
        return kAXErrorCannotComplete;
    application->record.mainWindow = subject.window->number;
    m_state.note(QStringLiteral("AXMain %1").arg(subject.window->number));
    return kAXErrorSuccess;
}

AXError SimulatedAccessibility::AXUIElementPerformAction(const AXUIElementRef &element,
                                                         const QString &action)
{
    const Subject subject = subjectOf(m_state, element);
    if (subject.error != kAXErrorSuccess)
        return subject.error;
    if (!m_state.world.trusted)
        return kAXErrorAPIDisabled;
    if (!subject.window || action != u"AXRaise")
        return kAXErrorActionUnsupported;
    m_state.raiseWindow(subject.window->number);
    m_state.note(QStringLiteral("AXRaise %1").arg(subject.window->number));
    return kAXErrorSuccess;
}

AXError SimulatedAccessibility::AXUIElementSetMessagingTimeout(const AXUIElementRef &element,
                                                               float seconds)
{
    const Subject subject = subjectOf(m_state, element);
    if (subject.error != kAXErrorSuccess)
        return subject.error;
    if (seconds < 0)
        return kAXErrorIllegalArgument;
    if (m_state.recording) {
        if (subject.window)
            m_state.timeouts.append({subject.window->pid, subject.window->number, seconds});
        else
            m_state.timeouts.append({subject.application->record.pid, 0, seconds});
    }
    return kAXErrorSuccess;
}

SimWindow *simulatedWindow(SimulatedState &state, const AXUIElementRef &element)
{
    return subjectOf(state, element).window;
}

AXUIElementRef elementOfRemoteToken(SimulatedState &state, const QByteArray &token)
{
    constexpr qsizetype tokenSize = 20;
    constexpr std::uint32_t tokenMagic = 0x636F636F;
    if (state.virtualClock)
        state.virtualClock->advanceWallClock(state.world.probeCost);
    const char *bytes = token.constData();
    if (token.size() != tokenSize || qFromLittleEndian<std::uint32_t>(bytes + 4) != 0
        || qFromLittleEndian<std::uint32_t>(bytes + 8) != tokenMagic)
        return nullptr;
    const auto pid = qFromLittleEndian<std::int32_t>(bytes);
    const auto id = qFromLittleEndian<std::uint64_t>(bytes + 12);
    if (state.recording)
        state.probes.append({pid, id});
    const auto found
        = std::ranges::find_if(state.world.windows, [pid, id](const SimWindow &window) {
              return window.pid == pid && window.remoteElement == id;
          });
    return found == state.world.windows.end() ? nullptr : elementOf(state, *found);
}

} // namespace tovel
