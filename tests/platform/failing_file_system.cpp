#include "failing_file_system.h"

#include <csignal>
#include <limits>

#include <sqlite3.h>

namespace tovel {

namespace {

constexpr int never = std::numeric_limits<int>::max();
int stepsLeft = never;
auto end = FailingFileSystem::End::Once;

bool fails()
{
    const bool isNow = stepsLeft <= 0;
    const bool failed = stepsLeft < 0;
    if (stepsLeft != never)
        --stepsLeft;
    if (isNow && end == FailingFileSystem::End::Killed)
        std::raise(SIGKILL);
    return isNow && (!failed || end == FailingFileSystem::End::ForGood);
}

sqlite3_vfs *usual() { return sqlite3_vfs_find(nullptr); }

struct File
{
    sqlite3_file base;
    sqlite3_file *real; // behind this one
};

sqlite3_file *real(sqlite3_file *file) { return reinterpret_cast<File *>(file)->real; }

template <auto Method, typename... Arguments>
int forward(sqlite3_file *file, Arguments... arguments)
{
    return (real(file)->pMethods->*Method)(real(file), arguments...);
}

int write(sqlite3_file *file, const void *bytes, int size, sqlite3_int64 offset)
{
    if (!fails())
        return forward<&sqlite3_io_methods::xWrite>(file, bytes, size, offset);
    forward<&sqlite3_io_methods::xWrite>(file, bytes, size / 2, offset);
    return SQLITE_FULL;
}

int truncate(sqlite3_file *file, sqlite3_int64 size)
{
    return fails() ? SQLITE_IOERR_TRUNCATE : forward<&sqlite3_io_methods::xTruncate>(file, size);
}

int sync(sqlite3_file *file, int flags)
{
    return fails() ? SQLITE_IOERR_FSYNC : forward<&sqlite3_io_methods::xSync>(file, flags);
}

constexpr sqlite3_io_methods methods = {
    1,
    &forward<&sqlite3_io_methods::xClose>,
    &forward<&sqlite3_io_methods::xRead, void *, int, sqlite3_int64>,
    &write,
    &truncate,
    &sync,
    &forward<&sqlite3_io_methods::xFileSize, sqlite3_int64 *>,
    &forward<&sqlite3_io_methods::xLock, int>,
    &forward<&sqlite3_io_methods::xUnlock, int>,
    &forward<&sqlite3_io_methods::xCheckReservedLock, int *>,
    &forward<&sqlite3_io_methods::xFileControl, int, void *>,
    &forward<&sqlite3_io_methods::xSectorSize>,
    &forward<&sqlite3_io_methods::xDeviceCharacteristics>,
};

int open(sqlite3_vfs *, const char *path, sqlite3_file *file, int flags, int *outFlags)
{
    auto *shim = reinterpret_cast<File *>(file);
    shim->real = reinterpret_cast<sqlite3_file *>(shim + 1);
    const int result = usual()->xOpen(usual(), path, shim->real, flags, outFlags);
    shim->base.pMethods = result == SQLITE_OK ? &methods : nullptr;
    return result;
}

int remove(sqlite3_vfs *, const char *path, int syncFolder)
{
    return fails() ? SQLITE_IOERR_DELETE : usual()->xDelete(usual(), path, syncFolder);
}

} // namespace

const char *FailingFileSystem::name()
{
    static sqlite3_vfs system = [] {
        sqlite3_initialize();
        sqlite3_vfs made = *usual();
        made.zName = "failing";
        made.szOsFile += static_cast<int>(sizeof(File));
        made.xOpen = &open;
        made.xDelete = &remove;
        return made;
    }();
    static const int registered = sqlite3_vfs_register(&system, 0);
    return registered == SQLITE_OK ? system.zName : "none";
}

void FailingFileSystem::failAt(int step, End how)
{
    stepsLeft = step;
    end = how;
}

bool FailingFileSystem::wasReached() { return stepsLeft < 0; }

void FailingFileSystem::mend() { stepsLeft = never; }

} // namespace tovel
