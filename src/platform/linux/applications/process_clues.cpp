#include "platform/linux/applications/process_clues.h"

#include "platform/regular_file.h"
#include "texts/one_line.h"

#include <QRegularExpression>
#include <QTimeZone>

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maximumFileSize = 256 * 1024; // bytes
constexpr qsizetype maximumClueLength = 256;

QByteArray readSmallFile(const QByteArray &path)
{
    // A sandbox may have put a pipe or a link there.
    const int descriptor = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0)
        return {};
    struct stat status
    {
    };
    QByteArray content;
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
        content = readDescriptor(descriptor, maximumFileSize).value_or(QByteArray());
    ::close(descriptor);
    return content;
}

QByteArray linkTarget(const QByteArray &path)
{
    QByteArray target(4096, '\0');
    const auto length
        = ::readlink(path.constData(), target.data(), static_cast<std::size_t>(target.size()));
    return length > 0 ? target.first(length) : QByteArray();
}

QString executableName(const QByteArray &path)
{
    QByteArray name = path.mid(path.lastIndexOf('/') + 1);
    // The kernel's mark of a file that was replaced while it runs, as by an upgrade.
    if (name.endsWith(" (deleted)"))
        name.chop(10);
    return cleanClue(QString::fromLocal8Bit(name));
}

QDateTime timeOfTicks(std::uint64_t ticks)
{
    const auto milliseconds = [](clockid_t clock) {
        timespec now{};
        ::clock_gettime(clock, &now);
        return static_cast<qint64>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
    };
    const auto ticksPerSecond = static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK));
    const qint64 sinceBoot = static_cast<qint64>(ticks / ticksPerSecond * 1000
                                                 + ticks % ticksPerSecond * 1000 / ticksPerSecond);
    const qint64 boot = milliseconds(CLOCK_REALTIME) - milliseconds(CLOCK_BOOTTIME);
    // The local one would look at the time zone's file each time.
    return QDateTime::fromMSecsSinceEpoch((boot + sinceBoot) / 10 * 10, QTimeZone::utc());
}

} // namespace

ProcessStart readProcessStart(std::int32_t pid)
{
    const QByteArray path = "/proc/" + QByteArray::number(pid) + "/stat";
    const auto ticks = pid > 0 ? startTicksFromStat(readSmallFile(path)) : std::nullopt;
    return ticks ? ProcessStart{*ticks, timeOfTicks(*ticks)} : ProcessStart();
}

ProcessClues readProcessClues(std::int32_t pid)
{
    ProcessClues clues;
    if (pid <= 0)
        return clues;
    const QByteArray folder = "/proc/" + QByteArray::number(pid);
    clues.executable = executableName(linkTarget(folder + "/exe"));
    clues.sandboxId = flatpakIdFromInfo(readSmallFile(folder + "/root/.flatpak-info"));
    if (clues.sandboxId.isEmpty())
        clues.sandboxId = snapIdFromCgroup(readSmallFile(folder + "/cgroup"));
    clues.launchedDesktopFile
        = launchedDesktopFileFromEnvironment(readSmallFile(folder + "/environ"), pid);
    return clues;
}

bool runsOtherPrograms(const QString &program)
{
    constexpr QStringView programs[]
        = {u"bash",  u"dash", u"electron", u"env",     u"flatpak",   u"gjs",  u"gjs-console",
           u"java",  u"lua",  u"luajit",   u"mono",    u"mono-sgen", u"node", u"nodejs",
           u"perl",  u"php",  u"python",   u"ruby",    u"sh",        u"snap", u"sudo",
           u"tclsh", u"wine", u"wish",     u"xdg-open"};
    // Interpreters often have a version in the names of their programs.
    const auto isOfVersion
        = [](QChar it) { return it == u'-' || it == u'.' || (it >= u'0' && it <= u'9'); };
    const auto last = std::find_if_not(program.crbegin(), program.crend(), isOfVersion);
    const QStringView name = QStringView(program).first(std::distance(last, program.crend()));
    return std::ranges::find(programs, name) != std::end(programs);
}

QString cleanClue(QStringView text)
{
    QString clean = text.first(qMin(text.size(), 4 * maximumClueLength)).toString();
    clean.removeIf([](QChar c) { return breaksLine(c) || isInvisible(c); });
    return oneLine(clean, maximumClueLength);
}

std::optional<std::uint64_t> startTicksFromStat(QByteArrayView stat)
{
    // The second field is the program's name in parentheses, blanks and parentheses included.
    const qsizetype nameEnd = stat.lastIndexOf(')');
    if (nameEnd < 0)
        return std::nullopt;
    constexpr qsizetype startTimeAfterName = 22 - 2 - 1;
    const auto fields = stat.sliced(nameEnd + 1).trimmed().toByteArray().split(' ');
    if (fields.size() <= startTimeAfterName)
        return std::nullopt;
    bool valid = false;
    const qulonglong ticks = fields[startTimeAfterName].toULongLong(&valid);
    return valid ? std::optional<std::uint64_t>(ticks) : std::nullopt;
}

QString flatpakIdFromInfo(QByteArrayView info)
{
    bool inApplication = false;
    for (const QByteArray &line : info.toByteArray().split('\n')) {
        const QByteArray trimmed = line.trimmed();
        if (trimmed.startsWith('['))
            inApplication = trimmed == "[Application]";
        else if (inApplication && trimmed.startsWith("name="))
            return cleanClue(QString::fromUtf8(trimmed.mid(5)));
    }
    return {};
}

QString snapIdFromCgroup(QByteArrayView cgroup)
{
    if (!cgroup.contains("/snap."))
        return {};
    // The application's name ends at a dot or at the identifier of this run.
    static const QRegularExpression pattern(
        u"/snap\\.([a-z0-9-]+(?:_[a-z0-9]+)?)\\.([A-Za-z0-9-]+?)"
        "(?:-[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12})?(?:[./]|$)"_s,
        QRegularExpression::MultilineOption);
    const auto match = pattern.match(QString::fromLatin1(cgroup));
    if (!match.hasMatch() || match.captured(2) == u"hook")
        return {};
    return cleanClue(match.captured(1) + u'_' + match.captured(2));
}

QString launchedDesktopFileFromEnvironment(QByteArrayView environment, std::int32_t pid)
{
    QByteArray file;
    QByteArray launchedPid;
    for (const QByteArray &variable : environment.toByteArray().split('\0')) {
        if (variable.startsWith("GIO_LAUNCHED_DESKTOP_FILE="))
            file = variable.mid(26);
        else if (variable.startsWith("GIO_LAUNCHED_DESKTOP_FILE_PID="))
            launchedPid = variable.mid(30);
    }
    if (launchedPid != QByteArray::number(pid))
        return {};
    return cleanClue(QString::fromLocal8Bit(file));
}

} // namespace tovel
