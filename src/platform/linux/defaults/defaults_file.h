#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QString>

#include <optional>

namespace tovel {

// The files of a store of user defaults, as the file system sees them. Failures are sentences that
// name the file.

QString fileFailure(const QString &what, const QString &path, const QString &reason);

// Tells one state of a file from another.
struct FileStamp
{
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0;
    qint64 modified = 0; // nanoseconds
    qint64 changed = 0; // nanoseconds

    bool operator==(const FileStamp &) const = default;

    bool isSameFile(const FileStamp &other) const
    {
        return device == other.device && inode == other.inode;
    }
    // How long nobody has touched the file, in nanoseconds; negative under a clock that was wrong.
    qint64 age() const;
};

struct FileLook
{
    std::optional<FileStamp> stamp{}; // nothing when there is no such file
    QString failure{}; // when that cannot be told, or it is no regular file, or a link to nothing
};

// Opens nothing, so that a pipe or a device of that name holds nobody up.
FileLook lookAtFile(const QString &path);

struct SetAside
{
    QString name{}; // the path now
    QString failure{}; // empty, or why it is where it was
};

// Keeps other processes from making, or setting aside, a file of the folder. No file is needed for
// it, and the kernel ends it with the process. Where a file system cannot do it, nobody is kept
// from anything.
class FolderLock final
{
public:
    // Makes the folder, and those above it, for the user only. Waits for others until the deadline.
    FolderLock(const QString &folder, const QDeadlineTimer &deadline);
    ~FolderLock();

    FolderLock(const FolderLock &) = delete;
    FolderLock &operator=(const FolderLock &) = delete;

    const QString &failure() const { return m_failure; } // empty: it is held

    // Makes a file that has the bytes from its first moment on, for the user only, and that lasts
    // when this returns. Empty, or the reason why not, as when there is one already.
    QString makeFile(const QString &name, const QByteArray &bytes) const;

    // Such a file in the place of one, which is set aside. The name stands for the one or the other
    // at any moment, where the file system can swap two files.
    SetAside replaceFile(const QString &name, const QByteArray &bytes, const QString &suffix) const;

    // Makes renames in the folder last, where the file system can.
    void sync() const;

private:
    QString m_folder;
    int m_descriptor = -1;
    QString m_failure;
};

// Gives the file a name that nothing has: its own with the suffix, and if need be with "-2" and so
// on.
SetAside setFileAside(const QString &path, const QString &suffix);

// Gives it the name back, if nothing has that.
void putFileBack(const QString &name, const QString &path);

} // namespace tovel
