#include "model_world.h"

#include <QTest>

using namespace tovel;

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

private:
    static const RunningApp &agenda();
    static SimInstalledApplication installed(double delay);
};

const RunningApp &TestFlock::agenda()
{
    static const RunningApp app{.id = u"org.agenda"_s, .name = u"Agenda"_s};
    return app;
}

SimInstalledApplication TestFlock::installed(double delay)
{
    SimInstalledApplication result;
    result.bundleIdentifier = agenda().id;
    result.location = QUrl(u"file:///apps/agenda"_s);
    result.launchDelay = delay;
    result.application = {.bundleIdentifier = agenda().id, .name = agenda().name};
    return result;
}

void TestFlock::selects()
{
    ModelWorld world;
    TovelModel &model = world.start();
    const auto outcomeIsCleared = [&] {
        const bool cleared = model.issues().isEmpty() && model.message().isEmpty();
        model.setIssues({u"old"_s});
        model.setMessage(u"old"_s);
        return cleared;
    };
    const auto stored = [&] {
        auto flock = world.defaults().texts(u"selected"_s).value_or(QStringList());
        flock.sort();
        const auto names = world.defaults().textDictionary(u"appNames"_s);
        return flock.join(u',') + u' ' + QStringList(names->values()).join(u',');
    };
    outcomeIsCleared();
    world.takeChanges();

    model.select(agenda(), true);
    QCOMPARE(world.takeChanges(),
             (QStringList{u"issues"_s, u"message"_s, u"selected"_s, u"apps"_s}));
    QVERIFY(outcomeIsCleared());
    QCOMPARE(stored(), u"org.agenda,org.mail,org.notes Agenda"_s);

    RunningApp renamed = agenda();
    renamed.name = u"Calendar"_s;
    model.select(renamed, true);
    QVERIFY(outcomeIsCleared());
    QCOMPARE(stored(), u"org.agenda,org.mail,org.notes Calendar"_s);
    QCOMPARE(model.apps().value(0).name, u"Calendar"_s);

    for (int time = 0; time < 2; ++time) {
        world.defaults().takeWrites();
        model.select(renamed, false);
        QVERIFY(outcomeIsCleared());
        QCOMPARE(stored(), u"org.mail,org.notes Calendar"_s);
        QCOMPARE(world.defaults().takeWrites(), (QStringList{u"selected"_s, u"appNames"_s}));
        QCOMPARE(model.apps().size(), 2);
    }
    QCOMPARE(TovelModel(world.desktop.platform()).selected(), model.selected());
}

void TestFlock::reopens()
{
    for (const auto &failure : {std::optional<QString>(), std::optional(u"No memory"_s)}) {
        ModelWorld world;
        world.desktop.world().installed.append(installed(1.5));
        world.desktop.world().installed.last().launchFailure = failure;
        TovelModel &model = world.start();
        model.setIssues({u"old"_s});
        const auto task = model.reopen(agenda());
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
    const auto task = model.reopen(agenda());
    QVERIFY(task.isReady());
    QCOMPARE(model.issues(),
             QStringList{u"Couldn’t find Agenda. Reinstall it or remove it from your flock."_s});
    QCOMPARE(world.takeChanges(), QStringList{u"issues"_s});
    QCOMPARE(world.desktop.takeJournal(), QStringList());
}

void TestFlock::reopenWaitsForMigration()
{
    ModelWorld world;
    world.desktop.world().installed.append(installed(0));
    TovelModel &model = world.start();
    const auto migration = model.migrate(world.target(12), false);
    model.setIssues({u"kept"_s});
    world.takeChanges();
    const auto task = model.reopen(agenda());
    QVERIFY(task.isReady());
    QCOMPARE(world.takeChanges(), QStringList());
    QVERIFY(world.finish(migration));
    QVERIFY(!world.desktop.takeJournal().contains(u"open file:///apps/agenda"_s));
}

void TestFlock::reopenEndsWithTheModel()
{
    ModelWorld world;
    world.desktop.world().installed.append(installed(1));
    const auto task = world.start().reopen(agenda());
    world.model.reset();
    QVERIFY(world.finish(task));
}

void TestFlock::requestsAccess()
{
    ModelWorld world;
    TovelModel &model = world.start();
    model.requestAccess();
    QCOMPARE(world.desktop.takeJournal(), QStringList{u"settings"_s});
    world.desktop.world().trusted = false;
    model.requestAccess();
    QCOMPARE(world.desktop.takeJournal(), (QStringList{u"prompt"_s, u"settings"_s}));
    QCOMPARE(world.takeChanges(), QStringList());
}

QTEST_GUILESS_MAIN(TestFlock)
#include "tst_flock.moc"
