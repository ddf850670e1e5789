#include "model/model_world.h"
#include "model/texts.h"
#include "support/test.h"
#include "views/panel_values.h"
#include "views/status_values.h"

namespace {

QString brief(const QList<TileValues> &tiles)
{
    QStringList result;
    for (const TileValues &tile : tiles) {
        result.append(u"%1 %2"_s.arg(tile.name, QString::number(tile.flockWindows))
                      + (tile.flockHere ? u" here"_s : QString())
                      + (tile.disabled ? u" disabled"_s : QString())
                      + (tile.dimmed ? u" dimmed"_s : QString()));
    }
    return result.join(u", "_s);
}

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

        // In mid-move nothing stands out but where the flock was.
        ModelWorld world;
        onB(world);
        const auto task = world.start().migrate(world.target(12));
        QCOMPARE(brief(tileValues(*world.model, {})),
                 u"Desktop 4 0 disabled dimmed, Desktop 5 2 here disabled dimmed"_s);
        QVERIFY(world.finish(task));
    }

    void saysWhatStateTheFlockIsIn()
    {
        const auto said = [](const Change &change) {
            ModelWorld world;
            change(world);
            const TovelModel &model = world.start();
            const auto windows = skippedWindows(model);
            return statusText(model, u"Wait."_s) + (statusWarning(model) ? u" !"_s : u""_s)
                + (windows.isEmpty() ? QString() : u" | "_s + skippedLabel(windows));
        };
        ModelWorld moving;
        TovelModel &busy = moving.start();
        busy.setIssues({u"One."_s, u"Two."_s});
        QCOMPARE(statusText(busy), u"One.\nTwo."_s);
        moving.defaults().failWrites(u"full"_s);
        (void)busy.setFollow(true);
        QCOMPARE(statusText(busy), u"One.\nTwo.\n"_s + ModelTexts::choicesNotStored(u"full"_s));
        const auto task = busy.migrate(moving.target(12));
        QCOMPARE(statusText(busy), u"Moving 1 of 2…"_s);
        QVERIFY(moving.finish(task));

        const Change noWindows = [](auto &world) {
            world.desktop.removeWindow(101);
            world.desktop.removeWindow(102);
        };
        QCOMPARE(said(nothing), u"Your flock is across 2 desktops."_s);
        QCOMPARE(said(noWindows), u"Open a window in your flock to get started."_s);
        const Change fullScreen = [](auto &world) { world.window(101).fullScreen = true; };
        QCOMPARE(said(fullScreen), u"Your flock is on Desktop 2. | Notes: Full screen"_s);
        const Change allFullScreen = [](auto &world) {
            world.window(101).fullScreen = world.window(102).fullScreen = true;
        };
        QCOMPARE(said(allFullScreen), u"No movable windows. | 2 windows won’t move"_s);
        const Change untrusted = [](auto &world) {
            world.facts().trusted = false;
            world.defaults().failReads(u"locked"_s);
        };
        QCOMPARE(said(untrusted),
                 u"Allow Accessibility access to move apps.\nWait.\n"_s
                     + ModelTexts::choicesUnreadable(u"locked"_s) + u" !"_s);
        const Change unusable = [](auto &world) {
            world.facts().trusted = false;
            world.desktop.dropSymbol("SLSMainConnectionID");
        };
        QCOMPARE(said(unusable), u"Window controls unavailable.\nWait. !"_s);
    }
};

QTEST_GUILESS_MAIN(TestPanelValues)
#include "tst_panel_values.moc"
