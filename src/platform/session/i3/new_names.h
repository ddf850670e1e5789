#pragma once

#include "platform/session/i3/readings.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

namespace tovel::i3 {

// The number that a workspace's name begins with, which both take for the workspace's own.
std::optional<std::uint64_t> leadingNumber(const QString &name);

// The name of a workspace whose number is that of no other.
QString lowestFreeNumber(const QStringList &names);

// Why no workspace with the name can be made beside the others; empty when it can. Both tell names
// apart without regard to case.
QString problemOfNewName(Compositor compositor, const QString &name, const QStringList &others);

} // namespace tovel::i3
