#include "model_world.h"

#include <QTest>

using namespace tovel;

class TestSwitching : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void jumps_data();
    void jumps();
    void steps_data();
    void steps();
    void movesTheCursorToTheDisplay_data();
    void movesTheCursorToTheDisplay();
    void waitsForTheRightChange();
    void givesUpAfterManySteps();
};

void TestSwitching::jumps_data()
{
    QTest::addColumn<bool>("listed"); // through accessibility
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("journal"); // of what came before the keys
    QTest::addColumn<bool>("arrives"); // by the jump, without keys
    QTest::addColumn<double>("seconds");
    const auto row = [](const char *name, const QString &journal, bool arrives, double seconds,
                        const Change &change, bool listed = true) {
        QTest::newRow(name) << listed << change << journal << arrives << seconds;
    };
    const QString activated = u"AXMain 101,AXRaise 101,activate 500"_s;
    const double keys = 0.1 + 0.35; // one step
    row("at once", activated, true, 0.1 + 0.35, nothing);
    row("late", activated, true, 2.0 + 0.35,
        [](auto &w) { w.app(notesPid).activationDelay = 1.95; });
    row("too late", activated, false, 2.5 + keys,
        [](auto &w) { w.app(notesPid).activation = SimActivation::Stays; });
    row("refused", activated, false, keys,
        [](auto &w) { w.app(notesPid).activation = SimActivation::Refused; });
    row("minimized", {}, false, keys, [](auto &w) { w.window(101).minimized = true; });
    row("minimized unreadable", {}, false, keys, [](auto &w) {
        w.window(101).attributes[u"AXMinimized"_s] = {kAXErrorSuccess, 0};
    });
    row("activation stays here", {}, false, keys,
        [](auto &w) { w.desktop.dockDefaults().setObject(u"workspaces-auto-swoosh"_s, false); });
    row("became another window", {}, false, keys,
        [](auto &w) { w.window(101).elementNumber = 103; });
    row("owner unreadable", {}, false, keys, [](auto &w) {
        w.window(101).elementPid = AXProcessIdentifier{kAXErrorFailure, notesPid};
    });
    row("inventory only", u"activate 500"_s, true, 0.1 + 0.35, nothing, false);
    row(
        "inventory only, minimized", {}, false, keys,
        [](auto &w) { w.window(101).minimized = true; }, false);
    row(
        "inventory only, gone", {}, false, keys, [](auto &w) { w.desktop.quit(notesPid); }, false);
}

void TestSwitching::jumps()
{
    QFETCH(bool, listed);
    QFETCH(Change, change);
    QFETCH(QString, journal);
    QFETCH(bool, arrives);
    QFETCH(double, seconds);
    ModelWorld world;
    world.window(101).listed = listed;
    world.window(101).spaces = {11};
    world.facts().stepDelay = 0;
    TovelModel &model = world.start();
    const TravelWindow window = world.listed(101);
    change(world);
    QVERIFY(world.finish(model.switchDesktop(world.target(11), window)) == true);
    QStringList log = world.desktop.takeJournal();
    QCOMPARE(log.filter(u"post"_s).isEmpty(), arrives);
    log.removeIf([](const QString &entry) { return entry.startsWith(u"post"_s); });
    QCOMPARE(log.join(u','), journal);
    QCOMPARE(world.elapsed(), seconds);
    QCOMPARE(world.shownOnA(), 11U);
}

void TestSwitching::steps_data()
{
    QTest::addColumn<std::uint64_t>("from");
    QTest::addColumn<std::uint64_t>("to");
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("keys"); // L and R
    QTest::addColumn<bool>("shown");
    QTest::addColumn<double>("seconds");
    const auto row = [](const char *name, std::uint64_t from, std::uint64_t to, const QString &keys,
                        bool shown, double seconds, const Change &change) {
        QTest::newRow(name) << from << to << change << keys << shown << seconds;
    };
    const double step = 0.2 + 0.35; // the change takes 0.15 s
    const auto later = [](double seconds, const Change &change) {
        return [=](ModelWorld &world) {
            world.desktop.after(seconds, [&world, change] { change(world); });
        };
    };
    const auto cutRow = [](ModelWorld &w) { w.spacesOfA().removeLast(); };
    row("shown already", 11, 11, {}, true, 0, nothing);
    row("right, over a full-screen space", 10, 12, u"RRR"_s, true, 3 * step, nothing);
    row("from a full-screen space", 50, 12, u"R"_s, true, step, nothing);
    row("no trust", 10, 11, {}, false, 0, [](auto &w) { w.facts().trusted = false; });
    row("target gone", 10, 12, {}, false, 0, cutRow);
    row("keys impossible", 10, 11, {}, false, 0,
        [](auto &w) { w.facts().eventSourceFails = true; });
    row("keys disabled", 10, 11, u"R"_s, false, 3.0,
        [](auto &w) { w.facts().stepsEnabled = false; });
    row("target gone on the way", 10, 12, u"R"_s, false, 0.2, later(0.18, cutRow));
    row("user went too far meanwhile", 10, 11, u"RL"_s, true, 2 * step,
        later(0.3, [](auto &w) { w.desktop.showSpace(50); }));
}

void TestSwitching::steps()
{
    QFETCH(std::uint64_t, from);
    QFETCH(std::uint64_t, to);
    QFETCH(Change, change);
    QFETCH(QString, keys);
    QFETCH(bool, shown);
    QFETCH(double, seconds);
    ModelWorld world;
    world.desktop.display(u"A"_s).currentSpace = from;
    world.facts().stepDelay = 0.15;
    TovelModel &model = world.start();
    const Desktop target = world.target(to);
    change(world);
    QVERIFY(world.finish(model.switchDesktop(target, std::nullopt)) == shown);
    QString pressed;
    for (const QString &entry : world.desktop.takeJournal()) {
        if (entry.contains(u"down"_s))
            pressed += entry.contains(u"124"_s) ? u'R' : u'L';
    }
    QCOMPARE(pressed, keys);
    QCOMPARE(world.elapsed(), seconds);
}

void TestSwitching::movesTheCursorToTheDisplay_data()
{
    QTest::addColumn<QPointF>("cursor");
    QTest::addColumn<Change>("change");
    QTest::addColumn<QStringList>("warps");
    const auto row = [](const char *name, QPointF cursor, const QStringList &warps,
                        const Change &change) { QTest::newRow(name) << cursor << change << warps; };
    const QPointF away(2920, 10); // just beyond the right edge
    const QStringList there{u"warp 2420 400"_s, u"warp 2920 10"_s};
    row("there already", {1920, 0}, {}, nothing);
    row("elsewhere", away, there, nothing);
    row("shown already", away, there, [](auto &w) { w.desktop.showSpace(21); });
    row("failure", away, there, [](auto &w) { w.facts().stepsEnabled = false; });
    row("place unknown", away, {}, [](auto &w) { w.facts().emptyEventFails = true; });
    row("no trust", away, {}, [](auto &w) { w.facts().trusted = false; });
}

void TestSwitching::movesTheCursorToTheDisplay()
{
    QFETCH(QPointF, cursor);
    QFETCH(Change, change);
    QFETCH(QStringList, warps);
    ModelWorld world;
    world.facts().cursor = cursor;
    TovelModel &model = world.start();
    const Desktop target = world.target(21);
    change(world);
    QVERIFY(world.finish(model.switchDesktop(target, std::nullopt)));
    QCOMPARE(world.desktop.takeJournal().filter(u"warp"_s), warps);
    QCOMPARE(world.facts().cursor, cursor);
}

void TestSwitching::waitsForTheRightChange()
{
    // Neither a notification without a change here nor a change without a notification counts.
    ModelWorld world;
    world.facts().stepsEnabled = false;
    TovelModel &model = world.start();
    world.desktop.after(0.25, [&] { world.desktop.postActiveSpaceDidChange(); });
    QVERIFY(world.finish(model.switchDesktop(world.target(11), std::nullopt)) == false);
    world.desktop.after(0.25, [&] { world.desktop.display(u"A"_s).currentSpace = 11; });
    QVERIFY(world.finish(model.switchDesktop(world.target(11), std::nullopt)) == false);
    QCOMPARE(world.elapsed(), 6.0);

    Desktop nowhere = world.target(12);
    nowhere.displayID = 0;
    QVERIFY(world.finish(model.switchDesktop(nowhere, std::nullopt)) == false);
    QCOMPARE(world.elapsed(), 6.0);
}

void TestSwitching::givesUpAfterManySteps()
{
    ModelWorld world;
    for (std::uint64_t id = 100; id < 140; ++id)
        world.desktop.display(u"B"_s).spaces.append(SimSpace{.id = id});
    world.facts().cursor = QPointF(2000, 10);
    world.facts().stepDelay = 0.05;
    TovelModel &model = world.start();
    QVERIFY(world.finish(model.switchDesktop(world.target(139), std::nullopt)) == false);
    QCOMPARE(world.desktop.takeJournal().filter(u"down"_s).size(), 32);
}

QTEST_GUILESS_MAIN(TestSwitching)
#include "tst_switching.moc"
