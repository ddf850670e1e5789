#include "model_world.h"
#include "support/test.h"

namespace {

struct Switch
{
    std::uint64_t from = 0;
    std::uint64_t to = 0;
    Change before; // the model starts
    Change change;
    QString log; // L and R for the keys
    bool shown = false;
    double seconds = 0;
};

} // namespace

class TestSwitching : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheDesktop_data()
    {
        QTest::addColumn<Switch>("given");

        // With a window on the target.
        const auto jump = [](const char *name, const QString &log, double seconds,
                             const Change &change, bool listed = true) {
            const Change before = [=](ModelWorld &world) {
                world.window(101).listed = listed; // through accessibility
                world.window(101).spaces = {11};
                world.facts().stepDelay = 0;
            };
            QTest::newRow(name) << Switch{10, 11, before, change, log, true, seconds};
        };
        const QString activated = u"AXMain 101,AXRaise 101,activate 500"_s;
        const QString thenKeys = activated + u",R"_s;
        const double keys = 0.1 + 0.35; // one step
        jump("at once", activated, 0.1 + 0.35, nothing);
        jump("too late", thenKeys, 2.5 + keys,
             [](auto &w) { w.app(notesPid).activation = SimActivation::Stays; });
        jump("notified without a change", thenKeys, 2.5 + keys, [](auto &w) {
            w.app(notesPid).activation = SimActivation::Stays;
            w.desktop.after(0.25, [&w] { w.desktop.postActiveSpaceDidChange(); });
        });
        jump("changed without a notification", activated, 2.5, [](auto &w) {
            w.app(notesPid).activation = SimActivation::Stays;
            w.desktop.after(0.25, [&w] { w.desktop.display(u"A"_s).currentSpace = 11; });
        });
        jump("refused", thenKeys, keys,
             [](auto &w) { w.app(notesPid).activation = SimActivation::Refused; });
        jump("minimized unreadable", u"R"_s, keys, [](auto &w) {
            w.window(101).attributes[u"AXMinimized"_s] = {kAXErrorSuccess, 0};
        });
        const Change minimize = [](auto &w) { w.window(101).minimized = true; };
        jump("minimized", u"R"_s, keys, minimize);
        jump("inventory only, minimized", u"R"_s, keys, minimize, false);
        jump("on another desktop meanwhile", u"R"_s, keys,
             [](auto &w) { w.window(101).spaces = {12}; });
        jump("element of another window", u"R"_s, keys,
             [](auto &w) { w.window(101).elementNumber = 103; });
        jump("activation stays here", u"R"_s, keys,
             [](auto &w) { w.desktop.dockDefaults().put(u"workspaces-auto-swoosh"_s, false); });
        jump("inventory only", u"activate 500"_s, 0.1 + 0.35, nothing, false);

        // Without one.
        const auto steps
            = [](const char *name, std::uint64_t from, std::uint64_t to, const QString &log,
                 bool shown, double seconds, const Change &change) {
                  const Change before = [](ModelWorld &world) { world.facts().stepDelay = 0.15; };
                  QTest::newRow(name) << Switch{from, to, before, change, log, shown, seconds};
              };
        const double step = 0.2 + 0.35; // the change takes 0.15 s
        const auto later = [](double seconds, const Change &change) {
            return [=](ModelWorld &world) {
                world.desktop.after(seconds, [&world, change] { change(world); });
            };
        };
        const auto cutRow = [](ModelWorld &w) { w.spacesOfA().removeLast(); };
        steps("shown already", 11, 11, {}, true, 0, nothing);
        steps("right, over a full-screen space", 10, 12, u"R,R,R"_s, true, 3 * step, nothing);
        steps("no key", 10, 11, {}, false, 0, [](auto &w) { w.facts().keyDownEventFails = true; });
        QTest::newRow("no screen") << Switch{
            10,    11, [](auto &w) { w.desktop.display(u"A"_s).hasScreen = false; }, nothing, {},
            false, 0};
        steps("target gone", 10, 12, {}, false, 0, cutRow);
        steps("target gone on the way", 10, 12, u"R"_s, false, 0.2, later(0.18, cutRow));
        steps("user went too far meanwhile", 10, 11, u"R,L"_s, true, 2 * step,
              later(0.3, [](auto &w) { w.desktop.showSpace(50); }));
        const auto withoutKeys = [&](const char *name, const Change &change) {
            steps(name, 10, 11, u"R"_s, false, 3.0, [=](ModelWorld &w) {
                w.facts().stepsEnabled = false;
                later(0.25, change)(w);
            });
        };
        withoutKeys("keys disabled", nothing);
        withoutKeys("notified without a change",
                    [](auto &w) { w.desktop.postActiveSpaceDidChange(); });
        withoutKeys("changed without a notification",
                    [](auto &w) { w.desktop.display(u"A"_s).currentSpace = 11; });
    }

    void showsTheDesktop()
    {
        QFETCH(const Switch, given);
        const auto &[from, to, before, change, log, shown, seconds] = given;
        ModelWorld world;
        world.desktop.display(u"A"_s).currentSpace = from;
        before(world);
        TovelModel &model = world.start();
        const Desktop target = world.target(to);
        const TravelWindow window = world.listed(101);
        change(world);
        QVERIFY(world.finish(model.switchDesktop(target, window)) == shown);
        QStringList journal = world.desktop.takeJournal();
        journal.removeIf([](const QString &entry) { return entry.contains(u" up "_s); });
        journal.replaceInStrings(u"post 0 down 124 840000"_s, u"R"_s);
        journal.replaceInStrings(u"post 0 down 123 840000"_s, u"L"_s);
        QCOMPARE(journal.join(u','), log);
        QCOMPARE(world.elapsed(), seconds);
        if (shown)
            QCOMPARE(world.shownOnA(), to);
    }

    void movesTheCursorToTheDisplay()
    {
        const auto warps = [](const Change &change) {
            ModelWorld world;
            world.facts().cursor = QPointF(2920, 10); // just beyond the right edge
            TovelModel &model = world.start();
            const Desktop target = world.target(21);
            change(world);
            const QPointF cursor = world.facts().cursor;
            const auto shown = world.finish(model.switchDesktop(target, std::nullopt));
            if (!shown || world.facts().cursor != cursor)
                return u"?"_s;
            return world.desktop.takeJournal().filter(u"warp"_s).join(u',');
        };
        const QString thereAndBack = u"warp 2420 400,warp 2920 10"_s;
        QCOMPARE(warps(nothing), thereAndBack);
        QCOMPARE(warps([](auto &w) { w.facts().stepsEnabled = false; }), thereAndBack);
        QCOMPARE(warps([](auto &w) { w.facts().cursor = QPointF(1920, 0); }), QString());
        QCOMPARE(warps([](auto &w) { w.facts().emptyEventFails = true; }), QString());
        QCOMPARE(warps([](auto &w) { w.facts().trusted = false; }), QString());
    }

    void givesUpAfterManySteps()
    {
        ModelWorld world;
        for (std::uint64_t id = 100; id < 140; ++id)
            world.spacesOfA().append(SimSpace{.id = id});
        world.facts().stepDelay = 0.05;
        TovelModel &model = world.start();
        QVERIFY(world.finish(model.switchDesktop(world.target(139), std::nullopt)) == false);
        QCOMPARE(world.desktop.takeJournal().filter(u"down"_s).size(), 32);
    }
};

QTEST_GUILESS_MAIN(TestSwitching)
#include "tst_switching.moc"
