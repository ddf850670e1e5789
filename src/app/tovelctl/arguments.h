#pragma once

#include "app/commands/request.h"

#include <QString>
#include <QStringList>

namespace tovel {

// What a command line asks for.
struct Arguments
{
    enum class Purpose { Help, Version, Access, Command };

    Purpose purpose = Purpose::Command;
    Request request{}; // when that is its purpose
    bool json = false;

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
