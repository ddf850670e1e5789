#include "app/console.h"

#include "texts/one_line.h"

#include <algorithm>

#include <fcntl.h>
#include <unistd.h>

namespace tovel {

void openMissingStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest free descriptor is the missing one, for those below it are open by now.
        if (fcntl(stream, F_GETFD) == -1)
            open("/dev/null", stream == STDOUT_FILENO ? O_RDONLY : O_RDWR);
    }
}

QString printable(const QString &text)
{
    QString line = oneLine(text, text.size());
    std::ranges::replace_if(line, isInvisible, u' ');
    return line;
}

bool writeText(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<std::size_t>(bytes.size());
    return std::fwrite(bytes.constData(), 1, size, stream) == size && std::fflush(stream) == 0;
}

} // namespace tovel
