#include "model_world.h"

#include <QTest>

using namespace tovel;

namespace {

const RunningApp agenda{.id = u"org.agenda"_s, .name = u"Agenda"_s};

SimInstalledApplication installed(double delay)
{
    return {.bundleIdentifier = agenda.id,
            .location = QUrl(u"file:///apps/agenda"_s),
            .launchDelay = delay,
            .application = {.bundleIdentifier = agenda.id, .name = agenda.name}};
}

} // namespace

class TestFlock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
            world.defaults().takeWrites();
            model.select({.id = agenda.id, .name = name}, on);
            const QStringList names = world.defaults().textDictionary(u"appNames"_s)->values();
            return world.defaults().texts(u"selected"_s)->join(u',') + u' ' + names.join(u',')
                + u' ' + world.takeChanges().join(u',');
        };
        const QString with = u"org.agenda,org.mail,org.notes "_s;
        const QString without = u"org.mail,org.notes "_s;
        QCOMPARE(select(u"Agenda"_s, true), with + u"Agenda issues,message,selected,apps"_s);
        QCOMPARE(world.defaults().takeWrites(), (QStringList{u"selected"_s, u"appNames"_s}));
        QCOMPARE(select(u"Later"_s, true), with + u"Later issues,message,apps"_s);
        QCOMPARE(select(u"Later"_s, false), without + u"Later issues,message,selected,apps"_s);
        QCOMPARE(select(u"Later"_s, false), without + u"Later issues,message"_s);
    }

    void reopenWaitsForMigration()
    {
        ModelWorld world;
        world.facts().installed.append(installed(0));
        TovelModel &model = world.start();
        const auto migration = model.migrate(world.target(12), false);
        model.setIssues({u"kept"_s});
        world.takeChanges();
        QVERIFY(model.reopen(agenda).isReady());
        QCOMPARE(world.takeChanges(), QStringList());
        QVERIFY(world.finish(migration));
        QVERIFY(!world.desktop.takeJournal().contains(u"open file:///apps/agenda"_s));
    }

    void reopenEndsWithTheModel()
    {
        ModelWorld world;
        world.facts().installed.append(installed(1));
        const auto task = world.start().reopen(agenda);
        world.model.reset();
        QVERIFY(world.finish(task));
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

QTEST_GUILESS_MAIN(TestFlock)
#include "tst_flock.moc"
