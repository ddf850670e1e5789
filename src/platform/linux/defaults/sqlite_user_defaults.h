#pragma once

#include "platform/linux/defaults/defaults_database.h"
#include "platform/linux/defaults/defaults_file.h"
#include "platform/user_defaults.h"

#include <QDeadlineTimer>

#include <chrono>
#include <optional>

namespace tovel {

struct SqliteUserDefaultsOptions
{
    // How long a call waits for other processes. After one in vain, none does for a second, so that
    // whatever takes several of them waits once.
    std::chrono::milliseconds patience{200};
    // A damaged file that was touched later than this is left alone: it may be on its way back
    // from a backup.
    std::chrono::seconds restoringTime{60};
    const char *fileSystem = nullptr; // a virtual one of SQLite's; null: the usual
};

// A domain of user defaults in one SQLite database, shared with other processes. The file and its
// missing folders are made by the first change, for the user only (freedesktop.org base
// directories). It is looked at anew for each call, so that one which was replaced, restored or
// removed meanwhile is noticed, and nothing of the one before is written to it.
//
// As long as there is no database, the values are those of a JSON file of parseDefaults, in which
// earlier versions kept them. The first change takes them along and renames that file, with
// ".taken-over" at its end.
//
// A file that cannot be read is left alone, and nothing is stored. So is a damaged one; but when
// nobody has touched it for the restoring time, a change by the user renames it, with ".damaged" at
// its end, and starts a new one, with the values as they were last read in this process. The
// change's outcome says so.
class SqliteUserDefaults final : public UserDefaults
{
public:
    SqliteUserDefaults(QString filePath, QString jsonPath, SqliteUserDefaultsOptions options = {});

    DefaultsReading dictionaryRepresentation() const override;
    DefaultsOutcome change(const Decision &decide, DefaultsAuthor author) override;

private:
    using State = DefaultsDatabase::State;

    // What the files hold.
    struct Content
    {
        State state = State::Read;
        QVariantMap values{};
        QString failure{};
        std::optional<FileStamp> database{}; // nothing: there is none
        std::optional<FileStamp> json{}; // nothing: there is none, or it does not count any more
    };

    // Nothing: the files have changed in the midst of it.
    using Attempt = std::optional<DefaultsOutcome>;

    Content content(const QDeadlineTimer &deadline) const;
    Content databaseContent(const FileStamp &stamp, const QDeadlineTimer &deadline) const;
    Content jsonContent() const;
    QString sidecarFailure() const;
    Attempt attemptChange(const Decision &decide, DefaultsAuthor author,
                          const QDeadlineTimer &deadline);
    Attempt changeDatabase(const Decision &decide, const FileStamp &stamp,
                           const QDeadlineTimer &deadline);
    Attempt makeDatabase(const QVariantMap &values, const Content &before,
                         const QDeadlineTimer &deadline);
    bool mayReplace(const Content &damaged) const;
    QString realPath() const;
    auto patiently(const auto &work) const;

    QString m_filePath;
    QString m_jsonPath;
    SqliteUserDefaultsOptions m_options;
    mutable QVariantMap m_values; // as last read
    mutable QDeadlineTimer m_impatience; // while that goes on, no call waits
    mutable std::optional<FileStamp> m_stamp; // of the database they are of, once it is at rest
};

} // namespace tovel
