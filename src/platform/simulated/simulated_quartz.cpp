#include "platform/simulated/simulated_quartz.h"

#include "platform/simulated/simulated_state.h"

#include <algorithm>

namespace tovel {

namespace {

QVariantMap informationOn(const SimWindow &window)
{
    const QVariantMap bounds{{QStringLiteral("X"), window.frame.x()},
                             {QStringLiteral("Y"), window.frame.y()},
                             {QStringLiteral("Width"), window.frame.width()},
                             {QStringLiteral("Height"), window.frame.height()}};
    return {{QString::fromUtf16(kCGWindowNumber), QVariant::fromValue<uint>(window.number)},
            {QString::fromUtf16(kCGWindowOwnerPID), window.pid},
            {QString::fromUtf16(kCGWindowLayer), window.layer},
            {QString::fromUtf16(kCGWindowBounds), bounds}};
}

} // namespace

SimulatedQuartz::SimulatedQuartz(SimulatedState &state)
    : m_state(state)
{ }

std::optional<QVariantList> SimulatedQuartz::CGWindowListCopyWindowInfo(CGWindowListOption option,
                                                                        std::uint32_t relativeTo)
{
    m_state.count("CGWindowListCopyWindowInfo");
    const bool onlyOne = option & kCGWindowListOptionIncludingWindow;
    QVariantList information;
    for (const SimWindow &window : m_state.world.windows) {
        if (!onlyOne || window.number == relativeTo)
            information.append(informationOn(window));
    }
    return m_state.altered("CGWindowListCopyWindowInfo", information);
}

std::optional<CGEventSource> SimulatedQuartz::CGEventSourceCreate(CGEventSourceStateID state)
{
    if (m_state.world.eventSourceFails)
        return std::nullopt;
    return CGEventSource{state};
}

std::optional<CGEvent> SimulatedQuartz::CGEventCreateKeyboardEvent(const CGEventSource &,
                                                                   std::uint16_t virtualKey,
                                                                   bool keyDown)
{
    if (keyDown ? m_state.world.keyDownEventFails : m_state.world.keyUpEventFails)
        return std::nullopt;
    return CGEvent{.isKeyboard = true,
                   .virtualKey = virtualKey,
                   .keyDown = keyDown,
                   .flags = 0,
                   .location = m_state.world.cursor};
}

std::optional<CGEvent> SimulatedQuartz::CGEventCreate()
{
    if (m_state.world.emptyEventFails)
        return std::nullopt;
    CGEvent event;
    event.location = m_state.world.cursor;
    return event;
}

void SimulatedQuartz::CGEventPost(CGEventTapLocation tap, const CGEvent &event)
{
    m_state.note(QStringLiteral("post %1 %2 %3 %4")
                     .arg(tap)
                     .arg(event.keyDown ? QStringLiteral("down") : QStringLiteral("up"))
                     .arg(event.virtualKey)
                     .arg(event.flags, 0, 16));
    const bool isStep = event.isKeyboard && event.keyDown && tap == kCGHIDEventTap
        && (event.flags & kCGEventFlagMaskControl)
        && (event.virtualKey == kVK_LeftArrow || event.virtualKey == kVK_RightArrow);
    if (!isStep || !m_state.world.stepsEnabled || !m_state.world.trusted)
        return;
    const auto under = std::ranges::find_if(m_state.world.displays, [this](const auto &display) {
        return display.bounds.contains(m_state.world.cursor);
    });
    if (under == m_state.world.displays.end())
        return;
    const bool toRight = event.virtualKey == kVK_RightArrow;
    m_state.after(m_state.world.stepDelay,
                  [state = &m_state, identifier = under->identifier, toRight] {
                      state->step(identifier, toRight);
                  });
}

void SimulatedQuartz::CGWarpMouseCursorPosition(QPointF position)
{
    m_state.world.cursor = position;
    m_state.note(QStringLiteral("warp %1 %2").arg(qRound(position.x())).arg(qRound(position.y())));
}

QRectF SimulatedQuartz::CGDisplayBounds(std::uint32_t number) const
{
    const SimDisplay *display = m_state.displayNumbered(number);
    return display ? display->bounds : QRectF();
}

bool SimulatedQuartz::CGDisplayIsBuiltin(std::uint32_t number) const
{
    const SimDisplay *display = m_state.displayNumbered(number);
    return display && display->builtIn;
}

std::optional<QString> SimulatedQuartz::CGDisplayCreateUUIDFromDisplayID(std::uint32_t number) const
{
    const SimDisplay *display = m_state.displayNumbered(number);
    if (!display)
        return std::nullopt;
    return display->uuid.isEmpty() ? display->identifier : display->uuid;
}

} // namespace tovel
