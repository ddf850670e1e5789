#include "model_world.h"
#include "support/test.h"

#include "model/texts.h"

namespace {

QString lines(const QList<Desktop> &desktops)
{
    QStringList result;
    for (const Desktop &item : desktops) {
        const QString line = u"%1 %2 screen %3, %4 at %5"_s;
        result += line.arg(item.id)
                      .arg(item.key())
                      .arg(item.displayID)
                      .arg(item.index)
                      .arg(item.missionIndex)
            + (item.current ? u" current"_s : QString());
    }
    return result.join(u'\n');
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
    void listsDesktops()
    {
        ModelWorld world;
        const TovelModel &model = world.start();
        QCOMPARE(lines(model.desktops()),
                 u"10 A/ten screen 1, 1 at 0 current\n"
                 "11 A/eleven screen 1, 2 at 1\n"
                 "12 A/12 screen 1, 3 at 3\n"
                 "20 B/20 screen 2, 4 at 0 current\n"
                 "21 B/21 screen 2, 5 at 1"_s);

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
        QCOMPARE(reply({display}), u"7 Main/7 screen 1, 1 at 2\n9 Main/9 screen 1, 2 at 3"_s);
        QCOMPARE(reply({display, u"text"_s}), QString());
        QCOMPARE(reply({QVariantMap{{u"Spaces"_s, QVariantList{regular, 1}}}}), QString());
    }

    void findsScreens()
    {
        ModelWorld world;
        const TovelModel &model = world.start();
        SimDisplay &a = world.desktop.display(u"A"_s);
        SimDisplay &b = world.desktop.display(u"B"_s);
        QVERIFY(model.displayIsBuiltIn(u"A"_s) && !model.displayIsBuiltIn(u"B"_s));
        QCOMPARE(model.displayName(u"B"_s), u"Right"_s);
        b.hasScreen = false;
        QCOMPARE(model.displayName(u"B"_s), u"Unknown display"_s);
        b.hasScreen = true;

        const auto screen = [&] { return model.readDesktops().value(0).displayID; };
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

    void namesDesktops()
    {
        ModelWorld world;
        TovelModel &model = world.start();
        const Desktop first = world.target(10);
        const auto renamed = [&](const QString &typed) {
            model.rename(first, typed);
            const auto stored = *world.stored().textDictionary(u"aliases"_s);
            return stored.value(first.key(), u"nothing"_s) + u'|' + model.name(first) + u'|'
                + world.takeChanges().join(u',');
        };
        QCOMPARE(renamed(u" Work\n"_s), u" Work\n|Work|aliases"_s);
        QCOMPARE(renamed(u"  "_s), u"  |Desktop 1|aliases"_s);
        QCOMPARE(renamed(u"  "_s), u"  |Desktop 1|"_s);

        world.desktop.alterReply("SLSCopyManagedDisplaySpaces", [](auto reply) {
            QVariantMap display = reply->value(0).toMap();
            QVariantList spaces = display.value(u"Spaces"_s).toList();
            QVariantMap space = spaces.value(0).toMap();
            space.insert(u"name"_s, u"web"_s);
            spaces[0] = space;
            display.insert(u"Spaces"_s, spaces);
            return QVariantList{display};
        });
        model.refreshDesktopList();
        QCOMPARE(model.name(world.target(10)), u"web"_s);
        QCOMPARE(world.takeChanges(), QStringList(u"desktops"_s));
        model.rename(first, u"Work"_s);
        QCOMPARE(model.name(world.target(10)), u"Work"_s);
    }

    void listsApplications()
    {
        ModelWorld world;
        const QStringList flock{u"org.mail"_s, u"org.gone"_s, u"org.lost"_s};
        world.defaults().put(u"selected"_s, flock);
        world.defaults().put(u"appNames"_s, QVariantMap{{u"org.gone"_s, u"Gone"_s}});
        std::int32_t pid = 502;
        using Text = std::optional<QString>;
        for (const auto &[id, name] : {std::pair(Text(u"org.mail"_s), Text(u"Second Mail"_s)),
                                       {u"org.tovel.Tovel"_s, u"Tovel"_s},
                                       {u"org.agent"_s, u"Agent"_s},
                                       {u"org.anonymous"_s, std::nullopt},
                                       {std::nullopt, u"No identity"_s},
                                       {u"org.other"_s, u"notes"_s},
                                       {u"org.third"_s, u"NOTES"_s}})
            world.desktop.addApplication({.pid = pid++, .bundleIdentifier = id, .name = name});
        world.app(504).policy = NSApplicationActivationPolicy::Accessory;
        QStringList names;
        for (const RunningApp &app : world.start().apps())
            names.append(app.running ? app.name : u'(' + app.name + u')');
        QCOMPARE(names.join(u' '), u"(Gone) Mail (org.lost) Notes notes NOTES org.anonymous"_s);
    }

    void preselectsOnce()
    {
        ModelWorld world;
        world.defaults().put(u"selected"_s, std::nullopt);
        world.app(notesPid).name = u"SLACK"_s;
        world.app(mailPid).name = u"Toggl Track"_s;
        world.desktop.addApplication({.pid = 502, .bundleIdentifier = u"c"_s, .name = u"Notes"_s});
        TovelModel &model = world.start();
        QCOMPARE(model.selected(), (QSet<QString>{u"org.notes"_s, u"org.mail"_s}));
        QCOMPARE(model.windows().size(), 2);
        const auto names = *world.stored().textDictionary(u"appNames"_s);
        QCOMPARE(QStringList(names.values()).join(u','), u"Toggl Track,SLACK"_s);

        // One that cannot be stored is not over.
        world.defaults().put(u"selected"_s, std::nullopt);
        world.defaults().failWrites(u"full"_s);
        TovelModel &unstored = world.start();
        QCOMPARE(unstored.choicesProblem(), ModelTexts::choicesNotStored(u"full"_s));
        QCOMPARE(unstored.selected().size(), 2);
        world.defaults().failWrites({});
        unstored.refresh();
        QCOMPARE(unstored.choicesProblem(), QString());
        QCOMPARE(world.stored().texts(u"selected"_s)->size(), 2);

        // Neither is one without windows to move, nor is it one when another program was first.
        const auto storesWith = [](const Change &change) {
            ModelWorld other;
            other.defaults().put(u"selected"_s, std::nullopt);
            other.app(notesPid).name = u"Slack"_s;
            change(other);
            other.start();
            return other.stored().object(u"selected"_s).has_value();
        };
        QVERIFY(!storesWith([](auto &other) { other.desktop.dropSymbol("SLSMainConnectionID"); }));
        QVERIFY(storesWith([](auto &other) { other.desktop.world().trusted = false; }));
        world.defaults().put(u"selected"_s, std::nullopt);
        StoredChoices choices(world.defaults());
        choices.read();
        QVERIFY(choices.lacksFlock());
        world.defaults().put(u"selected"_s, QStringList{u"org.mail"_s});
        choices.preselect({{u"org.notes"_s, u"SLACK"_s}});
        QCOMPARE(choices.current().selected, QSet<QString>{u"org.mail"_s});
        QCOMPARE(world.stored().texts(u"selected"_s), QStringList{u"org.mail"_s});

        // Nobody was there on the very first run.
        world.defaults().put(u"selected"_s, QStringList());
        QCOMPARE(world.start().selected(), QSet<QString>());
    }

    void preselectsNobodyOnce()
    {
        SimulatedDesktop desktop;
        const PlatformInstallation installation(desktop.platform());
        desktop.world().trusted = false;
        TovelModel(desktop.platform()).refresh(); // sees nobody, but might if it were let
        desktop.world().trusted = true;
        QCOMPARE(desktop.userDefaults().standardUserDefaults().takeWrites(), QStringList());
        desktop.addApplication({.pid = 1, .bundleIdentifier = u"a"_s, .name = u"Notes"_s});
        TovelModel model(desktop.platform());
        QCOMPARE(desktop.userDefaults().standardUserDefaults().takeWrites(),
                 (QStringList{u"appNames"_s, u"selected"_s}));
        desktop.addApplication({.pid = 2, .bundleIdentifier = u"b"_s, .name = u"Slack"_s});
        model.refresh();
        QCOMPARE(model.selected(), QSet<QString>());
    }

    void listsWindow()
    {
        // The line of window 101, or nothing; the other window is there as long as there is trust.
        const auto listed = [](const Change &change) {
            ModelWorld world;
            change(world);
            const TovelModel &model = world.start();
            const TravelWindow window = world.listed(101);
            const bool isAlone = model.windows().size() == (window.id ? 1 : 0);
            return isAlone == model.trusted() ? u"?"_s : window.id ? line(window) : QString();
        };
        const auto with
            = [](const QString &rest) { return u"101 org.notes Notes 'List' "_s + rest; };
        const auto on = [&](const QList<std::uint64_t> &spaces) {
            return listed([&](ModelWorld &world) { world.window(101).spaces = spaces; });
        };
        const auto onNone = [&](bool orderedIn, const Change &change) {
            return listed([=](ModelWorld &world) {
                world.window(101).spaces = {};
                world.window(101).orderedIn = orderedIn;
                change(world);
            });
        };
        const QString unavailable = with(u"[] Desktop unavailable"_s);
        const QString fullScreen = u"Full screen \u2014 leave full screen to move"_s;
        QCOMPARE(on({10}), with(u"[10] moves"_s));
        QCOMPARE(on({50}), with(u"[50] Not on a regular desktop"_s));
        QCOMPARE(on({10, 11}),
                 with(u"[10,11] On multiple desktops \u2014 set Assign To to None"_s));
        QCOMPARE(listed([](auto &w) { w.window(101).orderedIn = false; }), with(u"[10] moves"_s));
        QCOMPARE(onNone(true, nothing), unavailable);
        QCOMPARE(onNone(false, nothing), QString());
        QCOMPARE(onNone(false, [](auto &w) { w.app(notesPid).hidden = true; }), unavailable);
        QCOMPARE(onNone(false, [](auto &w) { w.window(101).minimized = true; }), unavailable);
        QCOMPARE(onNone(false, [](auto &w) { w.window(101).fullScreen = true; }),
                 with(u"[] "_s + fullScreen));
        QCOMPARE(listed([](auto &w) {
                     w.window(101).fullScreen = true;
                     w.window(101).spaces = {10, 11};
                 }),
                 with(u"[10,11] "_s + fullScreen));
        QCOMPARE(listed([](auto &w) { w.window(101).minimized = true; }), with(u"[10] moves"_s));
        QCOMPARE(listed([](auto &w) { w.window(101).subrole = u"AXDialog"_s; }),
                 with(u"[10] moves"_s));
        QCOMPARE(listed([](auto &w) {
                     w.app(notesPid).policy = NSApplicationActivationPolicy::Accessory;
                 }),
                 with(u"[10] moves"_s));
        QCOMPARE(listed([](auto &w) { w.window(101).subrole = u"AXUnknown"_s; }),
                 u"101 org.notes Notes 'Window' [10] pid 500 moves"_s);
        QCOMPARE(listed([](auto &w) { w.facts().trusted = false; }), QString());
    }

    void publishesOnlyDifferences()
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
};

QTEST_GUILESS_MAIN(TestModelInventory)
#include "tst_model_inventory.moc"
