#include "model_world.h"
#include "support/test.h"

#include "model/texts.h"
#include "platform/application.h"

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
            world.defaults().put(u"selected"_s, QStringList());
            world.defaults().put(key, value);
            return describe(TovelModel(world.desktop.platform()));
        };
        const QString usual = u"follows loose dark [] []"_s;
        const QVariantMap names{{u"A/ten"_s, u"Work"_s}};
        const QVariantMap notNames{{u"A/ten"_s, u"Work"_s}, {u"A/12"_s, 12}};
        QCOMPARE(load(u"unrelated"_s, 1), usual);
        QCOMPARE(load(u"iconStyle"_s, u"Light"_s), usual);
        QCOMPARE(load(u"selected"_s, QVariantList{u"a"_s, QVariant(), 12, QVariantList{u"b"_s}}),
                 u"follows loose dark [a] []"_s);
        QCOMPARE(load(u"follow"_s, u"false"_s), usual);
        QCOMPARE(load(u"follow"_s, 0), usual);
        QCOMPARE(load(u"pinned"_s, u"true"_s), usual);
        QCOMPARE(load(u"pinned"_s, 1), usual);
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
            calls.append(world.stored().object(key).value_or(QVariant()).toString());
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
        QCOMPARE(world.desktop.clock().timerCount(), 0);
        Application &application = world.desktop.platform().application();
        application.setHasVisibleWindow(true);
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

        application.setHasVisibleWindow(false);
        QCOMPARE(world.desktop.clock().timerCount(), 0);
        application.setHasVisibleWindow(true);
        world.model.reset();
        application.setHasVisibleWindow(false);
        QCOMPARE(world.desktop.clock().timerCount(), 0);
        world.desktop.showSpace(11); // nobody is left to be told
    }

    void keepsWhatOtherProgramsStored()
    {
        ModelWorld world;
        TovelModel &model = world.start();
        const QVariant odd
            = QVariantList{u"org.mail"_s, QVariant(), u"org.notes"_s, 12, u"org.other"_s};
        world.defaults().put(u"selected"_s, odd);
        world.defaults().put(u"aliases"_s, QVariantMap{{u"A/ten"_s, u"Work"_s}});
        world.defaults().put(u"appNames"_s, QVariantMap{{u"org.other"_s, u"Other"_s}});
        model.select({.id = u"org.mail"_s}, false);
        QCOMPARE(world.stored().textDictionary(u"appNames"_s)->values(), QStringList{u"Other"_s});
        model.rename(world.target(11), u"Home"_s);
        QCOMPARE(world.stored().texts(u"selected"_s),
                 (QStringList{u"org.notes"_s, u"org.other"_s}));
        QCOMPARE(world.stored().textDictionary(u"aliases"_s),
                 (QMap<QString, QString>{{u"A/ten"_s, u"Work"_s}, {u"A/eleven"_s, u"Home"_s}}));
        QCOMPARE(world.stored().object(u"selected.unreadable"_s), odd);
        QVERIFY(!world.stored().object(u"aliases.unreadable"_s));
        world.defaults().put(u"selected"_s, QStringList());
        model.refresh();
        QVERIFY(model.selected().isEmpty());
    }

    void keepsItsChoicesWhileTheirFileIsAway()
    {
        ModelWorld world;
        TovelModel &model = world.start();
        model.rename(world.target(11), u"Home"_s);
        model.setFollow(false);
        const QSet<QString> flock = model.selected();
        const QStringList keys = world.defaults().values().keys();
        for (const QString &key : keys)
            world.defaults().put(key, std::nullopt);
        model.refresh();
        QCOMPARE(model.selected(), flock);
        QCOMPARE(model.name(world.target(11)), u"Home"_s);
        QVERIFY(world.defaults().values().isEmpty());
        model.setPinned(true);
        QCOMPARE(world.stored().boolean(u"follow"_s), false);
        QCOMPARE(world.stored().textDictionary(u"aliases"_s)->value(u"A/eleven"_s), u"Home"_s);
        QCOMPARE(world.stored().texts(u"selected"_s).value_or(QStringList()).size(), flock.size());
    }

    void keepsWhatItKnowsWhileTheStoreIsUnreadable()
    {
        ModelWorld world;
        world.defaults().put(u"aliases"_s, QVariantMap{{u"A/ten"_s, u"Work"_s}});
        TovelModel &model = world.start();
        const auto before = std::pair(model.selected(), model.aliases());
        const QVariantMap values = world.defaults().values();
        world.defaults().failReads(u"locked"_s);
        model.refresh();
        QCOMPARE(world.takeChanges(), QStringList{u"choicesProblem"_s});
        QCOMPARE(model.choicesProblem(), ModelTexts::choicesUnreadable(u"locked"_s));
        QVERIFY(before == std::pair(model.selected(), model.aliases()));

        QCOMPARE(model.select({.id = u"org.own"_s, .name = u"Own"_s}, true).failure, u"locked"_s);
        QCOMPARE(model.rename(world.target(11), u"Home"_s).failure, u"locked"_s);
        QCOMPARE(model.setPinned(true).failure, u"locked"_s);
        QCOMPARE(world.defaults().values(), values);
        QVERIFY(model.selected().contains(u"org.own"_s) && model.pinned());
        QCOMPARE(model.name(world.target(11)), u"Home"_s);

        // What could not be stored holds on top of what is, and is not stored later.
        world.defaults().failReads({});
        world.defaults().put(u"selected"_s, QStringList{u"org.mail"_s, u"org.other"_s});
        world.defaults().put(u"aliases"_s, QVariantMap{{u"A/ten"_s, u"Play"_s}});
        model.refresh();
        QCOMPARE(model.choicesProblem(), ModelTexts::choicesNotStored(u"locked"_s));
        QCOMPARE(model.selected(), (QSet<QString>{u"org.mail"_s, u"org.other"_s, u"org.own"_s}));
        QCOMPARE(model.name(world.target(10)) + model.name(world.target(11)), u"PlayHome"_s);
        QVERIFY(model.rename(world.target(12), u"Sea"_s).isStored());
        QCOMPARE(model.choicesProblem(), ModelTexts::choicesNotStored(u"locked"_s));
        QCOMPARE(world.stored().textDictionary(u"aliases"_s)->values(),
                 (QStringList{u"Sea"_s, u"Play"_s}));
        QCOMPARE(world.stored().texts(u"selected"_s)->size(), 2);
        QVERIFY(!world.stored().object(u"pinned"_s));

        // Until the user does the same or the opposite.
        QVERIFY(model.select({.id = u"org.own"_s, .name = u"Own"_s}, false).isStored());
        QVERIFY(!model.selected().contains(u"org.own"_s));
        model.refresh();
        QVERIFY(!model.selected().contains(u"org.own"_s) && model.pinned());
    }

    void takesUpLateWhatItCouldNotReadAtFirst()
    {
        ModelWorld world;
        world.app(notesPid).name = u"Slack"_s;
        world.defaults().put(u"iconStyle"_s, u"light"_s);
        world.defaults().put(u"pinned"_s, true);
        world.defaults().failReads(u"locked"_s);
        TovelModel &model = world.start();
        QStringList calls;
        model.onPinChanged([&](bool on) { calls.append(on ? u"pinned"_s : u"loose"_s); });
        model.onIconChanged([&](TovelIconStyle style) { calls.append(rawValue(style)); });
        QCOMPARE(describe(model), u"follows loose dark [] []"_s);
        world.defaults().failReads({});
        model.refresh();
        model.refresh();
        QCOMPARE(describe(model), u"follows pinned light [org.mail,org.notes] []"_s);
        QCOMPARE(calls, (QStringList{u"light"_s, u"pinned"_s}));
        QCOMPARE(model.choicesProblem(), QString());
        QCOMPARE(world.defaults().takeWrites(), QStringList()); // no first run
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
            const QStringList names = world.stored().textDictionary(u"appNames"_s)->values();
            return world.stored().texts(u"selected"_s)->join(u',') + u' ' + names.join(u',') + u' '
                + world.takeChanges().join(u',');
        };
        const QString with = u"org.agenda,org.mail,org.notes "_s;
        const QString without = u"org.mail,org.notes "_s;
        QCOMPARE(select(u"Agenda"_s, true), with + u"Agenda issues,message,selected,apps"_s);
        QCOMPARE(select(u"Later"_s, true), with + u"Later issues,message,apps"_s);
        QCOMPARE(select(u"Later"_s, false), without + u"Later issues,message,selected,apps"_s);
        QCOMPARE(select(u"Later"_s, false), without + u"Later issues,message"_s);
        QVERIFY(!world.stored().object(u"selected.unreadable"_s));
    }
};

QTEST_GUILESS_MAIN(TestModelState)
#include "tst_model_state.moc"
