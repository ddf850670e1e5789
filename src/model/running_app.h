#pragma once

#include "platform/workspace.h"

#include <QList>
#include <QSet>
#include <QString>

#include <optional>

class QCollator;

namespace tovel {

// An application that is, or can become, part of the flock. One that runs has its handle; one that
// is only remembered has neither handle nor icon.
struct RunningApp
{
    QString id; // bundle identifier; the identity
    QString name;
    std::optional<NSImage> icon;
    NSRunningApplicationRef running;

    bool operator==(const RunningApp &) const = default;
};

// The applications in the order they are shown: the selected ones first, each group by name as the
// collator compares. Equal ones keep their order.
QList<RunningApp> sortedApps(QList<RunningApp> apps, const QSet<QString> &selected,
                             const QCollator &collator);

} // namespace tovel
