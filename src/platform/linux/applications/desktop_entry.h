#pragma once

#include "platform/linux/applications/application_index.h"

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace tovel {

// No desktop file may be larger, in bytes.
inline constexpr qint64 desktopFileLimit = 1024 * 1024;

// The application that a desktop file describes (Desktop Entry Specification), of the content read
// from that path. Nothing for what describes none, says Hidden, or whose program is not there.
// Looks for the program and touches no other file.
//
// Not GIO's own reading, which first looks through all folders and opens whatever is there under
// the names of its lists.
std::optional<ApplicationEntry> parseDesktopEntry(const QString &identifier, const QString &path,
                                                  QByteArrayView content);

} // namespace tovel
