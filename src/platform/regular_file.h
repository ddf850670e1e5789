#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace tovel {

// The content of a file that anybody may have put there. Nothing for what cannot be read, is no
// regular file, or is larger than the limit. Never waits for a pipe or a device, as opening one as
// usual does.
std::optional<QByteArray> readRegularFile(const QString &path, qint64 limit);

// What is left to read of a file that is open, at most so many bytes. Nothing where reading fails.
// The descriptor stays open.
std::optional<QByteArray> readDescriptor(int descriptor, qint64 limit);

} // namespace tovel
