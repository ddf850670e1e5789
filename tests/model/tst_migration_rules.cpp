#include "model/migration_rules.h"
#include "model/running_app.h"

#include <QCollator>
#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;
using Spaces = QList<std::uint64_t>;

class TestMigrationRules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstReasonCounts_data();
    void firstReasonCounts();
    void countsWindowsPerDesktop();
    void ordersApplications();
};

void TestMigrationRules::firstReasonCounts_data()
{
    QTest::addColumn<bool>("minimized");
    QTest::addColumn<bool>("fullscreen");
    QTest::addColumn<Spaces>("spaces");
    QTest::addColumn<QString>("reason");

    const QString fullScreen = u"Full screen — leave full screen to move"_s;
    const QString several = u"On multiple desktops — set Assign To to None"_s;
    QTest::newRow("on a desktop") << false << false << Spaces{2} << QString();
    QTest::newRow("minimized") << true << false << Spaces{2} << QString();
    QTest::newRow("full screen") << false << true << Spaces{1, 2} << fullScreen;
    QTest::newRow("on two desktops") << false << false << Spaces{1, 2} << several;
    QTest::newRow("nowhere") << true << false << Spaces{} << u"Desktop unavailable"_s;
    QTest::newRow("elsewhere") << false << false << Spaces{9} << u"Not on a regular desktop"_s;
}

void TestMigrationRules::firstReasonCounts()
{
    QFETCH(bool, minimized);
    QFETCH(bool, fullscreen);
    QFETCH(Spaces, spaces);
    QFETCH(QString, reason);
    const auto result = MigrationRules::skipReason(minimized, fullscreen, spaces, {1, 2, 3});
    QCOMPARE(result.value_or(QString()), reason);
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
