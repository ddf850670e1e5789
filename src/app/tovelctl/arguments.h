#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tovel {

// What a command line asks for.
struct Arguments
{
    enum class Command { Help, Version, Status, Apps, FlockAdd, FlockRemove, Rename, Move };

    Command command = Command::Help;
    bool json = false;
    QStringList applications; // FlockAdd and FlockRemove: at least one
    QString desktop; // Rename and Move
    QString name; // Rename
    std::optional<bool> follow; // Move: for this run alone

    bool operator==(const Arguments &) const = default;
};

struct ParsedArguments
{
    Arguments arguments;
    QString error; // why the line makes no sense; empty when it does
};

// Takes the command line without the program's name.
ParsedArguments parseArguments(const QStringList &line);

QString helpText();

} // namespace tovel
