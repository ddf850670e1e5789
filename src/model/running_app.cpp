#include "model/running_app.h"

#include <QCollator>

#include <algorithm>

namespace tovel {

QList<RunningApp> sortedApps(QList<RunningApp> apps, const QSet<QString> &selected,
                             const QCollator &collator)
{
    std::stable_sort(apps.begin(), apps.end(), [&](const RunningApp &a, const RunningApp &b) {
        const bool aSelected = selected.contains(a.id);
        if (aSelected != selected.contains(b.id))
            return aSelected;
        return collator.compare(a.name, b.name) < 0;
    });
    return apps;
}

} // namespace tovel
