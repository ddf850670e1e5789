#include "platform/linux/defaults/defaults_file.h"

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr unsigned long lockRetry = 2000; // microseconds
constexpr mode_t ownFile = S_IRUSR | S_IWUSR;
constexpr int mostSetAside = 10'000;

qint64 nanoseconds(const timespec &time) { return time.tv_sec * 1'000'000'000 + time.tv_nsec; }

const QString cannotRead = u"Cannot read the settings file"_s;
const QString cannotWrite = u"Cannot write the settings file"_s;
const QString cannotSetAside = u"Cannot set aside the settings file"_s;

QString systemFailure(const QString &what, const QString &path)
{
    return fileFailure(what, path, qt_error_string(errno));
}

FileStamp stampOf(const struct stat &status)
{
    return {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
            nanoseconds(status.st_ctim)};
}

void syncFolder(const QString &folder)
{
    const int descriptor
        = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

// Empty, or the reason for the failure.
QString makeFolder(const QString &folder)
{
    if (QFileInfo(folder).isDir())
        return {};
    const QString parent = QFileInfo(folder).path();
    if (parent != folder) {
        if (const QString failure = makeFolder(parent); !failure.isEmpty())
            return failure;
    }
    if (::mkdir(QFile::encodeName(folder).constData(), S_IRWXU) == 0) {
        syncFolder(parent);
        return {};
    }
    if (errno == EEXIST && QFileInfo(folder).isDir())
        return {};
    return systemFailure(u"Cannot make the settings folder"_s, folder);
}

// QFile would copy what it cannot rename.
bool renameFile(const QString &from, const QString &to)
{
    return ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

// The path with the suffix, and a number if need be; empty when there are too many of those.
QString freeName(const QString &path, const QString &suffix)
{
    for (int number = 1; number < mostSetAside; ++number) {
        QString name = path + suffix + (number > 1 ? u'-' + QString::number(number) : QString());
        if (!QFileInfo::exists(name))
            return name;
    }
    return {};
}

// True when all is written and lasts; otherwise errno says why not.
bool writeAll(int descriptor, const QByteArray &bytes)
{
    for (qsizetype done = 0; done < bytes.size();) {
        const ssize_t written = ::write(descriptor, bytes.constData() + done, bytes.size() - done);
        if (written < 0 && errno != EINTR)
            return false;
        done += std::max<ssize_t>(written, 0);
    }
    return ::fsync(descriptor) == 0;
}

} // namespace

QString fileFailure(const QString &what, const QString &path, const QString &reason)
{
    return u"%1 “%2”: %3"_s.arg(what, path, reason);
}

qint64 FileStamp::age() const
{
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return nanoseconds(now) - std::max(modified, changed);
}

FileLook lookAtFile(const QString &path)
{
    struct stat status
    {
    };
    if (::stat(QFile::encodeName(path).constData(), &status) != 0) {
        if (errno != ENOENT)
            return {{}, systemFailure(cannotRead, path)};
        if (const QFileInfo file(path); file.isSymLink())
            return {{},
                    fileFailure(
                        cannotRead, path,
                        u"it is a link to “%1”, which is not there"_s.arg(file.symLinkTarget()))};
        return {};
    }
    if (!S_ISREG(status.st_mode))
        return {{}, fileFailure(cannotRead, path, u"it is not a regular file"_s)};
    return {stampOf(status), {}};
}

FolderLock::FolderLock(const QString &folder, const QDeadlineTimer &deadline)
    : m_folder(folder)
    , m_failure(makeFolder(folder))
{
    if (!m_failure.isEmpty())
        return;
    m_descriptor
        = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_descriptor < 0) {
        m_failure = systemFailure(u"Cannot open the settings folder"_s, folder);
        return;
    }
    while (::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        if (deadline.hasExpired()) {
            m_failure = fileFailure(u"Cannot lock the settings folder"_s, folder,
                                    u"another process holds it"_s);
            return;
        }
        QThread::usleep(lockRetry);
    }
}

FolderLock::~FolderLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

QString FolderLock::makeFile(const QString &name, const QByteArray &bytes) const
{
    const QString path = m_folder + u'/' + name;
    const QByteArray encoded = QFile::encodeName(name);

    // A file without a name leaves nothing behind when the process is killed.
    const int nameless = ::openat(m_descriptor, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, ownFile);
    if (nameless >= 0) {
        const auto close = qScopeGuard([nameless] { ::close(nameless); });
        if (!writeAll(nameless, bytes))
            return systemFailure(cannotWrite, path);
        const QByteArray handle = "/proc/self/fd/" + QByteArray::number(nameless);
        if (::linkat(AT_FDCWD, handle.constData(), m_descriptor, encoded.constData(),
                     AT_SYMLINK_FOLLOW)
            == 0) {
            sync();
            return {};
        }
        if (errno == EEXIST)
            return systemFailure(cannotWrite, path);
    }

    // Not every file system knows such files. A process that is killed here leaves a damaged file.
    const int named = ::openat(m_descriptor, encoded.constData(),
                               O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, ownFile);
    if (named < 0)
        return systemFailure(cannotWrite, path);
    QString failure;
    if (!writeAll(named, bytes)) {
        failure = systemFailure(cannotWrite, path);
        ::unlinkat(m_descriptor, encoded.constData(), 0);
    }
    ::close(named);
    sync();
    return failure;
}

SetAside FolderLock::replaceFile(const QString &name, const QByteArray &bytes,
                                 const QString &suffix) const
{
    // The new file takes the name that the old one is to have, and then they swap.
    const QString path = m_folder + u'/' + name;
    const QString other = freeName(path, suffix);
    if (other.isEmpty())
        return {{}, fileFailure(cannotSetAside, path, u"there are too many already"_s)};
    if (const QString failure = makeFile(QFileInfo(other).fileName(), bytes); !failure.isEmpty())
        return {{}, failure};
    SetAside old{other, {}};
    if (::renameat2(AT_FDCWD, QFile::encodeName(other).constData(), AT_FDCWD,
                    QFile::encodeName(path).constData(), RENAME_EXCHANGE)
        != 0) {
        // Not every file system can, and then there is a moment without either.
        old = setFileAside(path, suffix);
        if (old.failure.isEmpty() && !renameFile(other, path)) {
            old.failure = systemFailure(cannotWrite, path);
            putFileBack(old.name, path);
        }
        if (!old.failure.isEmpty())
            QFile::remove(other);
    }
    sync();
    return old;
}

void FolderLock::sync() const { ::fsync(m_descriptor); }

SetAside setFileAside(const QString &path, const QString &suffix)
{
    const QString name = freeName(path, suffix);
    if (name.isEmpty())
        return {{}, fileFailure(cannotSetAside, path, u"there are too many already"_s)};
    if (!renameFile(path, name))
        return {{}, systemFailure(cannotSetAside, path)};
    return {name, {}};
}

void putFileBack(const QString &name, const QString &path)
{
    if (!QFileInfo::exists(path))
        renameFile(name, path);
}

} // namespace tovel
