#pragma once

#include <QStringList>

namespace tovel {

// Which names of a row of workspaces, in their order, somebody chose: in the others' places empty
// texts. Not a bare number, and not what a session calls a workspace that nobody named, which is
// one word and the workspace's own number in every language ("Desktop 3", "Arbeitsfläche 3"). Where
// such names have several words ("mail 1", "web 2"), somebody chose them all.
QStringList chosenNames(const QStringList &names);

} // namespace tovel
