#include "updater/update_choice.h"

#include "updater/version_order.h"

namespace tovel {

ProgramVersion versionOf(const SUAppcastItem &item)
{
    return {item.versionString, item.displayVersionString};
}

bool isNewer(const ProgramVersion &version, const ProgramVersion &than)
{
    if (!version.version.isEmpty() && !than.version.isEmpty())
        return compareVersions(version.version, than.version) > 0;
    return compareVersions(version.shown(), than.shown()) > 0;
}

std::optional<SUAppcastItem> newestUpdate(const QList<SUAppcastItem> &items,
                                          const ProgramVersion &current)
{
    std::optional<SUAppcastItem> newest;
    for (const SUAppcastItem &item : items) {
        const ProgramVersion version = versionOf(item);
        if (isNewer(version, current) && (!newest || isNewer(version, versionOf(*newest))))
            newest = item;
    }
    return newest;
}

} // namespace tovel
