#pragma once

namespace tovel {

// Keeps other runs of the program from changing the stored choices between reading and writing
// them: a choice is always written whole, and of two that start from the same state the later would
// undo the earlier. Waits up to five seconds for its turn, then goes on without: a run that hangs
// must not lock the user out. The kernel ends the lock with the process.
class ChoicesLock final
{
public:
    ChoicesLock();
    ~ChoicesLock();

    ChoicesLock(const ChoicesLock &) = delete;
    ChoicesLock &operator=(const ChoicesLock &) = delete;

private:
    int m_file = -1;
};

} // namespace tovel
