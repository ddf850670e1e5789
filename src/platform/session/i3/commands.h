#pragma once

#include "platform/session/i3/readings.h"

#include <QByteArray>
#include <QString>

#include <optional>

// The texts of commands to i3 and sway. A workspace's name is put so that it reaches the session to
// the letter; one that cannot is refused by giving nothing.
namespace tovel::i3 {

// Which window a command is for; for i3, whose containers have no numbers that last, by X11's.
QByteArray criteria(Compositor compositor, const TreeWindow &window);

std::optional<QByteArray> quotedWorkspace(Compositor compositor, const QString &name);

// Of sway: windows of that process and title float from the beginning, and are on all workspaces
// of their output. Empty for a title that a rule cannot be trusted with.
QByteArray floatingRule(const SessionOwnWindow &window);

// Of sway: a key by its place, in whatever state of the locks, once for each time it is pressed.
// The binding starts no program: it is told of, by the command, to whoever asks for bindings.
QByteArray bindCommand(const SessionKey &key, const QString &command);
QByteArray unbindCommand(const SessionKey &key);

} // namespace tovel::i3
