#pragma once

#include "platform/user_defaults.h"

#include <QMap>

#include <optional>

namespace tovel {

// A domain of user defaults in one JSON file, shared with other processes: reads see what others
// wrote, and a write changes its own keys alone. The file and its missing folders are made at the
// first write, readable for the user only (freedesktop.org base directories).
//
// A file that is not a text of parseDefaults counts as empty; the first write renames it, with
// ".damaged-" and a number at its end, and starts a new one. A file that cannot be read at all is
// left alone, and writes fail.
class JsonUserDefaults final : public UserDefaults
{
public:
    explicit JsonUserDefaults(QString filePath);

    std::optional<QVariant> object(const QString &key) const override;

    // On disk when it returns true. Waits up to two seconds for another process that is writing.
    // A value that could not be made to last is written along with the next one that can. Lone
    // surrogates in a text are not kept. A value of more than half the largest file is refused
    // like an unknown kind. Writes nothing when the file already holds this value.
    bool setObject(const QString &key, const QVariant &value) override;

    // Fails as setObject does; true when there is no such key.
    bool removeObject(const QString &key) override;

    // Of the latest write, else of the file as last read.
    QString errorString() const override;

private:
    // Tells one state of the file from another.
    struct Stamp
    {
        quint64 device = 0;
        quint64 inode = 0;
        qint64 size = 0;
        qint64 modified = 0; // nanoseconds
        qint64 changed = 0; // nanoseconds

        bool operator==(const Stamp &) const = default;
    };

    enum class FileState { Absent, Parsed, Damaged, Unreadable };

    struct FileContent
    {
        FileState state = FileState::Absent;
        std::optional<Stamp> stamp; // none while the file may still change unnoticed
        QByteArray bytes;
        QVariantMap values;
        QString error;
    };

    static FileContent readFile(const QString &filePath);

    void refresh() const;
    void adopt(const FileContent &content) const;
    bool store(const QString &key, const std::optional<QVariant> &value);
    QString writeUnsaved();

    QString m_filePath;
    mutable QVariantMap m_stored;
    mutable std::optional<Stamp> m_stamp;
    mutable QString m_readError;
    QString m_writeError;
    QMap<QString, std::optional<QVariant>> m_unsaved; // no value: to be removed
};

} // namespace tovel
