#pragma once

#include "platform/updater.h"

#include <QList>
#include <QString>

#include <optional>

namespace tovel {

// Which release of a program this is.
struct ProgramVersion
{
    QString version; // what releases are ordered by; empty when not known
    QString displayVersion; // what the user reads; empty when not known

    // Whether there is anything to compare releases with.
    bool isKnown() const { return !version.isEmpty() || !displayVersion.isEmpty(); }
    // What to show to the user.
    const QString &shown() const { return displayVersion.isEmpty() ? version : displayVersion; }

    bool operator==(const ProgramVersion &) const = default;
};

ProgramVersion versionOf(const SUAppcastItem &item);

// Whether one version came out after another. By their display versions when either has no other.
bool isNewer(const ProgramVersion &version, const ProgramVersion &than);

// The newest release, when it is newer than the program; of several equal ones the first.
std::optional<SUAppcastItem> newestUpdate(const QList<SUAppcastItem> &items,
                                          const ProgramVersion &current);

} // namespace tovel
