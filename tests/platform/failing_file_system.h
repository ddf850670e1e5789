#pragma once

namespace tovel {

// SQLite's usual file system under another name, which does not do what changes a disk any more
// after a number of such steps: it fails, as on a full disk, or the process is killed.
class FailingFileSystem
{
public:
    enum class End { Once, ForGood, Killed };

    static const char *name();

    // Counts afresh. Without a call, or before the step is reached, all goes well.
    static void failAt(int step, End end);
    static bool wasReached();
    static void mend();
};

} // namespace tovel
