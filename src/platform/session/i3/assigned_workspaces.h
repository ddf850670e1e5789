#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace tovel::i3 {

// A workspace that the user's configuration puts on an output, whether it is there at the moment.
struct AssignedWorkspace
{
    QString name;
    QStringList outputs; // the first one that is connected counts

    bool operator==(const AssignedWorkspace &) const = default;
};

// The lines "workspace NAME output OUTPUT…" of a configuration, in its order and with the variables
// that it sets; whatever else is in it is passed over.
QList<AssignedWorkspace> assignedWorkspaces(const QString &configuration);

} // namespace tovel::i3
