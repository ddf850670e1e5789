#pragma once

#include <QString>

#include <cstdint>

namespace tovel {

struct MadeSpace
{
    std::uint64_t id = 0; // 0: none was made
    QString refusal{}; // why; the part of a sentence after its capital letter, without a full stop
};

// Makes spaces, in sessions whose spaces come and go by name.
class SpaceMaker
{
public:
    virtual ~SpaceMaker() = default;

    // A space without windows, that is listed from now on. It is there until its last window has
    // left it, or until the program ends if no window ever came. Without a name it has the lowest
    // number that is free.
    virtual MadeSpace makeSpace(const QString &name) = 0;
};

} // namespace tovel
