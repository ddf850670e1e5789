#include "platform/linux/linux_quartz.h"

#include <QUuid>

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

// Names the namespace of the UUIDs that stand for screens.
constexpr QUuid ScreenNamespace{0x2f6d1f0a, 0x8c0e, 0x4c53, 0x9b, 0x5e, 0x4f,
                                0x11,       0x7a,   0x6e,   0x90, 0x35};

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
    auto event = CGEventCreate();
    if (event) {
        event->isKeyboard = true;
        event->virtualKey = virtualKey;
        event->keyDown = keyDown;
    }
    return event;
}

std::optional<CGEvent> LinuxQuartz::CGEventCreate()
{
    const auto cursor = m_applications ? m_applications->session().cursorPosition() : std::nullopt;
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

// A session of several outputs would step the one under the cursor; one row has no such choice.
void LinuxQuartz::step(int towards)
{
    DesktopSession &session = m_applications->session();
    const auto outputs = session.outputs();
    if (outputs.isEmpty())
        return;
    const SessionOutput &output = outputs.first();
    for (qsizetype i = 0; i < output.workspaces.size(); ++i) {
        if (output.workspaces[i].id != output.shown)
            continue;
        const qsizetype next = i + towards;
        if (next >= 0 && next < output.workspaces.size())
            session.showWorkspace(output.workspaces[next].id);
        return;
    }
}

void LinuxQuartz::CGWarpMouseCursorPosition(QPointF position)
{
    if (m_applications)
        m_applications->session().moveCursor(position);
}

QRectF LinuxQuartz::CGDisplayBounds(std::uint32_t display) const
{
    const auto found = screen(display);
    return found ? found->bounds : QRectF();
}

bool LinuxQuartz::CGDisplayIsBuiltin(std::uint32_t display) const
{
    const auto found = screen(display);
    return found && found->builtIn;
}

std::optional<QString> LinuxQuartz::CGDisplayCreateUUIDFromDisplayID(std::uint32_t display) const
{
    const auto found = screen(display);
    if (!found)
        return std::nullopt;
    return QUuid::createUuidV5(ScreenNamespace, found->name)
        .toString(QUuid::WithoutBraces)
        .toUpper();
}

std::optional<SessionScreen> LinuxQuartz::screen(std::uint32_t display) const
{
    if (!m_applications)
        return std::nullopt;
    for (const SessionScreen &screen : m_applications->session().screens()) {
        if (screen.number == display)
            return screen;
    }
    return std::nullopt;
}

} // namespace tovel
