#include "platform/linux/json_user_defaults.h"

#include "platform/linux/json_value.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLockFile>
#include <QSaveFile>
#include <QThread>

#include <cerrno>
#include <chrono>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr auto lockWait = 200ms; // the caller may be a user interface
constexpr auto lockRetry = 4ms; // QLockFile's own waits grow so long that a busy writer starves us
// A writer that was killed may leave a lock file without its name in it, which only age tells from
// a lock. The lock of a living process is safe from this: QLockFile holds the file natively as
// well.
constexpr auto staleLockAge = 100ms;
constexpr qint64 settleTime = 50'000'000; // nanoseconds; above the tick of a file system's clock

qint64 nanoseconds(const timespec &time) { return time.tv_sec * 1'000'000'000 + time.tv_nsec; }

QString failure(const QString &what, const QString &path, const QString &reason)
{
    return u"%1 “%2”: %3"_s.arg(what, path, reason);
}

QString systemFailure(const QString &what, const QString &path)
{
    return failure(what, path, qt_error_string(errno));
}

// Makes the folder and those above it. Empty, or the reason for the failure.
QString makeFolder(const QString &folder)
{
    if (QFileInfo(folder).isDir())
        return {};
    const QString parent = QFileInfo(folder).path();
    if (parent != folder) {
        if (const QString error = makeFolder(parent); !error.isEmpty())
            return error;
    }
    if (::mkdir(QFile::encodeName(folder).constData(), S_IRWXU) == 0
        || (errno == EEXIST && QFileInfo(folder).isDir()))
        return {};
    return systemFailure(u"Cannot make the settings folder"_s, folder);
}

bool acquire(QLockFile &lock)
{
    lock.setStaleLockTime(staleLockAge);
    QDeadlineTimer deadline(lockWait);
    while (!lock.tryLock(0ms)) {
        if (lock.error() != QLockFile::LockFailedError || deadline.hasExpired())
            return false;
        QThread::usleep(std::chrono::microseconds(lockRetry).count());
    }
    return true;
}

QString lockFailure(const QLockFile &lock, const QString &filePath)
{
    const QString what = u"Cannot lock the settings file"_s;
    if (lock.error() == QLockFile::PermissionError)
        return failure(what, filePath, u"the folder does not let this user write"_s);
    if (lock.error() != QLockFile::LockFailedError)
        return failure(what, filePath, u"the lock file could not be made"_s);
    qint64 pid = 0;
    QString host;
    QString application;
    if (!lock.getLockInfo(&pid, &host, &application))
        return failure(what, filePath, u"another process holds it"_s);
    return failure(what, filePath,
                   u"process %1 (%2) holds it"_s.arg(QString::number(pid), application));
}

// Gives the file another name in its folder, one that nothing has. Empty, or the reason.
QString setAside(const QString &filePath)
{
    QFile file(filePath);
    for (int number = 1; number < 10'000; ++number) {
        const QString name = u"%1.damaged-%2"_s.arg(filePath, QString::number(number));
        if (!QFileInfo::exists(name))
            return file.rename(name) ? QString()
                                     : failure(u"Cannot set aside the damaged settings file"_s,
                                               filePath, file.errorString());
    }
    return failure(u"Cannot set aside the damaged settings file"_s, filePath,
                   u"there are too many already"_s);
}

QString save(const QString &filePath, const QByteArray &bytes)
{
    const bool isNew = !QFileInfo::exists(filePath);
    QSaveFile file(filePath);
    const bool written = file.open(QIODevice::WriteOnly)
        && (!isNew || file.setPermissions(QFile::ReadOwner | QFile::WriteOwner))
        && file.write(bytes) == bytes.size() && file.commit();
    if (!written)
        return failure(u"Cannot write the settings file"_s, filePath, file.errorString());

    // The rename itself must last too. Some file systems cannot do this, and lose nothing by it.
    const int folder = ::open(QFile::encodeName(QFileInfo(filePath).path()).constData(),
                              O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
    return {};
}

} // namespace

JsonUserDefaults::JsonUserDefaults(QString filePath)
    : m_filePath(std::move(filePath))
{ }

std::optional<QVariant> JsonUserDefaults::object(const QString &key) const
{
    if (const auto it = m_unsaved.constFind(key); it != m_unsaved.cend())
        return *it;
    refresh();
    if (const auto it = m_stored.constFind(key); it != m_stored.cend())
        return *it;
    return std::nullopt;
}

bool JsonUserDefaults::setObject(const QString &key, const QVariant &value)
{
    const auto json = jsonFromVariant(value);
    if (!json) {
        m_writeError = u"The value of “%1” is of a kind that cannot be stored."_s.arg(key);
        return false;
    }
    if (QJsonDocument(QJsonArray{*json}).toJson().size() > maximumDefaultsSize / 2) {
        m_writeError = u"The value of “%1” is too large to be stored."_s.arg(key);
        return false;
    }
    // Read back, so that the value is the same now and after a restart.
    return store(key, variantFromJson(*json));
}

bool JsonUserDefaults::removeObject(const QString &key)
{
    if (!m_unsaved.contains(key) && !object(key)) {
        m_writeError.clear();
        return true;
    }
    return store(key, std::nullopt);
}

QString JsonUserDefaults::errorString() const
{
    return m_writeError.isEmpty() ? m_readError : m_writeError;
}

JsonUserDefaults::FileContent JsonUserDefaults::readFile(const QString &filePath)
{
    FileContent content;
    // Without O_NONBLOCK a pipe of that name would hold us for ever.
    const int descriptor
        = ::open(QFile::encodeName(filePath).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        if (errno != ENOENT && errno != ENOTDIR) {
            content.state = FileState::Unreadable;
            content.error = systemFailure(u"Cannot read the settings file"_s, filePath);
        }
        return content;
    }
    QFile file;
    file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFile::AutoCloseHandle);

    struct stat status
    {
    };
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        content.state = FileState::Unreadable;
        content.error
            = failure(u"Cannot read the settings file"_s, filePath, u"it is not a regular file"_s);
        return content;
    }
    // Two changes within one tick of the file system's clock look alike, so a state that is so
    // young is read again.
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    if (nanoseconds(status.st_ctim) + settleTime < nanoseconds(now))
        content.stamp = Stamp{status.st_dev, status.st_ino, status.st_size,
                              nanoseconds(status.st_mtim), nanoseconds(status.st_ctim)};

    content.bytes = file.read(maximumDefaultsSize + 1);
    if (file.error() != QFile::NoError) {
        content.state = FileState::Unreadable;
        content.error = failure(u"Cannot read the settings file"_s, filePath, file.errorString());
        return content;
    }
    if (auto values = parseDefaults(content.bytes)) {
        content.state = FileState::Parsed;
        content.values = *std::move(values);
    } else {
        content.state = FileState::Damaged;
        content.error = u"The settings file “%1” is damaged."_s.arg(filePath);
    }
    return content;
}

void JsonUserDefaults::refresh() const
{
    struct stat status
    {
    };
    if (m_stamp && ::stat(QFile::encodeName(m_filePath).constData(), &status) == 0) {
        const Stamp stamp{status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
                          nanoseconds(status.st_ctim)};
        if (stamp == *m_stamp)
            return;
    }
    adopt(readFile(m_filePath));
}

void JsonUserDefaults::adopt(const FileContent &content) const
{
    m_stored = content.values;
    m_stamp = content.stamp;
    m_readError = content.error;
}

bool JsonUserDefaults::store(const QString &key, const std::optional<QVariant> &value)
{
    m_unsaved.insert(key, value);
    m_writeError = writeUnsaved();
    if (!m_writeError.isEmpty())
        return false;
    m_unsaved.clear();
    adopt(readFile(m_filePath));
    return true;
}

// Empty, or the reason why nothing was written.
QString JsonUserDefaults::writeUnsaved()
{
    if (const QString error = makeFolder(QFileInfo(m_filePath).absolutePath()); !error.isEmpty())
        return error;
    QLockFile lock(m_filePath + u".lock"_s);
    if (!acquire(lock))
        return lockFailure(lock, m_filePath);

    const FileContent before = readFile(m_filePath);
    if (before.state == FileState::Unreadable)
        return before.error;

    QVariantMap values = before.values;
    for (auto it = m_unsaved.cbegin(); it != m_unsaved.cend(); ++it) {
        if (it.value())
            values.insert(it.key(), *it.value());
        else
            values.remove(it.key());
    }
    const auto bytes = serializeDefaults(values);
    if (!bytes)
        return failure(u"Cannot write the settings file"_s, m_filePath,
                       u"it would become too large"_s);
    if (before.state == FileState::Parsed ? *bytes == before.bytes : values.isEmpty())
        return {};
    if (before.state == FileState::Damaged) {
        if (const QString error = setAside(m_filePath); !error.isEmpty())
            return error;
    }
    return save(m_filePath, *bytes);
}

} // namespace tovel
