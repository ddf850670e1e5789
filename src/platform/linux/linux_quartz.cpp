#include "platform/linux/linux_quartz.h"

#include "platform/linux/displays.h"

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

int layerOf(WindowKind kind)
{
    switch (kind) {
    case WindowKind::Standard:
    case WindowKind::Dialog:
        return 0;
    case WindowKind::Desktop:
        return -20;
    case WindowKind::Dock:
        return 20;
    case WindowKind::Overlay:
        break;
    }
    return 101;
}

QVariantMap information(const SessionWindow &window, std::int32_t owner)
{
    const QVariantMap bounds{{u"X"_s, window.frame.x()},
                             {u"Y"_s, window.frame.y()},
                             {u"Width"_s, window.frame.width()},
                             {u"Height"_s, window.frame.height()}};
    return {{QString::fromUtf16(kCGWindowNumber), uint(window.id)},
            {QString::fromUtf16(kCGWindowOwnerPID), int(owner)},
            {QString::fromUtf16(kCGWindowLayer), layerOf(window.kind)},
            {QString::fromUtf16(kCGWindowBounds), bounds}};
}

// Left of and above every display.
QPointF nowhere(const QList<SessionScreen> &displays)
{
    QRectF all;
    for (const SessionScreen &display : displays)
        all |= display.bounds;
    return all.topLeft() - QPointF(1, 1);
}

} // namespace

LinuxQuartz::LinuxQuartz(SessionApplications *applications)
    : m_applications(applications)
{ }

std::optional<QVariantList> LinuxQuartz::CGWindowListCopyWindowInfo(CGWindowListOption option,
                                                                    std::uint32_t relativeTo)
{
    if (!m_applications)
        return std::nullopt;
    QList<std::uint32_t> ids{relativeTo};
    if (!(option & kCGWindowListOptionIncludingWindow))
        ids = m_applications->session().stackingOrder();
    QVariantList windows;
    for (const std::uint32_t id : std::as_const(ids)) {
        const SessionApplicationRef owner = m_applications->ownerOf(id);
        const SessionWindow *window = m_applications->window(id);
        if (!owner || !window)
            continue;
        const bool isBackground = window->kind == WindowKind::Desktop;
        if (!(isBackground && (option & kCGWindowListExcludeDesktopElements)))
            windows.append(information(*window, owner->processIdentifier()));
    }
    return windows;
}

std::optional<CGEventSource> LinuxQuartz::CGEventSourceCreate(CGEventSourceStateID state)
{
    if (!m_applications)
        return std::nullopt;
    return CGEventSource{state};
}

std::optional<CGEvent> LinuxQuartz::CGEventCreateKeyboardEvent(const CGEventSource &,
                                                               std::uint16_t virtualKey,
                                                               bool keyDown)
{
    if (!m_applications)
        return std::nullopt;
    CGEvent event;
    event.isKeyboard = true;
    event.virtualKey = virtualKey;
    event.keyDown = keyDown;
    return event;
}

std::optional<CGEvent> LinuxQuartz::CGEventCreate()
{
    if (!m_applications)
        return std::nullopt;
    DesktopSession &session = m_applications->session();
    std::optional<QPointF> cursor = session.cursorPosition();
    if (cursor)
        m_assumedCursor.reset();
    else if (session.capabilities().cursor == CursorAccess::Hidden && session.outputs().size() > 1)
        cursor = m_assumedCursor.value_or(nowhere(displaysOf(session)));
    if (!cursor)
        return std::nullopt;
    CGEvent event;
    event.location = *cursor;
    return event;
}

void LinuxQuartz::CGEventPost(CGEventTapLocation tap, const CGEvent &event)
{
    if (!m_applications || tap != kCGHIDEventTap || !event.isKeyboard || !event.keyDown)
        return;
    if (!(event.flags & kCGEventFlagMaskControl))
        return;
    if (event.virtualKey == kVK_RightArrow)
        step(1);
    else if (event.virtualKey == kVK_LeftArrow)
        step(-1);
}

void LinuxQuartz::step(int towards)
{
    const auto output = steppedOutput();
    if (!output)
        return;
    for (qsizetype i = 0; i < output->workspaces.size(); ++i) {
        if (output->workspaces[i].id != output->shown)
            continue;
        const qsizetype next = i + towards;
        if (next >= 0 && next < output->workspaces.size())
            m_applications->session().showWorkspace(output->workspaces[next].id);
        return;
    }
}

std::optional<SessionOutput> LinuxQuartz::steppedOutput() const
{
    DesktopSession &session = m_applications->session();
    const auto outputs = session.outputs();
    if (outputs.isEmpty())
        return std::nullopt;
    if (outputs.size() == 1)
        return outputs.first();
    const auto cursor = m_assumedCursor ? m_assumedCursor : session.cursorPosition();
    const auto display = cursor ? displayAt(*cursor, displaysOf(session)) : std::nullopt;
    for (const SessionOutput &output : outputs) {
        if (display && output.screen == display)
            return output;
    }
    return std::nullopt;
}

void LinuxQuartz::CGWarpMouseCursorPosition(QPointF position)
{
    if (!m_applications)
        return;
    m_assumedCursor.reset();
    if (m_applications->session().capabilities().cursor == CursorAccess::Movable)
        m_applications->session().moveCursor(position);
    else
        m_assumedCursor = position;
}

QRectF LinuxQuartz::CGDisplayBounds(std::uint32_t display) const
{
    const auto found = this->display(display);
    return found ? found->bounds : QRectF();
}

bool LinuxQuartz::CGDisplayIsBuiltin(std::uint32_t display) const
{
    const auto found = this->display(display);
    return found && found->builtIn;
}

std::optional<QString> LinuxQuartz::CGDisplayCreateUUIDFromDisplayID(std::uint32_t display) const
{
    const auto found = this->display(display);
    return found ? std::optional(displayUuid(*found)) : std::nullopt;
}

std::optional<SessionScreen> LinuxQuartz::display(std::uint32_t number) const
{
    if (!m_applications)
        return std::nullopt;
    for (const SessionScreen &display : displaysOf(m_applications->session())) {
        if (display.number == number)
            return display;
    }
    return std::nullopt;
}

} // namespace tovel
