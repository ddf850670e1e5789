#include "model_world.h"

#include <QTest>

using namespace tovel;

class TestMigration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsWithItsVerdict_data()
    {
        QTest::addColumn<Change>("change");
        QTest::addColumn<QString>("message"); // null when the run does not begin
        QTest::addColumn<QStringList>("issues");
        const auto row
            = [](const char *name, const QString &message, const QStringList &issues,
                 const Change &change) { QTest::newRow(name) << change << message << issues; };
        const QStringList access{u"Allow Accessibility access to move apps."_s};
        row("no trust", {}, access, [](auto &w) { w.facts().trusted = false; });
        row("target gone", {}, {u"That desktop is no longer available."_s},
            [](auto &w) { w.spacesOfA().removeAt(3); });
        row("nothing to move", {}, {u"No movable windows. Add an app or restore its windows."_s},
            [](auto &w) { w.window(101).fullScreen = w.window(102).fullScreen = true; });

        const QString moved2 = u"2 moved · 0 already there"_s;
        const QString lost = u"1 moved · 0 already there · 1 failed"_s;
        row("one skipped", u"1 moved · 0 already there · 1 skipped"_s, {},
            [](auto &w) { w.window(102).fullScreen = true; });
        row("barely in time", moved2, {}, [](auto &w) { w.window(101).moveDelay = 0.71; });
        row("too slow", lost, {u"Notes: could not move (0)."_s},
            [](auto &w) { w.window(101).moveDelay = 0.73; });
        row("refused", u"0 moved · 0 already there · 2 failed"_s,
            {u"Notes: could not move (9)."_s, u"Mail: could not move (9)."_s}, [](auto &w) {
                w.desktop.dropSymbol(SimulatedDesktop::submitMoveSymbol());
                w.facts().setWorkspaceStatus = 9;
            });

        // Changes to the second window while the first one moves.
        const auto meanwhile = [&](const char *name, const QString &message,
                                   const QStringList &issues, const Change &change,
                                   bool listed = true) {
            row(name, message, issues, [=](ModelWorld &world) {
                world.window(102).listed = listed;
                world.desktop.onMoveRequested([=, &world](std::uint32_t window, std::uint64_t) {
                    if (window == 101)
                        change(world);
                });
            });
        };
        const QStringList changed{u"Mail: desktop changed; skipped."_s};
        const QStringList replaced{u"Mail: window changed; skipped."_s};
        meanwhile("arrived before its turn", u"1 moved · 1 already there"_s, {},
                  [](auto &w) { w.window(102).spaces = {12}; });
        meanwhile("on two desktops", lost, changed, [](auto &w) {
            w.window(102).spaces = {11, 12};
        });
        meanwhile(
            "inventory only, replaced", lost, replaced,
            [](auto &w) { w.window(102).pid = notesPid; }, false);
        meanwhile(
            "inventory only, owner replaced", lost, replaced,
            [](auto &w) { w.app(mailPid).bundleIdentifier = u"org.other"_s; }, false);
    }

    void endsWithItsVerdict()
    {
        QFETCH(Change, change);
        QFETCH(QString, message);
        QFETCH(QStringList, issues);
        const bool begins = !message.isNull();
        ModelWorld world;
        change(world);
        TovelModel &model = world.start();
        model.setIssues({u"old"_s});
        model.setMessage(u"old"_s);
        int finished = 0;
        model.onMigrationFinished([&] { finished += model.busy() ? 100 : 1; });
        const auto task = model.migrate(world.target(12), false);
        QCOMPARE(task.isReady(), !begins);
        QVERIFY(world.finish(task));
        QCOMPARE(model.message(), begins ? message : u"old"_s);
        QCOMPARE(model.issues(), issues);
        QCOMPARE(model.hasSkippedWindows(), message.contains(u"skipped"));
        QCOMPARE(finished, begins ? 1 : 0);
        QCOMPARE(world.takeChanges().contains(u"busy"_s), begins);
        QCOMPARE(world.desktop.takeJournal().isEmpty(), !begins);
    }

    void followsToWhatMovedWithoutChangingTheChoice()
    {
        const auto outcome = [](bool chosen, std::optional<bool> thisRun, SimMove move) {
            ModelWorld world;
            world.window(101).move = world.window(102).move = move;
            TovelModel &model = world.start();
            model.setFollow(chosen);
            if (!world.finish(model.migrate(world.target(12), thisRun)) || model.follow() != chosen)
                return u"?"_s;
            // The last window that is on the target is the one brought forward.
            const bool raised = world.desktop.takeJournal().contains(u"AXRaise 102"_s);
            return QString::number(world.shownOnA()) + (raised ? u" raised"_s : u""_s);
        };
        QCOMPARE(outcome(true, {}, SimMove::Arrives), u"12 raised"_s);
        QCOMPARE(outcome(false, true, SimMove::Arrives), u"12 raised"_s);
        QCOMPARE(outcome(true, false, SimMove::Arrives), u"10"_s);
        QCOMPARE(outcome(true, {}, SimMove::Never), u"10"_s);
    }

    void stopsAfterWhatItIsOn()
    {
        ModelWorld world;
        world.desktop.addWindow({.number = 103, .pid = mailPid, .spaces = {20}});
        world.app(notesPid).activation = SimActivation::Refused;
        world.app(mailPid).activation = SimActivation::Refused;
        TovelModel &model = world.start();
        int finished = 0;
        model.onMigrationFinished([&] { ++finished; });
        model.stopMigration(); // nothing runs

        const auto task = model.migrate(world.target(12));
        QVERIFY(model.migrate(world.target(11)).isReady()); // one at a time
        model.stopMigration();
        QVERIFY(world.finish(task));
        QCOMPARE(model.message(), u"1 moved · 0 already there"_s);
        QCOMPARE(model.untriedWindows(), 2);
        QCOMPARE(finished, 1);
        QCOMPARE(world.desktop.takeJournal(), QStringList{u"submit 101 12"_s});

        // The wish to stop is spent; the next one comes on the way to the desktop.
        const auto again = model.migrate(world.target(12));
        QVERIFY(world.desktop.clock().runUntil([&] { return world.shownOnA() == 11; }, 600));
        model.stopMigration();
        QVERIFY(world.finish(again));
        QCOMPARE(world.shownOnA(), 11U);
        QCOMPARE(model.message(), u"2 moved · 1 already there"_s);
        QCOMPARE(model.untriedWindows(), 0);
        QCOMPARE(model.issues(), QStringList());
    }

    void reopenWaitsForItsEndAndEndsWithTheModel()
    {
        const RunningApp agenda{.id = u"org.agenda"_s, .name = u"Agenda"_s};
        ModelWorld world;
        world.facts().installed.append({.bundleIdentifier = agenda.id,
                                        .location = QUrl(u"file:///apps/agenda"_s),
                                        .launchDelay = 1});
        TovelModel &model = world.start();
        const auto migration = model.migrate(world.target(12), false);
        model.setIssues({u"kept"_s});
        world.takeChanges();
        QVERIFY(model.reopen(agenda).isReady());
        QCOMPARE(world.takeChanges(), QStringList());
        QVERIFY(world.finish(migration));
        const QString opens = u"open file:///apps/agenda"_s;
        QVERIFY(!world.desktop.takeJournal().contains(opens));

        const auto task = model.reopen(agenda);
        QVERIFY(world.desktop.takeJournal().contains(opens));
        world.model.reset();
        QVERIFY(world.finish(task));
    }

    void endsWithTheModel()
    {
        // At every wait of a run that moves, follows by activation, and then by keys.
        for (int waits = 0; waits < 40; ++waits) {
            ModelWorld world;
            world.app(mailPid).activation = SimActivation::Stays;
            world.facts().cursor = QPointF(2000, 10);
            TovelModel &model = world.start();
            int finished = 0;
            model.onMigrationFinished([&] { ++finished; });
            const auto task = model.migrate(world.target(12));
            int handlers = 0;
            world.desktop.clock().runUntil([&] { return handlers++ == waits; }, 600);
            if (task.isReady())
                break;
            world.model.reset();
            world.desktop.takeJournal();
            QVERIFY(world.finish(task));
            QCOMPARE(finished, 0);
            QCOMPARE(world.desktop.takeJournal(), QStringList());
        }
    }
};

QTEST_GUILESS_MAIN(TestMigration)
#include "tst_migration.moc"
