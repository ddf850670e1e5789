#include "model_world.h"

#include <QTest>

using namespace tovel;

namespace {

QStringList lines(const QList<Desktop> &desktops)
{
    QStringList result;
    for (const Desktop &item : desktops)
        result.append(u"%1 %2 screen %3 index %4 at %5%6"_s.arg(item.id)
                          .arg(item.key())
                          .arg(item.displayID)
                          .arg(item.index)
                          .arg(item.missionIndex)
                          .arg(item.current ? u" current"_s : QString()));
    return result;
}

QString line(const TravelWindow &window)
{
    QStringList spaces;
    for (const std::uint64_t space : window.spaces)
        spaces.append(QString::number(space));
    return u"%1 %2 %3 '%4' [%5]%6 %7"_s.arg(window.id).arg(
        window.appID, window.appName, window.title, spaces.join(u','),
        window.element ? QString() : u" pid %1"_s.arg(window.ownerPID.value_or(-1)),
        window.skipReason.value_or(u"moves"_s));
}

} // namespace

class TestModelInventory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsDesktops();
    void copesWithMalformedDesktops();
    void findsScreens();
    void namesDesktops();
    void namesDisplays();
    void listsApplications();
    void preselectsOnce();
    void listsWindow_data();
    void listsWindow();
    void tellsWhereTheFlockIs();
    void publishesOnlyDifferences();
};

void TestModelInventory::listsDesktops()
{
    ModelWorld world;
    QCOMPARE(lines(world.start().desktops()),
             (QStringList{
                 u"10 A/ten screen 1 index 1 at 0 current"_s,
                 u"11 A/eleven screen 1 index 2 at 1"_s, u"12 A/12 screen 1 index 3 at 3"_s,
                 u"20 B/20 screen 2 index 4 at 0 current"_s, u"21 B/21 screen 2 index 5 at 1"_s}));
}

void TestModelInventory::copesWithMalformedDesktops()
{
    ModelWorld world;
    const TovelModel &model = world.start();
    const auto reply = [&](const QVariantList &displays) {
        world.desktop.replaceReply("SLSCopyManagedDisplaySpaces", displays);
        return lines(model.readDesktops());
    };
    const QVariantMap regular{{u"type"_s, 0}, {u"ManagedSpaceID"_s, quint64(7)}};
    const QVariantMap noType{{u"ManagedSpaceID"_s, quint64(8)}};
    const QVariantMap noID{{u"type"_s, 0}};
    const QVariantMap oddUuid{{u"type"_s, 0}, {u"ManagedSpaceID"_s, 9}, {u"uuid"_s, 9}};
    const QVariantMap display{{u"Spaces"_s, QVariantList{noID, noType, regular, oddUuid}},
                              {u"Current Space"_s, u"7"_s}};

    QCOMPARE(
        reply({display}),
        (QStringList{u"7 Main/7 screen 1 index 1 at 2"_s, u"9 Main/9 screen 1 index 2 at 3"_s}));
    QCOMPARE(reply({display, u"text"_s}), QStringList());
    QCOMPARE(reply({QVariantMap{{u"Spaces"_s, QVariantList{regular, 1}}}}), QStringList());
    QCOMPARE(reply({}), QStringList());
    world.desktop.replaceReply("SLSCopyManagedDisplaySpaces", std::nullopt);
    QCOMPARE(model.readDesktops(), QList<Desktop>());
}

void TestModelInventory::findsScreens()
{
    ModelWorld world;
    const TovelModel &model = world.start();
    const auto screen = [&] { return model.readDesktops().value(0).displayID; };
    SimDisplay &a = world.desktop.display(u"A"_s);
    SimDisplay &b = world.desktop.display(u"B"_s);
    a.uuid = u"other"_s;
    QCOMPARE(screen(), 0U);
    world.desktop.alterReply("SLSCopyManagedDisplaySpaces",
                             [](auto reply) { return QVariantList{reply->value(0)}; });
    QCOMPARE(screen(), 1U); // the first one is a lone display's
    b.uuid = u"A"_s;
    QCOMPARE(screen(), 2U);
    a.hasScreen = b.hasScreen = false;
    QCOMPARE(screen(), 0U);
}

void TestModelInventory::namesDesktops()
{
    ModelWorld world;
    TovelModel &model = world.start();
    const Desktop first = world.target(10);
    const auto renamed = [&](const QString &typed) {
        model.rename(first, typed);
        const auto stored = *world.defaults().textDictionary(u"aliases"_s);
        return stored.value(first.key(), u"nothing"_s) + u'|' + model.name(first) + u'|'
            + world.takeChanges().join(u',');
    };
    QCOMPARE(renamed(u" Work\n"_s), u" Work\n|Work|aliases"_s);
    QCOMPARE(renamed(u"  "_s), u"  |Desktop 1|aliases"_s);
    QCOMPARE(renamed(u""_s), u"|Desktop 1|aliases"_s);
    QCOMPARE(renamed(u""_s), u"|Desktop 1|"_s);
}

void TestModelInventory::namesDisplays()
{
    ModelWorld world;
    const TovelModel &model = world.start();
    const auto name = [&](const QString &display) {
        return model.displayName(display)
            + (model.displayIsBuiltIn(display) ? u" built in"_s : u""_s);
    };
    QCOMPARE(name(u"A"_s), u"Left built in"_s);
    QCOMPARE(name(u"B"_s), u"Right"_s);
    QCOMPARE(name(u"C"_s), u"Unknown display"_s);
    world.desktop.display(u"B"_s).hasScreen = false;
    QCOMPARE(name(u"B"_s), u"Unknown display"_s);
}

void TestModelInventory::listsApplications()
{
    ModelWorld world;
    const QStringList flock{u"org.mail"_s, u"org.gone"_s, u"org.lost"_s};
    world.defaults().setObject(u"selected"_s, flock);
    world.defaults().setObject(u"appNames"_s, QVariantMap{{u"org.gone"_s, u"Gone"_s}});
    const auto add = [&](std::int32_t pid, std::optional<QString> id, std::optional<QString> name) {
        world.desktop.addApplication({.pid = pid, .bundleIdentifier = id, .name = name});
    };
    add(502, u"org.mail"_s, u"Second Mail"_s);
    add(503, u"org.tovel.Tovel"_s, u"Tovel"_s);
    add(504, u"org.agent"_s, u"Agent"_s);
    world.app(504).policy = NSApplicationActivationPolicy::Accessory;
    add(505, u"org.anonymous"_s, {});
    add(506, {}, u"No identity"_s);
    QStringList names;
    for (const RunningApp &app : world.start().apps())
        names.append(app.running ? app.name : u'(' + app.name + u')');
    QCOMPARE(names.join(u' '), u"(Gone) Mail (org.lost) Notes org.anonymous"_s);
}

void TestModelInventory::preselectsOnce()
{
    ModelWorld world;
    world.defaults().removeObject(u"selected"_s);
    world.app(notesPid).name = u"SLACK"_s;
    world.app(mailPid).name = u"Toggl Track"_s;
    world.desktop.addApplication({.pid = 502, .bundleIdentifier = u"c"_s, .name = u"Notes"_s});
    TovelModel &model = world.start();
    QCOMPARE(model.selected(), (QSet<QString>{u"org.notes"_s, u"org.mail"_s}));
    QCOMPARE(model.windows().size(), 2);
    QCOMPARE(
        *world.defaults().textDictionary(u"appNames"_s),
        (QMap<QString, QString>{{u"org.notes"_s, u"SLACK"_s}, {u"org.mail"_s, u"Toggl Track"_s}}));

    ModelWorld other;
    other.defaults().removeObject(u"selected"_s);
    other.start();
    QVERIFY(other.defaults().texts(u"selected"_s) == QStringList());
    other.desktop.application(notesPid).name = u"Slack"_s;
    other.model->refresh();
    QCOMPARE(other.model->selected(), QSet<QString>());
    QCOMPARE(other.defaults().takeWrites(), QStringList());
}

void TestModelInventory::listsWindow_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("expected"); // of window 101, which is the first; empty for none
    const auto row = [](const char *name, const QString &expected, const Change &change) {
        QTest::newRow(name) << change << expected;
    };
    const auto with = [](const QString &rest) { return u"101 org.notes Notes 'List' "_s + rest; };
    const Change orderedOut = [](auto &w) {
        w.window(101).spaces = {};
        w.window(101).orderedIn = false;
    };
    const QString bare = u"101 org.notes Notes 'Window' [10] pid 500 moves"_s;
    row("on a desktop", with(u"[10] moves"_s), nothing);
    row("minimized", with(u"[10] moves"_s), [](auto &w) { w.window(101).minimized = true; });
    row("full screen", with(u"[50] Full screen — leave full screen to move"_s), [](auto &w) {
        w.window(101).fullScreen = true;
        w.window(101).spaces = {50};
    });
    row("nowhere, ordered out", {}, orderedOut);
    row("nowhere, hidden", with(u"[] Desktop unavailable"_s), [=](auto &w) {
        orderedOut(w);
        w.app(notesPid).hidden = true;
    });
    row("inventory only", bare, [](auto &w) { w.window(101).listed = false; });
    row("no standard window", bare, [](auto &w) { w.window(101).subrole = u"AXUnknown"_s; });
    row("inventory only, several",
        u"101 org.notes Notes 'Window' [10,11] pid 500 On multiple desktops — set Assign To to None"_s,
        [](auto &w) {
            w.window(101).listed = false;
            w.window(101).spaces = {10, 11};
        });
    row("untrusted", {}, [](auto &w) { w.facts().trusted = false; });
}

void TestModelInventory::listsWindow()
{
    QFETCH(Change, change);
    QFETCH(QString, expected);
    ModelWorld world;
    change(world);
    const TovelModel &model = world.start();
    const TravelWindow window = world.listed(101);
    QCOMPARE(window.id ? line(window) : QString(), expected);
    const auto others = model.windows().size() - (window.id ? 1 : 0);
    QCOMPARE(others, model.trusted() ? 1 : 0);
    QCOMPARE(model.desktops().size(), 5);
    QCOMPARE(model.apps().size(), 2);
}

void TestModelInventory::tellsWhereTheFlockIs()
{
    ModelWorld world;
    TovelModel &model = world.start();
    QVERIFY(model.available());
    QCOMPARE(model.distribution(), (QMap<std::uint64_t, int>{{10, 1}, {11, 1}}));
    QVERIFY(!model.flockDesktopID());
    world.window(102).fullScreen = true;
    model.refresh();
    QVERIFY(model.flockDesktopID() == 10U);
    world.window(101).fullScreen = true;
    model.refresh();
    QCOMPARE(model.traveling(), QList<TravelWindow>());
    QVERIFY(!model.flockDesktopID());
}

void TestModelInventory::publishesOnlyDifferences()
{
    ModelWorld world;
    TovelModel &model = world.start();
    model.refresh();
    model.refreshDesktopList();
    QCOMPARE(world.takeChanges(), QStringList());
    world.facts().trusted = false;
    world.desktop.showSpace(11);
    model.refreshDesktopList();
    QCOMPARE(world.takeChanges(), (QStringList{u"trusted"_s, u"desktops"_s}));
    model.refresh();
    QCOMPARE(world.takeChanges(), QStringList{u"windows"_s});
    QCOMPARE(world.defaults().takeWrites(), QStringList());
}

QTEST_GUILESS_MAIN(TestModelInventory)
#include "tst_model_inventory.moc"
