#include "model_world.h"

#include <QTest>

using namespace tovel;

namespace {

const RunningApp agenda{.id = u"org.agenda"_s, .name = u"Agenda"_s};

SimInstalledApplication installed(double delay, const std::optional<QString> &failure = {})
{
    return {.bundleIdentifier = agenda.id,
            .location = QUrl(u"file:///apps/agenda"_s),
            .launchDelay = delay,
            .launchFailure = failure,
            .application = {.bundleIdentifier = agenda.id, .name = agenda.name}};
}

} // namespace

class TestFlock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selects()
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
                               QStringList(names.values()).join(u','),
                               world.takeChanges().join(u','),
                               world.defaults().takeWrites().join(u',')}
                .join(u' ');
        };
        const QString with = u"org.agenda,org.mail,org.notes "_s;
        const QString without = u"org.mail,org.notes "_s;
        const QString writes = u" selected,appNames"_s;
        QCOMPARE(select(u"Agenda"_s, true),
                 with + u"Agenda issues,message,selected,apps"_s + writes);
        QCOMPARE(select(u"Calendar"_s, true), with + u"Calendar issues,message,apps"_s + writes);
        QCOMPARE(select(u"Calendar"_s, false),
                 without + u"Calendar issues,message,selected,apps"_s + writes);
        QCOMPARE(select(u"Calendar"_s, false), without + u"Calendar issues,message"_s + writes);
    }

    void reopens_data()
    {
        QTest::addColumn<Change>("change");
        QTest::addColumn<QStringList>("issues");
        QTest::addColumn<double>("seconds"); // until it is started; 0 when that is not tried
        QTest::newRow("starts") << Change([](auto &w) {
            w.facts().installed.append(installed(1.5));
        }) << QStringList() << 1.5;
        QTest::newRow("does not start")
            << Change([](auto &w) { w.facts().installed.append(installed(1.5, u"No memory"_s)); })
            << QStringList{u"Couldn’t open Agenda: No memory"_s} << 1.5;
        QTest::newRow("not installed")
            << nothing
            << QStringList{u"Couldn’t find Agenda. Reinstall it or remove it from your flock."_s}
            << 0.0;
    }

    void reopens()
    {
        QFETCH(Change, change);
        QFETCH(QStringList, issues);
        QFETCH(double, seconds);
        ModelWorld world;
        change(world);
        TovelModel &model = world.start();
        model.setIssues({u"old"_s});
        world.desktop.removeWindow(102);
        const auto task = model.reopen(agenda);
        QCOMPARE(model.windows().size(), 2);
        QVERIFY(world.finish(task));
        QCOMPARE(world.elapsed(), seconds);
        QCOMPARE(model.issues(), issues);
        QCOMPARE(model.windows().size(), seconds > 0 ? 1 : 2); // looked afresh, or not
        QCOMPARE(world.desktop.takeJournal().join(u','),
                 seconds > 0 ? u"open file:///apps/agenda"_s : QString());
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
