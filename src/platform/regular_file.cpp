#include "platform/regular_file.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

namespace tovel {

std::optional<QByteArray> readRegularFile(const QString &path, qint64 limit)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status
    {
    };
    const auto isWanted = [&] { return S_ISREG(status.st_mode) && status.st_size <= limit; };
    // Asked before as well: opening a device may do something to it.
    if (name.contains('\0') || ::stat(name.constData(), &status) != 0 || !isWanted())
        return std::nullopt;
    const int descriptor = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    QFile file;
    if (descriptor < 0
        || !file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered,
                      QFile::AutoCloseHandle)
        || ::fstat(descriptor, &status) != 0 || !isWanted())
        return std::nullopt;
    QByteArray content = file.read(limit + 1);
    if (file.error() != QFile::NoError || content.size() > limit)
        return std::nullopt;
    return content;
}

} // namespace tovel
