#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tovel {

// What another program, or a command line, asks of Tovel.
struct Request
{
    enum class Command { Status, Apps, FlockAdd, FlockRemove, Rename, Move };

    Command command = Command::Status;
    QStringList applications{}; // FlockAdd and FlockRemove: at least one
    QString desktop{}; // Rename and Move
    QString name{}; // Rename
    std::optional<bool> follow{}; // Move: for this run alone

    bool operator==(const Request &) const = default;
};

} // namespace tovel
