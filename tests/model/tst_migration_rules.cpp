#include "model/migration_rules.h"
#include "model/running_app.h"

#include <QCollator>
#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

class TestMigrationRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstReasonCounts();
    void countsWindowsPerDesktop();
    void ordersApplications();
};

void TestMigrationRules::firstReasonCounts()
{
    const auto reason = [](bool minimized, bool fullscreen, const QList<std::uint64_t> &spaces) {
        return MigrationRules::skipReason(minimized, fullscreen, spaces, {1, 2, 3})
            .value_or(u"none"_s);
    };
    QCOMPARE(reason(false, false, {2}), u"none"_s);
    QCOMPARE(reason(true, false, {2}), u"none"_s);
    QCOMPARE(reason(false, true, {1, 2}), u"Full screen — leave full screen to move"_s);
    QCOMPARE(reason(false, false, {1, 2}), u"On multiple desktops — set Assign To to None"_s);
    QCOMPARE(reason(true, false, {}), u"Desktop unavailable"_s);
    QCOMPARE(reason(false, false, {9}), u"Not on a regular desktop"_s);
}

void TestMigrationRules::countsWindowsPerDesktop()
{
    const TravelWindow first{.id = 1, .spaces = {1}};
    const TravelWindow second{.id = 2, .spaces = {2}};
    const TravelWindow both{.id = 4, .spaces = {1, 2}};
    const TravelWindow nowhere{.id = 5};
    using Counts = QMap<std::uint64_t, int>;
    QCOMPARE(MigrationRules::distribution({first, second, second}), (Counts{{1, 1}, {2, 2}}));
    QCOMPARE(MigrationRules::distribution({both, nowhere}), (Counts{{1, 1}, {2, 1}}));
    QVERIFY(MigrationRules::flockDesktop({second, second, nowhere}) == 2U);
    QVERIFY(!MigrationRules::flockDesktop({first, second}));
    QVERIFY(!MigrationRules::flockDesktop({both}));
    QVERIFY(!MigrationRules::flockDesktop({nowhere}));
}

void TestMigrationRules::ordersApplications()
{
    QCollator collator(QLocale(u"en"_s));
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    const RunningApp zed{.id = u"z"_s, .name = u"Zed"_s};
    const RunningApp alpha{.id = u"a"_s, .name = u"Alpha"_s};
    const RunningApp beta{.id = u"b"_s, .name = u"beta"_s};
    const RunningApp otherBeta{.id = u"c"_s, .name = u"Beta"_s};
    using Apps = QList<RunningApp>;
    QCOMPARE(sortedApps({alpha, zed}, {u"z"_s}, collator), (Apps{zed, alpha}));
    QCOMPARE(sortedApps({zed, otherBeta, beta, alpha}, {}, collator),
             (Apps{alpha, otherBeta, beta, zed}));
    QCOMPARE(sortedApps({beta, otherBeta}, {}, collator), (Apps{beta, otherBeta}));
}

QTEST_GUILESS_MAIN(TestMigrationRules)
#include "tst_migration_rules.moc"
