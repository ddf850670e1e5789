#include "settings/fake_updater.h"
#include "support/test.h"

#include <QSignalSpy>

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
        world.updates->start();
        world.updates->start();
        QCOMPARE(world.take(), QStringList{u"made, starting"_s});
        for (const bool can : {true, false}) {
            world.state.setCanCheck(can);
            QVERIFY(world.updates->canCheck() != can); // not from within
            QCoreApplication::processEvents();
            QCOMPARE(world.updates->canCheck(), can);
            world.updates->check();
            QCOMPARE(world.take(), can ? QStringList{u"activated"_s} : QStringList());
        }
        QCOMPARE(world.changes.size(), 2);
        QCOMPARE(world.state.checks, 1);
    }

    void comesToTheFrontForAnUpdateThatTheUpdaterShows()
    {
        World world;
        world.updates->start();
        world.take();
        SPUStandardUserDriverDelegate &delegate = *world.userDriverDelegate;
        QVERIFY(delegate.supportsGentleScheduledUpdateReminders());
        delegate.standardUserDriverWillHandleShowingUpdate(false, {}, {});
        QCoreApplication::processEvents();
        QCOMPARE(world.take(), QStringList());
        delegate.standardUserDriverWillHandleShowingUpdate(true, {}, {});
        QCOMPARE(world.take(), QStringList());
        QCoreApplication::processEvents();
        QCOMPARE(world.take(), QStringList{u"activated"_s});
        // What arrives after the end is dropped.
        delegate.standardUserDriverWillHandleShowingUpdate(true, {}, {});
        world.updates.reset();
        QVERIFY(!world.state.observer);
        QCoreApplication::processEvents();
        QCOMPARE(world.take(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestUpdates)
#include "tst_updates.moc"
