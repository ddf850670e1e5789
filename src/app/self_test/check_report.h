#pragma once

#include <QString>

#include <span>

class QTextStream;

namespace tovel {

struct CheckResult
{
    QString name;
    bool holds = false;
};

// Prints a line for each. Gives the exit status.
int report(std::span<const CheckResult> results, QTextStream &out);

} // namespace tovel
