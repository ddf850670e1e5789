#include "bridge/binding.h"
#include "bridge/bridge.h"
#include "platform/platform.h"
#include "platform/quartz.h"
#include "platform/variants.h"
#include "platform/workspace.h"

#include <QSet>

namespace tovel {

namespace {

constexpr std::int32_t allSpacesMask = 7;
constexpr std::uint32_t allWindows = 7;
constexpr std::uint32_t withoutMinimized = 2;
constexpr double smallestSide = 32;

QVariantList spaceIDs()
{
    QVariantList ids;
    for (const QVariant &display : TDisplays()) {
        const QVariantMap entry = dictionary(display).value_or(QVariantMap());
        const QVariant spaces = entry.value(QStringLiteral("Spaces"));
        for (const QVariant &space : array(spaces).value_or(QVariantList())) {
            const QVariantMap fields = dictionary(space).value_or(QVariantMap());
            const QVariant id = fields.value(QStringLiteral("ManagedSpaceID"));
            if (isNumber(id))
                ids.append(id);
        }
    }
    return ids;
}

std::optional<QSet<quint64>> windowsOnSpaces(const Binding &binding, std::int32_t connection,
                                             const QVariantList &spaces, std::uint32_t options)
{
    std::uint64_t setTags = 0;
    std::uint64_t clearTags = 0;
    const auto list = binding.windowsWithTags(connection, 0, spaces, options, &setTags, &clearTags);
    if (!list)
        return std::nullopt;
    QSet<quint64> numbers;
    for (const QVariant &item : *list) {
        if (const auto number = unsignedNumber(item))
            numbers.insert(*number);
    }
    return numbers;
}

QVariant field(const QVariantMap &map, QStringView key) { return map.value(key.toString()); }

bool belongsToHiddenApplication(const QVariant &pid)
{
    const auto number = signedNumber(pid).value_or(0);
    const auto application = currentPlatform().workspace().runningApplicationWithProcessIdentifier(
        static_cast<std::int32_t>(number));
    return application && application->isHidden();
}

bool isOrderedOut(const Binding &binding, std::int32_t connection, quint64 window)
{
    std::uint8_t orderedIn = 0;
    const std::int32_t error
        = binding.isOrderedIn(connection, static_cast<std::uint32_t>(window), &orderedIn);
    return error == 0 && !orderedIn;
}

bool isLargeEnough(const QVariant &bounds)
{
    const QVariantMap size = dictionary(bounds).value_or(QVariantMap());
    const double width = realNumber(size.value(QStringLiteral("Width"))).value_or(0);
    const double height = realNumber(size.value(QStringLiteral("Height"))).value_or(0);
    return !(width < smallestSide) && !(height < smallestSide);
}

} // namespace

QVariantList TDisplays()
{
    const Binding binding = load();
    if (!binding.connection || !binding.displays)
        return {};
    return binding.displays(binding.connection()).value_or(QVariantList());
}

QVariantList TWindowSpaces(std::uint32_t window)
{
    const Binding binding = load();
    if (!binding.connection || !binding.spaces)
        return {};
    const QVariantList windows{QVariant::fromValue<uint>(window)};
    return binding.spaces(binding.connection(), allSpacesMask, windows).value_or(QVariantList());
}

bool TWindowIsOrderedOut(std::uint32_t window)
{
    const Binding binding = load();
    std::uint8_t orderedIn = 1;
    if (!binding.connection || !binding.isOrderedIn
        || binding.isOrderedIn(binding.connection(), window, &orderedIn) != 0)
        return false;
    return !orderedIn;
}

QVariantList TWindowInventory()
{
    const Binding binding = load();
    if (!binding.connection || !binding.windowsWithTags)
        return {};
    const QVariantList spaces = spaceIDs();
    const std::int32_t connection = binding.connection();
    const auto all = windowsOnSpaces(binding, connection, spaces, allWindows);
    const auto shown = windowsOnSpaces(binding, connection, spaces, withoutMinimized);
    if (!all || !shown)
        return {};
    const auto information = currentPlatform().quartz().CGWindowListCopyWindowInfo(
        kCGWindowListExcludeDesktopElements, 0);
    if (!information)
        return {};

    QVariantList inventory;
    for (const QVariant &item : *information) {
        const QVariantMap window = dictionary(item).value_or(QVariantMap());
        const QVariant id = field(window, kCGWindowNumber);
        const QVariant pid = field(window, kCGWindowOwnerPID);
        const auto number = unsignedNumber(id);
        if (!number || !isNumber(pid))
            continue;
        if (binding.isOrderedIn && isOrderedOut(binding, connection, *number)
            && !belongsToHiddenApplication(pid))
            continue;
        if (signedNumber(field(window, kCGWindowLayer)) != 0)
            continue;
        if (!all->contains(*number) || !isLargeEnough(field(window, kCGWindowBounds)))
            continue;
        inventory.append(QVariantMap{
            {QStringLiteral("id"), id},
            {QStringLiteral("pid"), pid},
            {QStringLiteral("minimized"), shown->contains(*number) ? 0 : 1},
        });
    }
    return inventory;
}

} // namespace tovel
