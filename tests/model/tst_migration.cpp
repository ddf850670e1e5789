#include "model/texts.h"
#include "model_world.h"
#include "support/test.h"

namespace {

// The windows as number, desktop before, and outcome, with a mark for a reason.
QString windowsOf(const MigrationRecord &record)
{
    QStringList windows;
    for (const WindowRecord &window : record.windows) {
        const QChar outcome = u"umasf"_s.at(static_cast<int>(window.outcome));
        windows.append(QString::number(window.id) + u' '
                       + QString::number(window.origin.value_or(0)) + u' ' + outcome
                       + (window.reason == WindowReason::none ? u""_s : u"*"_s));
    }
    return windows.join(u", "_s);
}

} // namespace

class TestMigration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsWithItsVerdict_data()
    {
        QTest::addColumn<Change>("before"); // the model starts
        QTest::addColumn<Change>("change");
        QTest::addColumn<QString>("message"); // null when the run does not begin
        QTest::addColumn<QStringList>("issues");
        QTest::addColumn<QString>("windows");
        QTest::addColumn<QString>("ending"); // "complete", or what was found then
        const auto row = [](const char *name, const QString &message, const QStringList &issues,
                            const QString &windows, const QString &ending, const Change &change,
                            const Change &before = nothing) {
            QTest::newRow(name) << before << change << message << issues << windows << ending;
        };
        row("no trust", {}, {u"Allow Accessibility access to move apps."_s}, {}, {},
            [](auto &w) { w.facts().trusted = false; });
        row("no bridge", {}, {u"Allow Accessibility access to move apps."_s},
            u"101 0 s*, 102 0 s*"_s, {}, nothing,
            [](auto &w) { w.desktop.dropSymbol("SLSCopySpacesForWindows"); });
        row("target gone", {}, {u"That desktop is no longer available."_s}, u"101 10 u, 102 11 u"_s,
            {}, [](auto &w) { w.spacesOfA().removeAt(3); });
        row("nothing to move", {}, {u"No movable windows. Add an app or restore its windows."_s},
            u"101 10 s*, 102 11 s*"_s, u"complete"_s,
            [](auto &w) { w.window(101).fullScreen = w.window(102).fullScreen = true; });
        row("there already", {}, {}, u"101 12 a, 102 11 s*"_s, u"complete"_s, [](auto &w) {
            w.window(101).spaces = {12};
            w.window(102).fullScreen = true;
        });

        const QString complete = u"complete"_s;
        const QString moved2 = u"2 moved · 0 already there"_s;
        const QString bothMoved = u"101 10 m, 102 11 m"_s;
        row("one skipped", u"1 moved · 0 already there · 1 skipped"_s, {}, u"101 10 m, 102 11 s*"_s,
            complete, [](auto &w) { w.window(102).fullScreen = true; });
        row("barely in time", moved2, {}, bothMoved, complete,
            [](auto &w) { w.window(101).moveDelay = 0.71; });
        const QString lost = u"1 moved · 0 already there · 1 failed"_s;
        row("too slow", lost, {u"Notes: could not move (0)."_s}, u"101 10 f*, 102 11 m"_s, complete,
            [](auto &w) { w.window(101).moveDelay = 0.73; });
        row("refused", u"0 moved · 0 already there · 2 failed"_s,
            {u"Notes: could not move (9)."_s, u"Mail: could not move (9)."_s},
            u"101 10 f*, 102 11 f*"_s, {}, nothing, [](auto &w) {
                w.desktop.dropSymbol(SimulatedDesktop::submitMoveSymbol());
                w.facts().setWorkspaceStatus = 9;
            });

        // Changes when the first window, or the second, is asked to move.
        const auto during = [&](const char *name, const QString &message, const QStringList &issues,
                                const QString &windows, const QString &ending, std::uint32_t moving,
                                const Change &change, bool listed = true) {
            row(
                name, message, issues, windows, ending,
                [=](ModelWorld &world) {
                    world.desktop.onMoveRequested([=, &world](std::uint32_t window, std::uint64_t) {
                        if (window == moving)
                            change(world);
                    });
                },
                [=](ModelWorld &world) { world.window(102).listed = listed; });
        };
        const QStringList changed{u"Mail: desktop changed; skipped."_s};
        const QStringList replaced{u"Mail: window changed; skipped."_s};
        const QString oneLost = u"101 10 m, 102 11 f*"_s;
        const QString tooLate = u": can move only since the move began; not tried."_s;
        during("arrived before its turn", u"1 moved · 1 already there"_s, {},
               u"101 10 m, 102 11 a"_s, complete, 101,
               [](auto &w) { w.window(102).spaces = {12}; });
        during("on another desktop", moved2, {}, u"101 10 m, 102 20 m"_s, complete, 101,
               [](auto &w) { w.window(102).spaces = {20}; });
        during("on two desktops", lost, changed, oneLost, {}, 101, [](auto &w) {
            w.window(102).spaces = {11, 12};
        });
        during("desktop gone at its turn", lost, changed, oneLost, {}, 101,
               [](auto &w) { w.spacesOfA().removeAt(1); });
        during("closed", lost, changed, oneLost, complete, 101,
               [](auto &w) { w.desktop.removeWindow(102); });
        during("element of another window", lost, replaced, oneLost, {}, 101,
               [](auto &w) { w.window(102).elementNumber = 103; });
        during("full screen at its turn", lost, replaced, oneLost, {}, 101,
               [](auto &w) { w.window(102).fullScreen = true; });
        during(
            "inventory only, replaced", lost, replaced, oneLost + u", 102 11 u*"_s,
            u"Notes"_s + tooLate, 101, [](auto &w) { w.window(102).pid = notesPid; }, false);
        during(
            "inventory only, owner replaced", lost, replaced, oneLost, complete, 101,
            [](auto &w) { w.app(mailPid).bundleIdentifier = u"org.other"_s; }, false);

        during("put back", moved2, {}, u"101 10 m*, 102 11 m"_s,
               u"Notes: arrived, but did not stay."_s, 102,
               [](auto &w) { w.window(101).spaces = {10}; });
        during("opened meanwhile", moved2, {}, bothMoved + u", 103 10 u*"_s, u"Mail"_s + tooLate,
               102, [](auto &w) {
                   w.desktop.addWindow({.number = 103, .pid = mailPid, .spaces = {10}});
                   w.desktop.addWindow({.number = 104, .pid = mailPid, .spaces = {50}});
                   w.desktop.addWindow({.number = 105, .pid = mailPid, .spaces = {12}});
               });
        row("left full screen meanwhile", u"1 moved · 0 already there · 1 skipped"_s, {},
            u"101 10 m, 102 11 s*"_s, u"Mail"_s + tooLate, [](auto &w) {
                w.window(102).fullScreen = true;
                w.desktop.onMoveRequested([&w](auto, auto) { w.window(102).fullScreen = false; });
            });
        during("trust lost", moved2, {}, bothMoved,
               u"The windows could not be looked at afterwards."_s, 102,
               [](auto &w) { w.facts().trusted = false; });
    }

    void endsWithItsVerdict()
    {
        QFETCH(Change, before);
        QFETCH(Change, change);
        QFETCH(QString, message);
        QFETCH(QStringList, issues);
        QFETCH(QString, windows);
        QFETCH(QString, ending);
        const bool begins = !message.isNull();
        ModelWorld world;
        before(world);
        TovelModel &model = world.start();
        change(world); // the run looks at everything afresh
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

        const MigrationRecord &record = model.latestMigration();
        QCOMPARE(record.obstacle.has_value(), !begins);
        QCOMPARE(windowsOf(record), windows);
        QCOMPARE(ModelTexts::issues(record), issues);
        if (begins)
            QCOMPARE(ModelTexts::summary(record), message);
        const QString later = ModelTexts::laterProblems(record).join(u'|');
        QCOMPARE(record.complete ? u"complete"_s + later : later, ending);
    }

    void followsToWhatMovedWithoutChangingTheChoice()
    {
        const auto outcome = [](bool chosen, std::optional<bool> thisRun, SimMove move,
                                std::uint64_t second = 11) {
            ModelWorld world;
            world.window(101).move = world.window(102).move = move;
            world.window(102).spaces = {second};
            TovelModel &model = world.start();
            model.setFollow(chosen);
            if (!world.finish(model.migrate(world.target(12), thisRun)) || model.follow() != chosen)
                return u"?"_s;
            // The last window that is on the target is the one brought forward.
            const bool raised = world.desktop.takeJournal().contains(u"AXRaise 102"_s);
            return QString::number(world.shownOnA()) + (raised ? u" raised"_s : u""_s);
        };
        QCOMPARE(outcome(true, {}, SimMove::Arrives), u"12 raised"_s);
        QCOMPARE(outcome(true, {}, SimMove::Arrives, 12), u"12 raised"_s);
        QCOMPARE(outcome(true, {}, SimMove::Never, 12), u"12 raised"_s);
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
        QCOMPARE(count(model.latestMigration(), WindowReason::stopped), 2);
        QCOMPARE(finished, 1);
        QCOMPARE(world.desktop.takeJournal(), QStringList{u"submit 101 12"_s});

        // The wish to stop is spent; the next one comes on the way to the desktop.
        const auto again = model.migrate(world.target(12));
        QVERIFY(world.desktop.clock().runUntil([&] { return world.shownOnA() == 11; }, 600));
        model.stopMigration();
        QVERIFY(world.finish(again));
        QCOMPARE(world.shownOnA(), 11U);
        QCOMPARE(model.message(), u"2 moved · 1 already there"_s);
        QCOMPARE(count(model.latestMigration(), WindowReason::stopped), 0);
        QCOMPARE(model.issues(), QStringList());
    }

    void reopenTellsWhatCameOfIt()
    {
        // The outcome, and what changed in turn.
        const auto reopened = [](const QList<SimInstalledApplication> &installed) {
            ModelWorld world;
            world.facts().installed = installed;
            TovelModel &model = world.start();
            model.setIssues({u"old"_s});
            world.takeChanges();
            world.window(101).spaces = {12}; // only a refresh sees it
            const RunningApp app{.id = u"org.agenda"_s, .name = u"Agenda"_s};
            const bool finished = world.finish(model.reopen(app));
            return finished ? model.issues().join(u'|') + u'/' + world.takeChanges().join(u',')
                            : u"?"_s;
        };
        const QUrl location(u"file:///apps/agenda"_s);
        QCOMPARE(reopened({}),
                 u"Couldn’t find Agenda. Reinstall it or remove it from your flock."
                 "/issues"_s);
        QCOMPARE(reopened({{u"org.agenda"_s, location}}), u"/issues,apps,windows"_s);
        QCOMPARE(reopened({{u"org.agenda"_s, location, 1, u"broken"_s}}),
                 u"Couldn’t open Agenda: broken/issues,issues,windows"_s);
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
