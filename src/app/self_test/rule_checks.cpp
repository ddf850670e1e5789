#include "app/self_test/rule_checks.h"

#include "app/self_test/self_test.h"
#include "model/migration_rules.h"

namespace tovel {

namespace {

using Spaces = QList<std::uint64_t>;

bool canMove(bool minimized, bool fullscreen, const Spaces &spaces)
{
    const QSet<std::uint64_t> userSpaces{1, 2, 3};
    return !MigrationRules::skipReason(minimized, fullscreen, spaces, userSpaces).has_value();
}

TravelWindow windowOn(std::uint32_t id, std::uint64_t space)
{
    TravelWindow window;
    window.id = id;
    window.spaces = {space};
    return window;
}

QList<TravelWindow> splitFlock() { return {windowOn(1, 1), windowOn(2, 2), windowOn(3, 2)}; }

constexpr RuleCheck checks[] = {
    {"regular window can move", [] { return canMove(false, false, {2}); }},
    {"minimized window can move", [] { return canMove(true, false, {2}); }},
    {"full-screen window skipped", [] { return !canMove(false, true, {9}); }},
    {"all-desktops window skipped",
     [] {
         return !canMove(false, false, {1, 2});
     }},
    {"unknown desktop skipped", [] { return !canMove(false, false, {}); }},
    {"non-user space skipped", [] { return !canMove(false, false, {9}); }},
    {"split flock counted by actual desktop",
     [] {
         const QMap<std::uint64_t, int> counts{{1, 1}, {2, 2}};
         return MigrationRules::distribution(splitFlock()) == counts;
     }},
    {"empty flock has no location", [] { return MigrationRules::distribution({}).isEmpty(); }},
    {"split flock has no disabled destination",
     [] { return !MigrationRules::flockDesktop(splitFlock()).has_value(); }},
    {"only the flock's desktop is the current destination",
     [] { return MigrationRules::flockDesktop(splitFlock().sliced(1)) == 2u; }},
    {"unknown flock does not disable a monitor's visible desktop",
     [] { return !MigrationRules::flockDesktop({}).has_value(); }},
};

} // namespace

std::span<const RuleCheck> ruleChecks() { return checks; }

int runRuleChecks(std::span<const RuleCheck> list, QTextStream &out, QTextStream &err)
{
    for (const RuleCheck &check : list) {
        if (!check.holds()) {
            err << "FAIL: " << check.name << Qt::endl;
            return SelfTestFailed;
        }
        out << "PASS: " << check.name << Qt::endl;
    }
    return SelfTestPassed;
}

} // namespace tovel
