#pragma once

#include <QByteArray>

#include <cstdint>
#include <optional>

namespace tovel {

// A second run of this program that shows the fixture windows and prints their numbers.
class FixtureProcess
{
public:
    virtual ~FixtureProcess() = default;

    // False when it cannot be started.
    virtual bool start() = 0;

    virtual bool isRunning() const = 0;
    virtual std::int32_t processIdentifier() const = 0;

    // The next whole line that it printed, without the line end; nothing as long as there is none.
    // Does not wait.
    virtual std::optional<QByteArray> takeLine() = 0;

    // Terminates it and waits for its end. Nothing when it does not run.
    virtual void end() = 0;
};

} // namespace tovel
