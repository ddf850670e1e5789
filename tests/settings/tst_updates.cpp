#include "settings/updates.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

// What the updater was asked and told, in order, and what it answers.
struct Log
{
    QStringList entries;
    bool canCheck = true;
    std::function<void()> observer;
    SPUStandardUserDriverDelegate *userDriverDelegate = nullptr;

    QStringList take() { return std::exchange(entries, {}); }
};

class FakeController final : public SPUStandardUpdaterController, private SPUUpdater
{
public:
    explicit FakeController(Log &log)
        : m_log(log)
    { }

    SPUUpdater &updater() override { return *this; }
    void startUpdater() override { m_log.entries += u"started"_s; }
    void checkForUpdates() override { m_log.entries += u"checked"_s; }

private:
    class Observation final : public KeyValueObservation
    {
    public:
        explicit Observation(Log &log)
            : m_log(log)
        { }
        ~Observation() override { m_log.observer = nullptr; }

    private:
        Log &m_log;
    };

    bool canCheckForUpdates() const override { return m_log.canCheck; }
    std::unique_ptr<KeyValueObservation> observeCanCheckForUpdates(
        std::function<void()> handler) override
    {
        m_log.observer = std::move(handler);
        m_log.observer();
        return std::make_unique<Observation>(m_log);
    }

    Log &m_log;
};

struct World
{
    Log log;
    std::unique_ptr<TovelUpdates> updates = std::make_unique<TovelUpdates>(
        [this](bool starting, SPUUpdaterDelegate *updaterDelegate,
               SPUStandardUserDriverDelegate *userDriverDelegate) {
            log.entries += starting && updaterDelegate ? u"made, starting"_s : u"made"_s;
            log.userDriverDelegate = userDriverDelegate;
            return std::make_unique<FakeController>(log);
        },
        [this] { log.entries += u"activated"_s; });
    QSignalSpy changes{updates.get(), &TovelUpdates::canCheckChanged};

    void setCanCheck(bool canCheck)
    {
        log.canCheck = canCheck;
        log.observer();
    }
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
        QCOMPARE(world.log.take(), QStringList());

        world.updates->start();
        world.updates->start();
        QCOMPARE(world.log.take(), QStringList{u"made, starting"_s});
        QVERIFY(!world.updates->canCheck());
        QCoreApplication::processEvents();
        QVERIFY(world.updates->canCheck());
        QCOMPARE(world.changes.size(), 1);
        world.updates->check();
        QCOMPARE(world.log.take(), (QStringList{u"activated"_s, u"checked"_s}));

        world.setCanCheck(false);
        QVERIFY(world.updates->canCheck());
        QCoreApplication::processEvents();
        QVERIFY(!world.updates->canCheck());
        QCOMPARE(world.changes.size(), 2);
        world.setCanCheck(false);
        world.updates->check();
        QCoreApplication::processEvents();
        QCOMPARE(world.changes.size(), 2);
        QCOMPARE(world.log.take(), QStringList());
    }

    void changesThatArriveAfterTheEndAreDropped()
    {
        World world;
        world.updates->start();
        world.log.userDriverDelegate->standardUserDriverWillHandleShowingUpdate(true, {}, {});
        world.updates.reset();
        QVERIFY(!world.log.observer);
        QCoreApplication::processEvents();
        QCOMPARE(world.changes.size(), 0);
        QCOMPARE(world.log.take(), QStringList{u"made, starting"_s});
    }

    void comesToTheFrontForAnUpdateThatTheUpdaterShows()
    {
        World world;
        QVERIFY(world.updates->supportsGentleScheduledUpdateReminders());
        world.updates->standardUserDriverWillHandleShowingUpdate(false, {}, {});
        QCoreApplication::processEvents();
        QCOMPARE(world.log.take(), QStringList());
        world.updates->standardUserDriverWillHandleShowingUpdate(true, {}, {});
        QCOMPARE(world.log.take(), QStringList());
        QCoreApplication::processEvents();
        QCOMPARE(world.log.take(), QStringList{u"activated"_s});
    }

    void describesTheVersion()
    {
        const QTemporaryDir folder;
        QCOMPARE(TovelUpdates::versionDescription(Bundle(folder.path())), u"Version ? (?)"_s);
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
        QCOMPARE(description(R"({"CFBundleShortVersionString":"1.2"})"), u"Version 1.2 (?)"_s);
        QCOMPARE(description(R"({"CFBundleShortVersionString":1.2,"CFBundleVersion":"34"})"),
                 u"Version ? (34)"_s);
    }
};

QTEST_GUILESS_MAIN(TestUpdates)
#include "tst_updates.moc"
