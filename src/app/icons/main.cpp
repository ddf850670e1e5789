// Decodes the pictures of other programs for the panel, which must not be held up by what it finds
// in them: takes requests on its standard input and writes the answers to its standard output,
// until the input ends. Each picture is decoded in a process of its own, which has neither display
// nor bus and limits that a hostile picture dies of. Whoever loses patience may kill this one, and
// the other one goes with it.

#include "pictures/decoding.h"
#include "pictures/icon_theme.h"
#include "pictures/picture_protocol.h"
#include "platform/regular_file.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestFile = 8 * 1024 * 1024;
constexpr rlim_t secondsForPicture = 5; // of processor time; the panel's own patience is shorter
#ifndef TOVEL_RESERVES_ADDRESSES
constexpr rlim_t largestProcess = 512UL * 1024 * 1024; // of addresses
#endif

// Not above what the process was given.
void limit(decltype(RLIMIT_AS) resource, rlim_t wanted)
{
    rlimit limits{};
    getrlimit(resource, &limits);
    limits.rlim_cur = std::min(wanted, limits.rlim_max);
    setrlimit(resource, &limits);
}

PictureAnswer answerTo(const PictureRequest &request)
{
    const int pixels = static_cast<int>(request.pixels);
    const QString path = request.source.startsWith(u'/')
        ? request.source
        : findIcon(request.source, request.themes, pixels);
    const auto bytes = readRegularFile(path, largestFile);
    const QImage image = bytes ? decodePicture(*bytes, pixels) : QImage();
    PictureAnswer answer{static_cast<std::uint32_t>(image.width()),
                         static_cast<std::uint32_t>(image.height())};
    for (int row = 0; row < image.height(); ++row)
        answer.pixels.append(reinterpret_cast<const char *>(image.constScanLine(row)),
                             4 * image.width());
    return answer;
}

bool writeAll(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t written
            = write(STDOUT_FILENO, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (written < 0 && errno != EINTR)
            return false;
        bytes = bytes.sliced(std::max<qsizetype>(written, 0));
    }
    return true;
}

// True when it was given, be it that there is no picture.
bool giveAnswer(const PictureRequest &request)
{
    const pid_t self = getpid();
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        limit(RLIMIT_CPU, secondsForPicture);
        const bool isWanted = getppid() == self;
        _exit(isWanted && writeAll(encodeAnswer(answerTo(request))) ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    const bool hasAnswered = child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
    return hasAnswered || writeAll(encodeAnswer({}));
}

int serve()
{
    if (!writeAll(pictureGreeting))
        return EXIT_FAILURE;
    QByteArray input;
    while (true) {
        const auto received = receiveRequest(input);
        if (received.damaged)
            return EXIT_FAILURE;
        if (received.message) {
            input.remove(0, received.length);
            if (!giveAnswer(*received.message))
                return EXIT_FAILURE;
            continue;
        }
        std::array<char, 4096> buffer;
        const ssize_t size = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (size == 0)
            return EXIT_SUCCESS;
        if (size < 0 && errno != EINTR)
            return EXIT_FAILURE;
        input.append(buffer.data(), std::max<qsizetype>(size, 0));
    }
}

} // namespace

int main(int argc, char *argv[])
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    limit(RLIMIT_CORE, 0);
#ifndef TOVEL_RESERVES_ADDRESSES
    limit(RLIMIT_AS, largestProcess);
#endif
    for (const char *variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORMTHEME"})
        qunsetenv(variable);
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"*=false"_s);
    return serve();
}
