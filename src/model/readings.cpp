#include "model/readings.h"

#include "bridge/bridge.h"
#include "platform/variants.h"

namespace tovel {

namespace {

ManagedDisplay readDisplay(const QVariantMap &display)
{
    ManagedDisplay result;
    result.identifier = text(display.value(QStringLiteral("Display Identifier")));
    if (const auto current = dictionary(display.value(QStringLiteral("Current Space"))))
        result.currentSpace = spaceID(*current);
    if (const auto spaces = array(display.value(QStringLiteral("Spaces"))))
        result.spaces = dictionaries(*spaces);
    return result;
}

} // namespace

QList<ManagedDisplay> readDisplays()
{
    QList<ManagedDisplay> result;
    for (const QVariantMap &display : dictionaries(TDisplays()).value_or(QList<QVariantMap>()))
        result.append(readDisplay(display));
    return result;
}

std::optional<std::uint64_t> spaceID(const QVariantMap &space)
{
    return unsignedNumber(space.value(QStringLiteral("ManagedSpaceID")));
}

QList<std::uint64_t> readWindowSpaces(std::uint32_t window)
{
    QList<std::uint64_t> result;
    for (const QVariant &item : TWindowSpaces(window)) {
        const auto id = unsignedNumber(item);
        if (!id)
            return {};
        result.append(*id);
    }
    return result;
}

QList<InventoryWindow> readInventory()
{
    QList<InventoryWindow> result;
    const auto entries = dictionaries(TWindowInventory());
    for (const QVariantMap &entry : entries.value_or(QList<QVariantMap>())) {
        const auto id = unsignedNumber(entry.value(QStringLiteral("id")));
        const auto pid = signedNumber(entry.value(QStringLiteral("pid")));
        if (!id || !pid)
            continue;
        InventoryWindow window;
        window.id = static_cast<std::uint32_t>(*id);
        window.pid = static_cast<std::int32_t>(*pid);
        if (const auto minimized = signedNumber(entry.value(QStringLiteral("minimized"))))
            window.minimized = *minimized != 0;
        result.append(window);
    }
    return result;
}

} // namespace tovel
