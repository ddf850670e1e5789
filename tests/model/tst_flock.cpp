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
    void selects();
    void reopens();
    void reopenNeedsInstallation();
    void reopenWaitsForMigration();
    void reopenEndsWithTheModel();
    void requestsAccess();
};

void TestFlock::selects()
{
    ModelWorld world;
    TovelModel &model = world.start();
    const auto select = [&](const QString &name, bool on) {
        model.setIssues({u"old"_s});
        model.setMessage(u"old"_s);
        world.takeChanges();
        world.defaults().takeWrites();
        RunningApp app = agenda;
        app.name = name;
        model.select(app, on);
        const auto names = *world.defaults().textDictionary(u"appNames"_s);
        return QStringList{world.defaults().texts(u"selected"_s)->join(u','),
                           QStringList(names.values()).join(u','), world.takeChanges().join(u','),
                           world.defaults().takeWrites().join(u',')};
    };
    const QString with = u"org.agenda,org.mail,org.notes"_s;
    const QString without = u"org.mail,org.notes"_s;
    const QString writes = u"selected,appNames"_s;
    QCOMPARE(select(u"Agenda"_s, true),
             (QStringList{with, u"Agenda"_s, u"issues,message,selected,apps"_s, writes}));
    QCOMPARE(select(u"Calendar"_s, true),
             (QStringList{with, u"Calendar"_s, u"issues,message,apps"_s, writes}));
    QCOMPARE(select(u"Calendar"_s, false),
             (QStringList{without, u"Calendar"_s, u"issues,message,selected,apps"_s, writes}));
    QCOMPARE(select(u"Calendar"_s, false),
             (QStringList{without, u"Calendar"_s, u"issues,message"_s, writes}));
}

void TestFlock::reopens()
{
    for (const auto &failure : {std::optional<QString>(), std::optional(u"No memory"_s)}) {
        ModelWorld world;
        world.facts().installed.append(installed(1.5));
        world.facts().installed.last().launchFailure = failure;
        TovelModel &model = world.start();
        model.setIssues({u"old"_s});
        const auto task = model.reopen(agenda);
        QCOMPARE(model.issues(), QStringList());
        world.desktop.removeWindow(102);
        QVERIFY(world.finish(task));
        QCOMPARE(world.elapsed(), 1.5);
        QCOMPARE(model.issues(),
                 failure ? QStringList{u"Couldn’t open Agenda: No memory"_s} : QStringList());
        QCOMPARE(model.windows().size(), 1); // looked afresh
        QCOMPARE(world.desktop.takeJournal(), QStringList{u"open file:///apps/agenda"_s});
    }
}

void TestFlock::reopenNeedsInstallation()
{
    ModelWorld world;
    TovelModel &model = world.start();
    world.desktop.removeWindow(102);
    const auto task = model.reopen(agenda);
    QVERIFY(task.isReady());
    QCOMPARE(model.issues(),
             QStringList{u"Couldn’t find Agenda. Reinstall it or remove it from your flock."_s});
    QCOMPARE(world.takeChanges(), QStringList{u"issues"_s});
    QCOMPARE(world.desktop.takeJournal(), QStringList());
}

void TestFlock::reopenWaitsForMigration()
{
    ModelWorld world;
    world.facts().installed.append(installed(0));
    TovelModel &model = world.start();
    const auto migration = model.migrate(world.target(12), false);
    model.setIssues({u"kept"_s});
    world.takeChanges();
    const auto task = model.reopen(agenda);
    QVERIFY(task.isReady());
    QCOMPARE(world.takeChanges(), QStringList());
    QVERIFY(world.finish(migration));
    QVERIFY(!world.desktop.takeJournal().contains(u"open file:///apps/agenda"_s));
}

void TestFlock::reopenEndsWithTheModel()
{
    ModelWorld world;
    world.facts().installed.append(installed(1));
    const auto task = world.start().reopen(agenda);
    world.model.reset();
    QVERIFY(world.finish(task));
}

void TestFlock::requestsAccess()
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

QTEST_GUILESS_MAIN(TestFlock)
#include "tst_flock.moc"
