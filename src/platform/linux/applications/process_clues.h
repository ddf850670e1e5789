#pragma once

#include <QByteArrayView>
#include <QDateTime>
#include <QString>

#include <cstdint>
#include <optional>

namespace tovel {

// When a process began, which tells it apart from later ones of its number.
struct ProcessStart
{
    std::uint64_t ticks = 0; // since boot; never changes, and 0 for nothing else
    QDateTime time; // wall-clock time, to a hundredth of a second; null when unknown

    bool operator==(const ProcessStart &) const = default;
};

ProcessStart readProcessStart(std::int32_t pid);

// What the kernel tells of a process (proc(5)), as far as it says which application it belongs to.
// Whatever cannot be learnt is empty.
struct ProcessClues
{
    QString executable; // base name
    QString sandboxId; // the desktop-file name that the sandbox gives the application
    QString launchedDesktopFile; // path of the entry that this very process was launched from

    bool operator==(const ProcessClues &) const = default;
};

// Reads the clues of a running process, a few small files of bounded size. Never blocks on what
// the process put in their place.
ProcessClues readProcessClues(std::int32_t pid);

// Whether the program, by its base name, is one that runs others, such as an interpreter or a
// launcher: that a window's process is one of them says nothing of the window.
bool runsOtherPrograms(const QString &program);

// A text that another program chose, made harmless to show and to store: no control or format
// characters, at most 256 UTF-16 units.
QString cleanClue(QStringView text);

// The readers of the single files; each takes the file's content and gives nothing, or an empty
// text, for anything malformed.

// /proc/PID/stat: the start time in clock ticks since boot.
std::optional<std::uint64_t> startTicksFromStat(QByteArrayView stat);

// /.flatpak-info of a sandbox: the application id.
QString flatpakIdFromInfo(QByteArrayView info);

// /proc/PID/cgroup: NAME_APP for a process in a group "snap.NAME.APP…".
QString snapIdFromCgroup(QByteArrayView cgroup);

// /proc/PID/environ: the desktop file, when the variables name this process as the one launched.
// They are inherited by its children, whose own entry it is not.
QString launchedDesktopFileFromEnvironment(QByteArrayView environment, std::int32_t pid);

} // namespace tovel
