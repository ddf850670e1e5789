#include "settings/fake_updater.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

struct World
{
    FakeUpdaterState state{.canCheck = true};
    QStringList log;
    SPUStandardUserDriverDelegate *userDriverDelegate = nullptr;
    std::unique_ptr<TovelUpdates> updates = std::make_unique<TovelUpdates>(
        [this](bool starting, SPUUpdaterDelegate *updaterDelegate,
               SPUStandardUserDriverDelegate *delegate) {
            log += starting && updaterDelegate ? u"made, starting"_s : u"made"_s;
            userDriverDelegate = delegate;
            return std::make_unique<FakeUpdater>(state);
        },
        [this] { log += u"activated"_s; });
    QSignalSpy changes{updates.get(), &TovelUpdates::canCheckChanged};

    QStringList take() { return std::exchange(log, {}); }
};

} // namespace

class TestUpdates : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void checksOnlyWhileTheUpdaterCan()
    {
        World world;
        world.updates->check();
        QVERIFY(!world.updates->canCheck());
        QCOMPARE(world.take(), QStringList());

        world.updates->start();
        world.updates->start();
        QCOMPARE(world.take(), QStringList{u"made, starting"_s});
        QVERIFY(!world.updates->canCheck());
        QCoreApplication::processEvents();
        QVERIFY(world.updates->canCheck());
        QCOMPARE(world.changes.size(), 1);
        world.updates->check();
        QCOMPARE(world.take(), QStringList{u"activated"_s});
        QCOMPARE(world.state.checks, 1);

        world.state.setCanCheck(false);
        QVERIFY(world.updates->canCheck());
        QCoreApplication::processEvents();
        QVERIFY(!world.updates->canCheck());
        QCOMPARE(world.changes.size(), 2);
        world.state.setCanCheck(false);
        world.updates->check();
        QCoreApplication::processEvents();
        QCOMPARE(world.changes.size(), 2);
        QCOMPARE(world.state.checks, 1);
        QCOMPARE(world.take(), QStringList());
    }

    void changesThatArriveAfterTheEndAreDropped()
    {
        World world;
        world.updates->start();
        world.userDriverDelegate->standardUserDriverWillHandleShowingUpdate(true, {}, {});
        world.updates.reset();
        QVERIFY(!world.state.observer);
        QCoreApplication::processEvents();
        QCOMPARE(world.changes.size(), 0);
        QCOMPARE(world.take(), QStringList{u"made, starting"_s});
    }

    void comesToTheFrontForAnUpdateThatTheUpdaterShows()
    {
        World world;
        QVERIFY(world.updates->supportsGentleScheduledUpdateReminders());
        world.updates->standardUserDriverWillHandleShowingUpdate(false, {}, {});
        QCoreApplication::processEvents();
        QCOMPARE(world.take(), QStringList());
        world.updates->standardUserDriverWillHandleShowingUpdate(true, {}, {});
        QCOMPARE(world.take(), QStringList());
        QCoreApplication::processEvents();
        QCOMPARE(world.take(), QStringList{u"activated"_s});
    }

    void describesTheVersion()
    {
        const QTemporaryDir folder;
        const auto description = [&folder](const QByteArray &dictionary) {
            QFile file(folder.filePath(u"Info.json"_s));
            if (!file.open(QIODevice::WriteOnly))
                qFatal("no dictionary");
            file.write(dictionary);
            file.close();
            return TovelUpdates::versionDescription(Bundle(folder.path()));
        };
        QCOMPARE(description(R"({"CFBundleShortVersionString":"1.2","CFBundleVersion":"34"})"),
                 u"Version 1.2 (34)"_s);
        QCOMPARE(description(R"({"CFBundleShortVersionString":1.2})"), u"Version ? (?)"_s);
    }
};

QTEST_GUILESS_MAIN(TestUpdates)
#include "tst_updates.moc"
