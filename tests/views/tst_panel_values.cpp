#include "model/model_world.h"
#include "views/panel_values.h"
#include "views/status_values.h"

#include <QTest>

using namespace tovel;

namespace {

QString brief(const QList<TileValues> &tiles)
{
    QStringList result;
    for (const TileValues &tile : tiles) {
        result.append(u"%1 %2%3%4"_s.arg(tile.name, QString::number(tile.flockWindows),
                                         tile.flockHere ? u" here"_s : QString(),
                                         tile.disabled ? u" disabled"_s : QString()));
    }
    return result.join(u", "_s);
}

QStringList names(const QList<RunningApp> &apps)
{
    QStringList result;
    for (const RunningApp &app : apps)
        result.append(app.name);
    return result;
}

// Both windows on desktop 11.
void gather(ModelWorld &world) { world.window(101).spaces = {11}; }

} // namespace

class TestPanelValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheDesktopsOfTheCurrentDisplay_data()
    {
        QTest::addColumn<Change>("change");
        QTest::addColumn<std::optional<QString>>("chosen");
        QTest::addColumn<std::optional<QString>>("current");
        QTest::addColumn<QString>("tiles");
        QTest::addColumn<int>("columns");

        const std::optional<QString> none;
        const QString ofA = u"Desktop 1 1, Desktop 2 1, Desktop 3 0"_s;
        QTest::newRow("a split flock: the first display")
            << nothing << none << std::optional(u"A"_s) << ofA << 3;
        QTest::newRow("the user's choice")
            << nothing << std::optional(u"B"_s) << std::optional(u"B"_s)
            << u"Desktop 4 0, Desktop 5 0"_s << 2;
        QTest::newRow("a choice that is gone")
            << nothing << std::optional(u"C"_s) << std::optional(u"A"_s) << ofA << 3;
        const Change onB = [](ModelWorld &world) {
            world.window(101).spaces = {21};
            world.window(102).spaces = {21};
        };
        QTest::newRow("the flock's display") << onB << none << std::optional(u"B"_s)
                                             << u"Desktop 4 0, Desktop 5 2 here disabled"_s << 2;
        QTest::newRow("the choice before the flock's display")
            << onB << std::optional(u"A"_s) << std::optional(u"A"_s)
            << u"Desktop 1 0, Desktop 2 0, Desktop 3 0"_s << 3;
        const Change none_left = [](ModelWorld &world) {
            world.desktop.replaceReply("SLSCopyManagedDisplaySpaces", QVariantList());
        };
        QTest::newRow("no desktops")
            << none_left << std::optional(u"A"_s) << none << QString() << 1;
        const Change unusable
            = [](ModelWorld &world) { world.desktop.dropSymbol("SLSMainConnectionID"); };
        QTest::newRow("nothing can be moved") << unusable << none << none << QString() << 1;
        const Change many = [](ModelWorld &world) {
            for (std::uint64_t id = 30; id < 33; ++id)
                world.spacesOfA().append(SimSpace{.id = id});
        };
        QTest::newRow("six desktops in five columns")
            << many << none << std::optional(u"A"_s)
            << ofA + u", Desktop 4 0, Desktop 5 0, Desktop 6 0"_s << 5;
    }

    void showsTheDesktopsOfTheCurrentDisplay()
    {
        QFETCH(Change, change);
        QFETCH(std::optional<QString>, chosen);
        ModelWorld world;
        change(world);
        const TovelModel &model = world.start();
        const PanelState state{.selectedDisplay = chosen};
        QTEST(currentDisplay(model, state), "current");
        QTEST(brief(tileValues(model, state)), "tiles");
        QTEST(columnCount(model, state), "columns");
    }

    void tellsOfDisplays()
    {
        ModelWorld world;
        const TovelModel &model = world.start();
        const QList<DisplayValues> expected{
            {.display = u"A"_s, .name = u"Left"_s, .builtIn = true, .current = false},
            {.display = u"B"_s, .name = u"Right"_s, .builtIn = false, .current = true}};
        QCOMPARE(displayValues(model, {.selectedDisplay = u"B"_s}), expected);
    }

    void tellsAssistiveProgramsWhatATileHolds()
    {
        ModelWorld world;
        gather(world);
        const auto tiles = tileValues(world.start(), {});
        QCOMPARE(tiles.at(0).accessibilityValue, u"0 selected windows"_s);
        QCOMPARE(tiles.at(1).accessibilityValue, u"Apps are already here. 2 selected windows"_s);
    }

    void disablesEveryTileDuringAMigration()
    {
        ModelWorld world;
        world.window(101).moveDelay = 0.5;
        TovelModel &model = world.start();
        const auto task = model.migrate(world.target(12));
        QVERIFY(model.busy());
        for (const TileValues &tile : tileValues(model, {}))
            QVERIFY(tile.disabled);
        QVERIFY(world.finish(task));
        QCOMPARE(brief(tileValues(model, {})),
                 u"Desktop 1 0, Desktop 2 0, Desktop 3 2 here disabled"_s);
    }

    void offersRunningApplicationsThatAreNotChosen()
    {
        ModelWorld world;
        world.desktop.addApplication(
            {.pid = 502, .bundleIdentifier = u"org.music"_s, .name = u"Music Études"_s});
        world.desktop.addApplication(
            {.pid = 503, .bundleIdentifier = u"org.files"_s, .name = u"Files"_s});
        world.defaults().setObject(u"selected"_s,
                                   QStringList{u"org.notes"_s, u"org.mail"_s, u"org.gone"_s});
        const TovelModel &model = world.start();
        const auto offered = [&](const QString &search) {
            return names(availableApps(model, {.search = search})).join(u", "_s);
        };
        QCOMPARE(offered({}), u"Files, Music Études"_s);
        QCOMPARE(offered(u"C éTUDE"_s), u"Music Études"_s);
        QCOMPARE(offered(u"IL"_s), u"Files"_s);
        QCOMPARE(offered(u"mail"_s), QString()); // chosen
        QCOMPARE(names(chosenApps(model)), (QStringList{u"Mail"_s, u"Notes"_s, u"org.gone"_s}));
    }

    void saysWhatStateTheFlockIsIn_data()
    {
        QTest::addColumn<Change>("change");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("warns");
        QTest::addColumn<QString>("skipped"); // empty: no button

        const auto row = [](const char *name, const Change &change, const QString &text, bool warns,
                            const QString &skipped = {}) {
            QTest::newRow(name) << change << text << warns << skipped;
        };
        const auto chooseNone
            = [](ModelWorld &world) { world.defaults().setObject(u"selected"_s, QStringList()); };
        const auto noWindows = [](ModelWorld &world) {
            world.desktop.removeWindow(101);
            world.desktop.removeWindow(102);
        };
        const auto fullScreen = [](ModelWorld &world) {
            world.window(101).fullScreen = true;
            world.window(101).spaces = {50};
        };
        const auto allFullScreen = [fullScreen](ModelWorld &world) {
            fullScreen(world);
            world.window(102).fullScreen = true;
        };
        const auto named = [](ModelWorld &world) {
            gather(world);
            world.defaults().setObject(u"aliases"_s, QVariantMap{{u"A/eleven"_s, u"Work"_s}});
        };
        const auto untrusted = [](ModelWorld &world) { world.facts().trusted = false; };
        const auto unusable = [untrusted](ModelWorld &world) {
            untrusted(world);
            world.desktop.dropSymbol("SLSMainConnectionID");
        };
        row("nothing chosen", chooseNone, u"Choose apps for your flock."_s, false);
        row("no windows", noWindows, u"Open a window in your flock to get started."_s, false);
        row("none that can move", allFullScreen, u"No movable windows."_s, false,
            u"2 windows won’t move"_s);
        row("split", nothing, u"Your flock is across 2 desktops."_s, false);
        row("together", named, u"Your flock is on Work."_s, false);
        row("together but for one", fullScreen, u"Your flock is on Desktop 2."_s, false,
            u"Notes: Full screen"_s);
        row("no access", untrusted, u"Allow Accessibility access to move apps."_s, true);
        row("nothing works", unusable, u"Window controls unavailable."_s, true);
    }

    void saysWhatStateTheFlockIsIn()
    {
        QFETCH(Change, change);
        QFETCH(QString, skipped);
        ModelWorld world;
        change(world);
        const TovelModel &model = world.start();
        QTEST(statusText(model), "text");
        QTEST(statusWarning(model).has_value(), "warns");
        const auto windows = skippedWindows(model);
        QCOMPARE(windows.isEmpty() ? QString() : skippedLabel(windows), skipped);
    }

    void issuesGiveWayToProgressOnly()
    {
        ModelWorld world;
        gather(world);
        world.window(101).moveDelay = 0.5;
        TovelModel &model = world.start();
        model.setIssues({u"One."_s, u"Two."_s, u"Three."_s});
        QCOMPARE(statusText(model), u"One.\nTwo.\nThree."_s);
        const auto task = model.migrate(world.target(12));
        QCOMPARE(statusText(model), model.message());
        QVERIFY(!model.message().isEmpty());
        QVERIFY(world.finish(task));
        QCOMPARE(statusText(model), u"Your flock is on Desktop 3."_s);
    }

    void theHeadOfAReasonStandsForIt()
    {
        TravelWindow window;
        window.appName = u"Mail"_s;
        window.skipReason = u"Full screen — leave full screen to move"_s;
        QCOMPARE(skippedLabel({window}), u"Mail: Full screen"_s);
        window.skipReason = u"No desktop"_s;
        QCOMPARE(skippedLabel({window}), u"Mail: No desktop"_s);
        QCOMPARE(skippedLabel({window, window}), u"2 windows won’t move"_s);
    }
};

QTEST_GUILESS_MAIN(TestPanelValues)
#include "tst_panel_values.moc"
