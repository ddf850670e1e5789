#include "app/self_test/observations.h"

#include "bridge/bridge.h"
#include "platform/platform.h"
#include "platform/quartz.h"
#include "platform/variants.h"

namespace tovel {

using namespace Qt::StringLiterals;

std::optional<Desktop> firstShown(const QList<Desktop> &desktops)
{
    for (const Desktop &desktop : desktops) {
        if (desktop.current)
            return desktop;
    }
    return std::nullopt;
}

QList<Desktop> othersOnDisplay(const QList<Desktop> &desktops,
                               const std::optional<Desktop> &desktop)
{
    QList<Desktop> others;
    for (const Desktop &other : desktops) {
        if (desktop && other.display == desktop->display && other.id != desktop->id)
            others.append(other);
    }
    return others;
}

std::optional<QVariantMap> windowBounds(Platform &platform, std::uint32_t window)
{
    const auto windows
        = platform.quartz().CGWindowListCopyWindowInfo(kCGWindowListOptionIncludingWindow, window);
    if (!windows || windows->isEmpty())
        return std::nullopt;
    const auto information = dictionary(windows->first());
    return information ? dictionary(information->value(QString::fromUtf16(kCGWindowBounds)))
                       : std::nullopt;
}

AXUIElementRef listedWindow(Platform &platform, std::int32_t pid, std::uint32_t window)
{
    const AXUIElementRef application = platform.accessibility().AXUIElementCreateApplication(pid);
    const auto elements = array(attribute(application, u"AXWindows"_s).value_or(QVariant()));
    for (const QVariant &entry : elements.value_or(QVariantList())) {
        const auto element = entry.value<AXUIElementRef>();
        if (TWindowID(element) == window)
            return element;
    }
    return nullptr;
}

} // namespace tovel
