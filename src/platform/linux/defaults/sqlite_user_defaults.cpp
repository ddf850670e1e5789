#include "platform/linux/defaults/sqlite_user_defaults.h"

#include "platform/linux/defaults/json_value.h"
#include "platform/regular_file.h"

#include <QFileInfo>
#include <QList>

#include <cerrno>
#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

// Two changes within one tick of a file system's clock look alike, so a state that is younger is
// read again.
constexpr qint64 settlingTime = 50'000'000; // nanoseconds
constexpr qint64 largestFile = 3 * maximumDefaultsSize; // it is checked as a whole
constexpr int mostAttempts = 5;
// One thing that somebody does takes several calls. Longer than the rest of them take.
constexpr std::chrono::milliseconds impatience{1000};
const QString logSuffix = u"-wal"_s;
const QStringList sidecars{u"-journal"_s, logSuffix, u"-shm"_s};

const QString damagedSuffix = u".damaged"_s;

const QString cannotRead = u"Cannot read the settings file"_s;
const QString cannotWrite = u"Cannot write the settings file"_s;

// The changes as texts, without those that change nothing; or why they cannot be stored.
struct Written
{
    DefaultsTexts texts{};
    QString failure{};
};

Written written(const DefaultsChanges &changes, const QVariantMap &stored)
{
    Written result;
    for (auto it = changes.cbegin(); it != changes.cend(); ++it) {
        const auto before = stored.constFind(it.key());
        if (!it.value()) {
            if (before != stored.cend())
                result.texts.insert(it.key(), std::nullopt);
            continue;
        }
        const auto text = jsonFromVariant(*it.value());
        if (!text) {
            result.failure
                = u"The value of “%1” is of a kind or a size that cannot be stored."_s.arg(
                    it.key());
            return result;
        }
        // Texts, since QVariant takes 1 for true.
        if (before == stored.cend() || jsonFromVariant(*before) != text)
            result.texts.insert(it.key(), text);
    }
    return result;
}

QVariantMap merged(QVariantMap values, const DefaultsChanges &changes)
{
    for (auto it = changes.cbegin(); it != changes.cend(); ++it) {
        if (it.value())
            values.insert(it.key(), *it.value());
        else
            values.remove(it.key());
    }
    return values;
}

bool isTooMuch(const QVariantMap &values)
{
    qsizetype size = 0;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        size += it.key().toUtf8().size() + jsonFromVariant(it.value()).value_or("").size();
    return size > maximumDefaultsSize || values.size() > maximumDefaultsCount;
}

QString damageNotice(const QString &path, const QString &old)
{
    const QString text = u"The settings file was damaged. It is “%1” now, and what could last be "
                         "read of it is in a new one, “%2”."_s;
    return text.arg(old, path);
}

} // namespace

SqliteUserDefaults::SqliteUserDefaults(QString filePath, QString jsonPath,
                                       SqliteUserDefaultsOptions options)
    : m_filePath(std::move(filePath))
    , m_jsonPath(std::move(jsonPath))
    , m_options(options)
{ }

// The result of the work, which waits for other processes until the deadline that it is given.
auto SqliteUserDefaults::patiently(const auto &work) const
{
    const bool isImpatient = !m_impatience.hasExpired();
    const QDeadlineTimer deadline(isImpatient ? std::chrono::milliseconds(0) : m_options.patience);
    const auto result = work(deadline);
    if (!isImpatient && deadline.hasExpired() && !result.failure.isEmpty())
        m_impatience.setRemainingTime(impatience);
    return result;
}

DefaultsReading SqliteUserDefaults::dictionaryRepresentation() const
{
    return patiently([this](const QDeadlineTimer &deadline) {
        const Content now = content(deadline);
        return DefaultsReading{now.values, now.failure};
    });
}

DefaultsOutcome SqliteUserDefaults::change(const Decision &decide, DefaultsAuthor author)
{
    return patiently([&](const QDeadlineTimer &deadline) {
        for (int attempt = 0; attempt < mostAttempts; ++attempt) {
            if (const auto outcome = attemptChange(decide, author, deadline))
                return *outcome;
        }
        return DefaultsOutcome{
            fileFailure(cannotWrite, m_filePath, u"somebody else replaces it all the time"_s)};
    });
}

SqliteUserDefaults::Content SqliteUserDefaults::content(const QDeadlineTimer &deadline) const
{
    Content now;
    bool atRest = false;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const FileLook database = lookAtFile(m_filePath);
        if (!database.failure.isEmpty())
            return {State::Unreadable, {}, database.failure, {}, {}};
        if (database.stamp && database.stamp == m_stamp)
            return {State::Read, m_values, {}, database.stamp, {}};
        atRest = database.stamp && database.stamp->age() > settlingTime;
        now = database.stamp ? databaseContent(*database.stamp, deadline) : jsonContent();
        // Another process may have taken over the values, or the file may have been replaced.
        const auto after = lookAtFile(m_filePath).stamp;
        if (after.has_value() == database.stamp.has_value()
            && (!after || after->isSameFile(*database.stamp)))
            break;
    }
    m_stamp.reset();
    if (now.state == State::Read) {
        m_values = now.values;
        // What is in a write-ahead log does not show in the database.
        if (atRest && !QFileInfo::exists(realPath() + logSuffix))
            m_stamp = now.database;
    }
    return now;
}

SqliteUserDefaults::Content SqliteUserDefaults::databaseContent(
    const FileStamp &stamp, const QDeadlineTimer &deadline) const
{
    Content result{State::Read, {}, {}, stamp, {}};
    if (const QString failure = sidecarFailure(); !failure.isEmpty()) {
        result.state = State::Unreadable;
        result.failure = failure;
        return result;
    }
    DefaultsDatabase::Reading reading{State::Damaged, {}, u"it is damaged"_s};
    if (stamp.size <= largestFile)
        reading = DefaultsDatabase(m_filePath, m_options.fileSystem, deadline).read();
    result.state = reading.state;
    result.values = reading.values;
    if (reading.state != State::Read)
        result.failure = fileFailure(cannotRead, m_filePath, reading.reason);
    return result;
}

SqliteUserDefaults::Content SqliteUserDefaults::jsonContent() const
{
    const FileLook look = lookAtFile(m_jsonPath);
    Content result{State::Read, {}, look.failure, {}, look.stamp};
    if (!look.stamp) {
        result.state = look.failure.isEmpty() ? State::Read : State::Unreadable;
        return result;
    }
    QString reason = u"it is damaged"_s;
    std::optional<QVariantMap> values;
    if (look.stamp->size <= maximumDefaultsSize) {
        errno = 0;
        if (const auto bytes = readRegularFile(m_jsonPath, maximumDefaultsSize)) {
            values = parseDefaults(*bytes);
        } else {
            result.state = State::Unreadable;
            reason = qt_error_string(errno);
        }
    }
    result.values = values.value_or(QVariantMap());
    if (values)
        return result;
    if (result.state == State::Read)
        result.state = State::Damaged;
    result.failure = fileFailure(cannotRead, m_jsonPath, reason);
    return result;
}

// SQLite would open what it finds there, and a pipe would hold it for ever.
QString SqliteUserDefaults::sidecarFailure() const
{
    const QString real = realPath();
    for (const QString &sidecar : sidecars) {
        const FileLook look = lookAtFile(real + sidecar);
        if (!look.failure.isEmpty())
            return look.failure;
    }
    return {};
}

SqliteUserDefaults::Attempt SqliteUserDefaults::attemptChange(const Decision &decide,
                                                              DefaultsAuthor author,
                                                              const QDeadlineTimer &deadline)
{
    const Content before = content(deadline);
    if (before.state == State::Damaged && author == DefaultsAuthor::User && mayReplace(before))
        return makeDatabase(merged(m_values, decide(m_values)), before, deadline);
    if (before.state != State::Read)
        return DefaultsOutcome{before.failure};
    const DefaultsChanges changes = decide(before.values);
    const Written wanted = written(changes, before.values);
    if (!wanted.failure.isEmpty() || wanted.texts.isEmpty())
        return DefaultsOutcome{wanted.failure};
    return before.database ? changeDatabase(decide, *before.database, deadline)
                           : makeDatabase(merged(before.values, changes), before, deadline);
}

SqliteUserDefaults::Attempt SqliteUserDefaults::changeDatabase(const Decision &decide,
                                                               const FileStamp &stamp,
                                                               const QDeadlineTimer &deadline)
{
    QString reason;
    {
        DefaultsDatabase database(m_filePath, m_options.fileSystem, deadline);
        const auto reading = database.beginChange();
        reason = reading.reason;
        if (reading.state == State::Read) {
            const DefaultsChanges changes = decide(reading.values);
            const Written wanted = written(changes, reading.values);
            if (!wanted.failure.isEmpty())
                return DefaultsOutcome{wanted.failure};
            const QVariantMap values = merged(reading.values, changes);
            reason
                = isTooMuch(values) ? u"it would become too large"_s : database.store(wanted.texts);
            if (reason.isEmpty())
                m_values = values;
        }
    }
    m_stamp.reset();
    // What was stored in a file that is not there any more has to be stored in the one that is.
    const auto after = lookAtFile(m_filePath).stamp;
    if (!after || !after->isSameFile(stamp))
        return std::nullopt;
    if (!reason.isEmpty())
        return DefaultsOutcome{fileFailure(cannotWrite, m_filePath, reason)};
    return DefaultsOutcome{};
}

// The old file stays until the new one is there.
SqliteUserDefaults::Attempt SqliteUserDefaults::makeDatabase(const QVariantMap &values,
                                                             const Content &before,
                                                             const QDeadlineTimer &deadline)
{
    DefaultsChanges all;
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        if (it.value().isValid())
            all.insert(it.key(), it.value());
    }
    const Written whole = written(all, {});
    if (!whole.failure.isEmpty())
        return DefaultsOutcome{whole.failure};
    const auto image = DefaultsDatabase::image(whole.texts);
    if (!image || isTooMuch(values))
        return DefaultsOutcome{
            fileFailure(cannotWrite, m_filePath, u"it would become too large"_s)};

    const QFileInfo file(m_filePath);
    const FolderLock lock(file.absolutePath(), deadline);
    if (!lock.failure().isEmpty())
        return DefaultsOutcome{lock.failure()};
    // Another process may have been first.
    if (lookAtFile(m_filePath).stamp != before.database
        || (!before.database && lookAtFile(m_jsonPath).stamp != before.json))
        return std::nullopt;
    // Also without a database: SQLite would roll the new one back by a journal that was left
    // behind.
    QList<std::pair<QString, QString>> aside; // paths and their names now
    SetAside old;
    for (const QString &sidecar : sidecars) {
        const QString path = realPath() + sidecar;
        if (!old.failure.isEmpty() || !QFileInfo::exists(path))
            continue;
        old = setFileAside(path, damagedSuffix);
        aside.append({path, old.name});
    }
    if (old.failure.isEmpty()) {
        old = before.database ? lock.replaceFile(file.fileName(), *image, damagedSuffix)
                              : SetAside{m_jsonPath, lock.makeFile(file.fileName(), *image)};
    }
    if (!old.failure.isEmpty()) {
        for (const auto &[path, name] : std::as_const(aside))
            putFileBack(name, path);
        return DefaultsOutcome{old.failure};
    }
    m_values = values;
    if (before.state == State::Damaged)
        return DefaultsOutcome{{}, damageNotice(m_filePath, old.name)};
    if (before.json) {
        // Should this fail, the file counts for nothing all the same.
        setFileAside(m_jsonPath, u".taken-over"_s);
        lock.sync();
    }
    return DefaultsOutcome{};
}

bool SqliteUserDefaults::mayReplace(const Content &damaged) const
{
    const auto &stamp = damaged.database ? damaged.database : damaged.json;
    return stamp && std::chrono::nanoseconds(stamp->age()) >= m_options.restoringTime;
}

// Of the database, which may be behind a link: SQLite has its other files beside that.
QString SqliteUserDefaults::realPath() const
{
    const QString real = QFileInfo(m_filePath).canonicalFilePath();
    return real.isEmpty() ? m_filePath : real;
}

} // namespace tovel
