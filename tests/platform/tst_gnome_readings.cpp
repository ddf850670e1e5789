#include "platform/session/gnome/picture.h"

#include <QTest>

using namespace tovel;
using namespace tovel::gnome;
using namespace Qt::StringLiterals;

namespace {

using Row = QList<std::pair<std::uint32_t, std::uint32_t>>; // workspaces, a window on each or 0

// A session whose workspaces 1 and 2 are there, with the windows and whatever else is given.
QByteArray session(const QByteArray &windows, const QByteArray &rest = R"("shown":1)")
{
    return R"({"workspaces":[{"id":1},{"id":2}],"windows":[)" + windows + "]," + rest + '}';
}

Snapshot rowOf(const Row &row)
{
    Snapshot snapshot{.shown = row.first().first};
    for (const auto &[number, window] : row) {
        snapshot.workspaces.append(ShellWorkspace{number});
        if (window != 0)
            snapshot.windows.append({.workspace = number, .facts = {.id = window}});
    }
    return snapshot;
}

QList<std::uint64_t> idsOf(const Picture &picture)
{
    QList<std::uint64_t> ids;
    for (const SessionWorkspace &workspace : picture.outputs().value(0).workspaces)
        ids.append(workspace.id);
    return ids;
}

} // namespace

class TestGnomeReadings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aWindowIsToldWithWhatItCarries()
    {
        const auto snapshot = readSnapshot(session(
            R"({"id":7,"type":"normal","title":"T","workspace":2,"minimized":true,"fullScreen":true,)"
            R"("skipsTaskBar":true,"frame":[10,-20,300,200],"process":42,"x11":4194305,)"
            R"("appId":"window:7","sandboxId":"s","gtkApplicationId":"g","className":"C",)"
            R"("instanceName":"i"},{"id":8,"type":"normal","workspace":0,"parent":7,)"
            R"("appId":"org.example.App.desktop"},{"id":9,"workspace":3,"parent":6,"className":"w"})",
            R"("active":8,"shown":2,"stacking":[8,7,8,6])"));
        QVERIFY(snapshot);
        const SessionWindow first{.id = 7,
                                  .title = u"T"_s,
                                  .minimized = true,
                                  .fullScreen = true,
                                  .skipsTaskBar = true,
                                  .frame = QRectF(10, -20, 300, 200),
                                  .process = 42,
                                  .sandboxId = u"s"_s,
                                  .instanceName = u"i"_s,
                                  .className = u"C"_s,
                                  .gtkApplicationId = u"g"_s};
        const SessionWindow dialog{
            .id = 8, .kind = WindowKind::Dialog, .transientFor = 7, .appId = u"org.example.App"_s};
        SessionWindow last{.id = 9, .appId = u"w"_s, .className = u"w"_s};
        last.kind = snapshot->windows[2].facts.kind; // whoever names a parent is a dialog
        QCOMPARE(snapshot->windows,
                 (QList<ShellWindow>{
                     {2, false, 4194305, first}, {0, true, 0, dialog}, {0, false, 0, last}}));
        QCOMPARE(snapshot->stacking, (QList<std::uint32_t>{8, 7}));
        QCOMPARE(snapshot->active, 8U);
        QCOMPARE(snapshot->shown, 2U);
    }

    void nonsenseIsLeftOut_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<qsizetype>("windows"); // -1: it is no session
        QTest::newRow("nothing") << QByteArray() << qsizetype(-1);
        QTest::newRow("no object") << QByteArray("[1]") << qsizetype(-1);
        QTest::newRow("cut off") << session(R"({"id":1})").chopped(1) << qsizetype(-1);
        QTest::newRow("no workspaces") << QByteArray(R"({"windows":[{"id":1}]})") << qsizetype(-1);
        QTest::newRow("endless") << session(QByteArray(MaximumSnapshotLength, ' '))
                                 << qsizetype(-1);
        QTest::newRow("nested") << session(QByteArray(5000, '[') + QByteArray(5000, ']'))
                                << qsizetype(-1);
        QTest::newRow("ids") << session(
            R"({"id":1},{"id":1},{"id":0},{"id":-1},{"id":4294967296},{"id":"2"},{"id":1.5},{},7,{"id":4294967295})")
                             << qsizetype(2);
        QByteArray many = R"({"id":1})";
        for (int i = 2; i <= MaximumWindows + 1; ++i)
            many += R"(,{"id":)" + QByteArray::number(i) + '}';
        QTest::newRow("too many") << session(many) << MaximumWindows;
    }
    void nonsenseIsLeftOut()
    {
        QFETCH(QByteArray, json);
        QFETCH(qsizetype, windows);
        const auto snapshot = readSnapshot(json);
        QCOMPARE(snapshot ? snapshot->windows.size() : -1, windows);
    }

    void screensHaveTheirNamesByTheirPlaces()
    {
        const auto snapshot = readSnapshot(session(
            {},
            R"("onlyOnPrimary":true,"monitors":[{"bounds":[0,0,100,50]},{"bounds":[1,2]},{"bounds":"x"},)"
            R"({"bounds":[100,0,1e300,50],"primary":true}])"));
        Picture picture;
        picture.draw(*snapshot, {{QPointF(100, 0), u"eDP-1"_s, true}});
        QCOMPARE(picture.screens(),
                 (QList<SessionScreen>{{2, u"eDP-1"_s, QRectF(100, 0, 1 << 20, 50), true},
                                       {1, u"Monitor 1"_s, QRectF(0, 0, 100, 50), false}}));
        const SessionOutput row = picture.outputs().value(0);
        QCOMPARE(row.screen, 2U);
        // Names that were given hang on what stays when screens and log-ins change.
        QVERIFY(row.isLone);
        QCOMPARE(row.workspaces.value(1).uuid, u"2"_s);
    }

    void workspacesKeepTheirIds_data()
    {
        QTest::addColumn<Row>("before");
        QTest::addColumn<Row>("after");
        QTest::addColumn<QByteArray>("between");
        QTest::addColumn<QList<std::uint64_t>>("ids");
        const Row three{{1, 11}, {2, 12}, {3, 0}};
        const auto add = [&three](const char *name, const Row &after, const QByteArray &between,
                                  const QList<std::uint64_t> &ids) {
            QTest::newRow(name) << three << after << between << ids;
        };
        add("of which one went", {{2, 12}, {3, 0}, {9, 0}}, "", {2, 3, 9});
        add("numbered anew", {{4, 11}, {5, 12}, {6, 0}}, "same Shell", {1, 2, 3});
        add("numbered anew and moved", {{1, 12}, {2, 11}, {3, 0}}, "same Shell", {2, 1, 3});
        add("numbered anew where one went", {{1, 12}, {2, 0}}, "same Shell", {2, 4});
        add("of another Shell", {{1, 12}, {2, 11}, {3, 0}, {4, 0}}, "other Shell", {1, 2, 3, 4});
    }
    void workspacesKeepTheirIds()
    {
        QFETCH(Row, before);
        QFETCH(Row, after);
        QFETCH(QByteArray, between);
        Picture picture;
        picture.draw(rowOf(before), {});
        const std::uint64_t revision = picture.revision();
        if (!between.isEmpty()) {
            picture.expectOtherNumbers(between == "same Shell");
            picture.clear();
            QVERIFY(picture.outputs().isEmpty() && picture.windows().isEmpty());
        }
        picture.draw(rowOf(after), {});
        QTEST(idsOf(picture), "ids");
        QVERIFY(picture.revision() > revision);
        QCOMPARE(picture.outputs()[0].shown, idsOf(picture).first());
        QCOMPARE(picture.workspace(idsOf(picture).last()), after.last().first);
        QCOMPARE(picture.workspace(99), 0U);
    }
};

QTEST_GUILESS_MAIN(TestGnomeReadings)
#include "tst_gnome_readings.moc"
