#include "model_world.h"

#include <QTest>

using namespace tovel;

namespace {

QString describe(const TovelModel &model)
{
    QStringList flock(model.selected().cbegin(), model.selected().cend());
    flock.sort();
    return u"%1 %2 %3 [%4] [%5]"_s.arg(model.follow() ? u"follows"_s : u"stays"_s,
                                       model.pinned() ? u"pinned"_s : u"loose"_s,
                                       rawValue(model.iconStyle()), flock.join(u','),
                                       QStringList(model.aliases().values()).join(u','));
}

} // namespace

class TestModelState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loadsStoredChoices()
    {
        const auto load = [](const QString &key, const QVariant &value) {
            ModelWorld world;
            world.defaults().setObject(u"selected"_s, QStringList());
            world.defaults().setObject(key, value);
            return describe(TovelModel(world.desktop.platform()));
        };
        const QString usual = u"follows loose dark [] []"_s;
        const QVariantMap names{{u"A/ten"_s, u"Work"_s}};
        const QVariantMap notNames{{u"A/ten"_s, u"Work"_s}, {u"A/12"_s, 12}};
        QCOMPARE(load(u"unrelated"_s, 1), usual);
        QCOMPARE(load(u"iconStyle"_s, u"Light"_s), usual);
        QCOMPARE(load(u"aliases"_s, names), u"follows loose dark [] [Work]"_s);
        QCOMPARE(load(u"aliases"_s, notNames), usual);
    }

    void assignmentsAreStored()
    {
        ModelWorld world;
        TovelModel &model = world.start();
        QStringList seen; // around the first assignment
        const auto look = [&] { seen.append(model.follow() ? u"on"_s : u"off"_s); };
        connect(&model, &TovelModel::willChange, this, look, Qt::SingleShotConnection);
        connect(&model, &TovelModel::didChange, this, look, Qt::SingleShotConnection);
        QStringList calls;
        const auto note = [&](const QString &key) {
            calls.append(world.defaults().object(key).value_or(QVariant()).toString());
        };
        model.onPinChanged([&](bool) { note(u"pinned"_s); });
        model.onIconChanged([&](TovelIconStyle) { note(u"iconStyle"_s); });

        const QStringList keys{u"follow"_s, u"pinned"_s, u"iconStyle"_s};
        for (const QStringList &changes : {keys, QStringList()}) {
            model.setFollow(false);
            model.setPinned(true);
            model.setIconStyle(TovelIconStyle::light);
            QCOMPARE(world.takeChanges(), changes);
            QCOMPARE(world.defaults().takeWrites(), keys);
            QCOMPARE(std::exchange(calls, {}), (QStringList{u"true"_s, u"light"_s}));
        }
        QCOMPARE(seen, (QStringList{u"on"_s, u"off"_s}));
        QCOMPARE(describe(TovelModel(world.desktop.platform())),
                 u"stays pinned light [org.mail,org.notes] []"_s);
    }

    void refreshesOnlyWhileLookedAt()
    {
        ModelWorld world;
        TovelModel &model = world.start();
        world.window(101).spaces = {12};
        world.desktop.clock().advance(30);
        QCOMPARE(world.takeChanges(), QStringList());
        world.desktop.postActiveSpaceDidChange();
        QCOMPARE(model.spaceChangeSerial(), 1);
        world.facts().visibleWindow = [] { return true; };
        world.desktop.clock().advance(2.99);
        QCOMPARE(world.takeChanges(), QStringList());
        world.desktop.clock().advance(0.01);
        QCOMPARE(world.takeChanges(), QStringList{u"windows"_s});

        // A run of twelve windows that do not move goes on for longer than the timer waits.
        for (std::uint32_t number = 200; number < 212; ++number)
            world.desktop.addWindow(
                {.number = number, .pid = notesPid, .spaces = {10}, .move = SimMove::Never});
        const auto task = model.migrate(world.target(11), false);
        const auto desktops = model.desktops();
        world.desktop.display(u"B"_s).spaces.clear();
        world.desktop.clock().advance(4);
        model.refresh();
        model.refreshDesktopList();
        QVERIFY(model.busy());
        QCOMPARE(model.desktops(), desktops);
        QVERIFY(world.finish(task));
        QCOMPARE(model.desktops().size(), 3);

        world.model.reset();
        QCOMPARE(world.desktop.clock().timerCount(), 0);
        world.desktop.showSpace(11); // nobody is left to be told
    }

    void keepsWhatOtherProgramsStored()
    {
        ModelWorld world;
        TovelModel &model = world.start();
        world.defaults().setObject(u"selected"_s,
                                   QStringList{u"org.mail"_s, u"org.notes"_s, u"org.other"_s});
        world.defaults().setObject(u"aliases"_s, QVariantMap{{u"A/ten"_s, u"Work"_s}});
        for (const RunningApp &app : QList<RunningApp>(model.apps())) {
            if (app.id == u"org.mail"_s)
                model.select(app, false);
        }
        model.rename(world.target(11), u"Home"_s);
        QCOMPARE(world.defaults().texts(u"selected"_s),
                 (QStringList{u"org.notes"_s, u"org.other"_s}));
        QCOMPARE(world.defaults().textDictionary(u"aliases"_s),
                 (QMap<QString, QString>{{u"A/ten"_s, u"Work"_s}, {u"A/eleven"_s, u"Home"_s}}));
        world.defaults().setObject(u"selected"_s, QStringList());
        model.refresh();
        QVERIFY(model.selected().isEmpty());
    }

    void selects()
    {
        ModelWorld world;
        TovelModel &model = world.start();
        const auto select = [&](const QString &name, bool on) {
            model.setIssues({u"old"_s});
            model.setMessage(u"old"_s);
            world.takeChanges();
            model.select({.id = u"org.agenda"_s, .name = name}, on);
            const QStringList names = world.defaults().textDictionary(u"appNames"_s)->values();
            return world.defaults().texts(u"selected"_s)->join(u',') + u' ' + names.join(u',')
                + u' ' + world.takeChanges().join(u',');
        };
        const QString with = u"org.agenda,org.mail,org.notes "_s;
        const QString without = u"org.mail,org.notes "_s;
        QCOMPARE(select(u"Agenda"_s, true), with + u"Agenda issues,message,selected,apps"_s);
        QCOMPARE(select(u"Later"_s, true), with + u"Later issues,message,apps"_s);
        QCOMPARE(select(u"Later"_s, false), without + u"Later issues,message,selected,apps"_s);
        QCOMPARE(select(u"Later"_s, false), without + u"Later issues,message"_s);
    }

    void requestsAccess()
    {
        ModelWorld world;
        TovelModel &model = world.start();
        model.requestAccess();
        QCOMPARE(world.desktop.takeJournal(), QStringList{u"settings"_s});
        world.facts().trusted = false;
        model.requestAccess();
        QCOMPARE(world.desktop.takeJournal(), (QStringList{u"prompt"_s, u"settings"_s}));
        QCOMPARE(world.takeChanges(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestModelState)
#include "tst_model_state.moc"
