#include "platform/regular_file.h"

#include <QFile>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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
    if (descriptor < 0)
        return std::nullopt;
    std::optional<QByteArray> content;
    if (::fstat(descriptor, &status) == 0 && isWanted())
        content = readDescriptor(descriptor, limit + 1);
    ::close(descriptor);
    return content && content->size() <= limit ? content : std::nullopt;
}

// QFile asks the kernel for more than a small file is worth.
std::optional<QByteArray> readDescriptor(int descriptor, qint64 limit)
{
    constexpr qint64 Chunk = 8192;
    QByteArray content;
    for (qint64 size = 0; size < limit;) {
        content.resize(size + std::min(Chunk, limit - size));
        const ssize_t got = ::read(descriptor, content.data() + size,
                                   static_cast<std::size_t>(content.size() - size));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return std::nullopt;
        size += got;
        if (got == 0 || size == limit) {
            content.truncate(size);
            break;
        }
    }
    return content;
}

} // namespace tovel
