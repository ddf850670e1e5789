#pragma once

#include <span>

class QTextStream;

namespace tovel {

struct RuleCheck
{
    const char *name = nullptr; // what holds when the check passes
    bool (*holds)() = nullptr;
};

// What the rules of moving have to say to known cases.
std::span<const RuleCheck> ruleChecks();

// Runs the checks in order and prints a line for each; the first that fails is the last to run.
// Gives the exit status.
int runRuleChecks(std::span<const RuleCheck> checks, QTextStream &out, QTextStream &err);

} // namespace tovel
