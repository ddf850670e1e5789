#pragma once

#include <QList>
#include <QString>
#include <QVariant>

#include <cstdint>
#include <optional>

// The bridge's loosely typed answers, read strictly.
namespace tovel {

// One display with its row of spaces.
struct ManagedDisplay
{
    std::optional<QString> identifier;
    std::optional<std::uint64_t> currentSpace;
    std::optional<QList<QVariantMap>> spaces; // absent when it is no list of dictionaries
};

// In the window server's order; empty when its answer is malformed.
QList<ManagedDisplay> readDisplays();

// The id in a space dictionary.
std::optional<std::uint64_t> spaceID(const QVariantMap &space);

// The spaces that a window is on; empty when there are none or the answer is malformed.
QList<std::uint64_t> readWindowSpaces(std::uint32_t window);

struct InventoryWindow
{
    std::uint32_t id = 0;
    std::int32_t pid = 0;
    std::optional<bool> minimized;
};

// In the bridge's order, entries without id or pid left out; empty when the answer is malformed.
QList<InventoryWindow> readInventory();

} // namespace tovel
