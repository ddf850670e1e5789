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
    void showsTheDesktopsOfTheCurrentDisplay()
    {
        const auto shown = [](const Change &change, const std::optional<QString> &chosen = {}) {
            ModelWorld world;
            change(world);
            const TovelModel &model = world.start();
            const PanelState state{.selectedDisplay = chosen};
            return u"%1/%2: %3"_s.arg(currentDisplay(model, state).value_or(QString()))
                .arg(columnCount(model, state))
                .arg(brief(tileValues(model, state)));
        };
        // Of a split flock the first display, also where the choice is gone.
        const QString ofA = u"A/3: Desktop 1 1, Desktop 2 1, Desktop 3 0"_s;
        QCOMPARE(shown(nothing), ofA);
        QCOMPARE(shown(nothing, u"C"_s), ofA);
        const Change onB
            = [](ModelWorld &world) { world.window(101).spaces = world.window(102).spaces = {21}; };
        QCOMPARE(shown(onB), u"B/2: Desktop 4 0, Desktop 5 2 here disabled"_s);
        QCOMPARE(shown(onB, u"A"_s), u"A/3: Desktop 1 0, Desktop 2 0, Desktop 3 0"_s);
        const Change unusable
            = [](ModelWorld &world) { world.desktop.dropSymbol("SLSMainConnectionID"); };
        QCOMPARE(shown(unusable), u"/1: "_s);
        const Change six = [](ModelWorld &world) {
            for (std::uint64_t id = 30; id < 33; ++id)
                world.spacesOfA().append(SimSpace{.id = id});
        };
        QVERIFY(shown(six).startsWith(u"A/5: "_s));
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

    void saysWhatStateTheFlockIsIn()
    {
        const auto said = [](const Change &change) {
            ModelWorld world;
            change(world);
            const TovelModel &model = world.start();
            const auto windows = skippedWindows(model);
            return statusText(model) + (statusWarning(model) ? u" !"_s : u""_s)
                + (windows.isEmpty() ? QString() : u" | "_s + skippedLabel(windows));
        };
        const Change chooseNone
            = [](auto &world) { world.defaults().setObject(u"selected"_s, QStringList()); };
        QCOMPARE(said(chooseNone), u"Choose apps for your flock."_s);
        const Change noWindows = [](auto &world) {
            world.desktop.removeWindow(101);
            world.desktop.removeWindow(102);
        };
        QCOMPARE(said(noWindows), u"Open a window in your flock to get started."_s);
        const Change fullScreen = [](auto &world) { world.window(101).fullScreen = true; };
        QCOMPARE(said(fullScreen), u"Your flock is on Desktop 2. | Notes: Full screen"_s);
        const Change allFullScreen = [](auto &world) {
            world.window(101).fullScreen = world.window(102).fullScreen = true;
        };
        QCOMPARE(said(allFullScreen), u"No movable windows. | 2 windows won’t move"_s);
        QCOMPARE(said(nothing), u"Your flock is across 2 desktops."_s);
        const Change named = [](auto &world) {
            gather(world);
            world.defaults().setObject(u"aliases"_s, QVariantMap{{u"A/eleven"_s, u"Work"_s}});
        };
        QCOMPARE(said(named), u"Your flock is on Work."_s);
        const Change untrusted = [](auto &world) { world.facts().trusted = false; };
        QCOMPARE(said(untrusted), u"Allow Accessibility access to move apps. !"_s);
        const Change unusable = [](auto &world) {
            world.facts().trusted = false;
            world.desktop.dropSymbol("SLSMainConnectionID");
        };
        QCOMPARE(said(unusable), u"Window controls unavailable. !"_s);
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
};

QTEST_GUILESS_MAIN(TestPanelValues)
#include "tst_panel_values.moc"
