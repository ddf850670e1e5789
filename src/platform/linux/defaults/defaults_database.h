#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QMap>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>

struct sqlite3;

namespace tovel {

// Values as jsonFromVariant writes them, by key; one without a text is removed.
using DefaultsTexts = QMap<QString, std::optional<QByteArray>>;

// A database of user defaults in a file that is there: one table of keys and values. The file may
// be anybody's work: what is not such a database is damaged, and nothing in it is ever run.
//
// A rollback journal, not a write-ahead log: it is there during a change only, so that a file
// which is copied or restored is whole by itself, and needs no memory shared between processes,
// which network file systems lack. Each commit is synchronised, the folder included.
class DefaultsDatabase final
{
public:
    enum class State {
        Read,
        Damaged, // not a database of user defaults, or not a whole one
        Unreadable // it may be a good one; nothing is known
    };

    struct Reading
    {
        State state = State::Read;
        QVariantMap values{}; // a null one is of an unknown kind
        QString reason{}; // why it was not read
    };

    // Waits for other processes until the deadline, which it borrows. Of a virtual file system of
    // SQLite's, or its usual one when that is null.
    DefaultsDatabase(const QString &path, const char *fileSystem, const QDeadlineTimer &deadline);
    ~DefaultsDatabase();

    DefaultsDatabase(const DefaultsDatabase &) = delete;
    DefaultsDatabase &operator=(const DefaultsDatabase &) = delete;

    Reading read();

    // Reads, and keeps everybody else from changing anything until this is destroyed or the change
    // is stored.
    Reading beginChange();

    // Empty, or the reason why nothing was stored.
    QString store(const DefaultsTexts &texts);

    // A whole database that has the values. Nothing when there is no memory for it.
    static std::optional<QByteArray> image(const DefaultsTexts &texts);

private:
    class Statement;

    static Reading damaged();

    Reading begin(const char *how);
    Reading failure() const;
    std::optional<Reading> unknownSchema();
    Reading readValues();
    bool isWhole(); // if not, the code tells why
    bool run(const char *sql);
    bool put(const DefaultsTexts &texts);

    static int wait(void *self, int attempts);

    sqlite3 *m_database = nullptr;
    int m_code = 0; // of the latest call
    const QDeadlineTimer &m_deadline;
};

} // namespace tovel
