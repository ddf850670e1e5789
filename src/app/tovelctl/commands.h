#pragma once

#include "app/tovelctl/arguments.h"
#include "model/tovel_model.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>

#include <functional>

namespace tovel {

namespace ExitStatus {
inline constexpr int Done = 0;
inline constexpr int Incomplete = 1;
inline constexpr int Usage = 2;
inline constexpr int NothingTried = 3;
inline constexpr int Signalled = 128; // plus the signal's number
} // namespace ExitStatus

// Where a command writes to, and what it has to know of its surroundings.
struct CommandContext
{
    std::function<void(const QString &)> print; // to standard output
    std::function<void(const QString &)> complain; // a line to standard error
    std::function<void(const QString &)> progress; // empty: nobody watches
    QString missingSession; // empty: there is one
    QStringList limits;
    int *interrupted = nullptr; // becomes the number of the signal that asks to stop
};

// Carries out any command but Help and Version, on the current platform, and gives the program's
// exit status. The arguments and the context are copied; the model is borrowed and must outlive
// the task.
QCoro::Task<int> runCommand(TovelModel &model, Arguments arguments, CommandContext context);

// What is left to say where there is no session and the command needs one.
int refuseWithoutSession(const Arguments &arguments, const CommandContext &context);

// Whether a command makes sense where there is no session.
bool worksWithoutSession(const Arguments &arguments);

} // namespace tovel
