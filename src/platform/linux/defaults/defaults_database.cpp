#include "platform/linux/defaults/defaults_database.h"

#include "platform/linux/defaults/json_value.h"

#include <QFile>
#include <QThread>

#include <cerrno>
#include <utility>

#include <sqlite3.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr unsigned long lockRetry = 2000; // microseconds; SQLite's own waits grow too long
constexpr int largestText = 2 * maximumDefaultsSize; // bytes, also of a statement of the schema
constexpr char schemaVersion[] = "1";
constexpr char schema[] = "CREATE TABLE defaults(key TEXT PRIMARY KEY, value TEXT NOT NULL) "
                          "WITHOUT ROWID";

// Whether it is the file's own fault. Whatever else goes wrong says nothing of the file.
bool isDamage(int code)
{
    switch (code & 0xff) {
    case SQLITE_ERROR:
    case SQLITE_CORRUPT:
    case SQLITE_TOOBIG:
    case SQLITE_FORMAT:
    case SQLITE_NOTADB:
        return true;
    default:
        return false;
    }
}

void distrust(sqlite3 *database)
{
    constexpr std::pair<int, int> options[] = {{SQLITE_DBCONFIG_DEFENSIVE, 1},
                                               {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                                               {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                                               {SQLITE_DBCONFIG_ENABLE_VIEW, 0}};
    for (const auto &[option, on] : options)
        sqlite3_db_config(database, option, on, nullptr);
    constexpr std::pair<int, int> limits[]
        = {{SQLITE_LIMIT_LENGTH, largestText}, {SQLITE_LIMIT_SQL_LENGTH, largestText},
           {SQLITE_LIMIT_COLUMN, 100},         {SQLITE_LIMIT_EXPR_DEPTH, 20},
           {SQLITE_LIMIT_ATTACHED, 0},         {SQLITE_LIMIT_VDBE_OP, 25'000}};
    for (const auto &[limit, value] : limits)
        sqlite3_limit(database, limit, value);
}

} // namespace

class DefaultsDatabase::Statement
{
public:
    Statement(DefaultsDatabase &database, const char *sql)
        : m_owner(database)
    {
        m_owner.m_code = sqlite3_prepare_v2(m_owner.m_database, sql, -1, &m_statement, nullptr);
    }
    ~Statement() { sqlite3_finalize(m_statement); }

    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    void bind(int place, const QByteArray &text)
    {
        if (m_statement)
            sqlite3_bind_text64(m_statement, place, text.constData(),
                                static_cast<sqlite3_uint64>(text.size()), SQLITE_TRANSIENT,
                                SQLITE_UTF8);
    }

    // Whether there is a row; without one, whether that is a failure is told by the owner's code.
    bool step()
    {
        if (!m_statement)
            return false;
        m_owner.m_code = sqlite3_step(m_statement);
        return m_owner.m_code == SQLITE_ROW;
    }

    bool isText(int column) const
    {
        return sqlite3_column_type(m_statement, column) == SQLITE_TEXT;
    }
    QByteArray text(int column) const
    {
        const auto *bytes
            = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, column));
        return QByteArray(bytes, sqlite3_column_bytes(m_statement, column));
    }

private:
    DefaultsDatabase &m_owner;
    sqlite3_stmt *m_statement = nullptr;
};

DefaultsDatabase::DefaultsDatabase(const QString &path, const char *fileSystem,
                                   const QDeadlineTimer &deadline)
    : m_deadline(deadline)
{
    m_code = sqlite3_open_v2(QFile::encodeName(path).constData(), &m_database,
                             SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE
                                 | SQLITE_OPEN_EXRESCODE,
                             fileSystem);
    if (m_code != SQLITE_OK)
        return;
    distrust(m_database);
    sqlite3_busy_handler(m_database, &DefaultsDatabase::wait, this);
}

DefaultsDatabase::~DefaultsDatabase() { sqlite3_close(m_database); }

DefaultsDatabase::Reading DefaultsDatabase::read()
{
    Reading reading = begin("BEGIN");
    if (reading.state == State::Read && !run("COMMIT"))
        return failure();
    return reading;
}

DefaultsDatabase::Reading DefaultsDatabase::beginChange()
{
    // Somebody may have given it a write-ahead log.
    if (m_code != SQLITE_OK || !run("PRAGMA journal_mode = DELETE"))
        return failure();
    m_code = SQLITE_OK;
    return begin("BEGIN IMMEDIATE");
}

QString DefaultsDatabase::store(const DefaultsTexts &texts)
{
    if (put(texts) && run("COMMIT"))
        return {};
    const QString reason = failure().reason;
    run("ROLLBACK");
    return reason;
}

std::optional<QByteArray> DefaultsDatabase::image(const DefaultsTexts &texts)
{
    const QDeadlineTimer none;
    DefaultsDatabase made(u":memory:"_s, nullptr, none);
    if (made.m_code != SQLITE_OK || !made.run(schema)
        || !made.run(("PRAGMA user_version = " + QByteArray(schemaVersion)).constData())
        || !made.put(texts))
        return std::nullopt;
    sqlite3_int64 size = 0;
    unsigned char *bytes = sqlite3_serialize(made.m_database, "main", &size, 0);
    if (!bytes)
        return std::nullopt;
    const QByteArray image(reinterpret_cast<const char *>(bytes), size);
    sqlite3_free(bytes);
    return image;
}

DefaultsDatabase::Reading DefaultsDatabase::begin(const char *how)
{
    if (m_code != SQLITE_OK)
        return failure();
    for (const char *sql : {"PRAGMA mmap_size = 0", "PRAGMA temp_store = MEMORY",
                            "PRAGMA cell_size_check = ON", "PRAGMA synchronous = EXTRA", how}) {
        if (!run(sql))
            return failure();
    }
    if (const auto unknown = unknownSchema())
        return *unknown;
    // Checked last, for that takes long where there is more than may be.
    Reading reading = readValues();
    if (reading.state == State::Read && !isWhole())
        return failure();
    return reading;
}

DefaultsDatabase::Reading DefaultsDatabase::damaged()
{
    return {State::Damaged, {}, u"it is damaged"_s};
}

DefaultsDatabase::Reading DefaultsDatabase::failure() const
{
    const int code = m_code & 0xff;
    if (isDamage(m_code))
        return damaged();
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED)
        return {State::Unreadable, {}, u"another process holds it"_s};
    if (code == SQLITE_FULL)
        return {State::Unreadable, {}, qt_error_string(ENOSPC)};
    if (code == SQLITE_READONLY)
        return {State::Unreadable, {}, u"it is write-protected"_s};
    const int error = m_database ? sqlite3_system_errno(m_database) : 0;
    return {State::Unreadable,
            {},
            error != 0 ? qt_error_string(error) : QString::fromUtf8(sqlite3_errstr(m_code))};
}

// What keeps the values from being read, if anything does.
std::optional<DefaultsDatabase::Reading> DefaultsDatabase::unknownSchema()
{
    {
        Statement version(*this, "PRAGMA user_version");
        if (!version.step())
            return failure();
        if (version.text(0).toInt() > QByteArray(schemaVersion).toInt())
            return Reading{State::Unreadable, {}, u"it was written by a newer version"_s};
    }
    {
        // SQLite takes an empty file for a new database; nobody here leaves one.
        Statement objects(*this, "SELECT sql FROM sqlite_schema");
        const bool isKnown = objects.step() && objects.isText(0) && objects.text(0) == schema;
        if (!isKnown)
            return m_code == SQLITE_ROW || m_code == SQLITE_DONE ? damaged() : failure();
        if (objects.step())
            return damaged();
        if (m_code != SQLITE_DONE)
            return failure();
    }
    return std::nullopt;
}

bool DefaultsDatabase::isWhole()
{
    Statement check(*this, "PRAGMA integrity_check(1)");
    if (!check.step())
        return false;
    const bool isWhole = check.text(0) == "ok";
    if (!isWhole)
        m_code = SQLITE_CORRUPT;
    return isWhole;
}

DefaultsDatabase::Reading DefaultsDatabase::readValues()
{
    Reading reading;
    qsizetype size = 0;
    Statement rows(*this, "SELECT key, value FROM defaults");
    while (rows.step()) {
        // Before they are asked for as texts, which makes them texts.
        const bool areTexts = rows.isText(0) && rows.isText(1);
        const QByteArray key = rows.text(0);
        const QByteArray value = rows.text(1);
        size += key.size() + value.size();
        const bool isTooMuch
            = size > maximumDefaultsSize || reading.values.size() == maximumDefaultsCount;
        if (!areTexts || isTooMuch)
            return damaged();
        reading.values.insert(QString::fromUtf8(key), variantFromJson(value).value_or(QVariant()));
    }
    return m_code == SQLITE_DONE ? reading : failure();
}

bool DefaultsDatabase::run(const char *sql)
{
    Statement statement(*this, sql);
    while (statement.step()) { }
    return m_code == SQLITE_DONE;
}

bool DefaultsDatabase::put(const DefaultsTexts &texts)
{
    for (auto it = texts.cbegin(); it != texts.cend(); ++it) {
        const bool isKept = it.value().has_value();
        Statement statement(*this,
                            isKept ? "INSERT OR REPLACE INTO defaults VALUES (?1, ?2)"
                                   : "DELETE FROM defaults WHERE key = ?1");
        statement.bind(1, it.key().toUtf8());
        if (isKept)
            statement.bind(2, *it.value());
        statement.step();
        if (m_code != SQLITE_DONE)
            return false;
    }
    return true;
}

int DefaultsDatabase::wait(void *self, int)
{
    if (static_cast<DefaultsDatabase *>(self)->m_deadline.hasExpired())
        return 0;
    QThread::usleep(lockRetry);
    return 1;
}

} // namespace tovel
