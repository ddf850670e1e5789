#include "platform/linux/displays.h"

#include <QUuid>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

// Names the namespace of the UUIDs that stand for screens.
constexpr QUuid ScreenNamespace{0x2f6d1f0a, 0x8c0e, 0x4c53, 0x9b, 0x5e, 0x4f,
                                0x11,       0x7a,   0x6e,   0x90, 0x35};

bool holds(const QRectF &bounds, QPointF position)
{
    return position.x() >= bounds.left() && position.x() < bounds.right()
        && position.y() >= bounds.top() && position.y() < bounds.bottom();
}

} // namespace

QList<SessionScreen> displaysOf(DesktopSession &session)
{
    const QList<SessionScreen> screens = session.screens();
    const auto outputs = session.outputs();
    const bool isOneRow = std::any_of(outputs.cbegin(), outputs.cend(),
                                      [](const SessionOutput &output) { return !output.screen; });
    if (!isOneRow || screens.size() < 2)
        return screens;
    SessionScreen all{screens.first().number, u"All displays"_s};
    for (const SessionScreen &screen : screens)
        all.bounds |= screen.bounds;
    return {all};
}

QString displayUuid(const SessionScreen &display)
{
    return QUuid::createUuidV5(ScreenNamespace, display.name)
        .toString(QUuid::WithoutBraces)
        .toUpper();
}

QString displayIdentifier(const SessionOutput &output, const QList<SessionScreen> &displays)
{
    if (!output.screen || output.isLone)
        return u"Main"_s;
    for (const SessionScreen &display : displays) {
        if (display.number == *output.screen)
            return displayUuid(display);
    }
    return QUuid().toString(QUuid::WithoutBraces);
}

std::optional<std::uint32_t> displayAt(QPointF position, const QList<SessionScreen> &displays)
{
    for (const SessionScreen &display : displays) {
        if (holds(display.bounds, position))
            return display.number;
    }
    return std::nullopt;
}

} // namespace tovel
