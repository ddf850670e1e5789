#include "platform/linux/boottime_clock.h"

#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

class TestBoottimeClock final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firesOnceForMissedBeatsAndGoesOn()
    {
        BoottimeClock clock;
        int beats = 0;
        const double start = clock.monotonicTime();
        const auto timer = clock.startTimer(0.05, true, [&] { ++beats; });
        while (clock.monotonicTime() < start + 0.22) { }
        QCoreApplication::processEvents();
        QCOMPARE(beats, 1);
        QTRY_VERIFY(beats >= 3);
        QVERIFY(clock.monotonicTime() >= start + 0.3);
    }

    void stopsFromWithinHandlers()
    {
        auto clock = std::make_unique<BoottimeClock>();
        int calls = 0;
        int strayCalls = 0;
        std::unique_ptr<Timer> own;
        std::unique_ptr<Timer> neighbour;
        own = clock->startTimer(0.001, true, [&, step = std::make_shared<int>(1)] {
            own.reset();
            neighbour.reset();
            calls += *step; // what the handler holds outlives its timer
        });
        neighbour = clock->startTimer(0.001, false, [&] { ++strayCalls; });
        // Lets both fall due together.
        for (const double start = clock->monotonicTime(); clock->monotonicTime() < start + 0.005;) {
        }
        QTRY_COMPARE(calls, 1);

        auto orphan = clock->startTimer(0, false, [&] { ++strayCalls; });
        clock.reset();
        QCoreApplication::processEvents();
        orphan.reset();
        QCOMPARE(strayCalls, 0);
    }
};

QTEST_GUILESS_MAIN(TestBoottimeClock)
#include "tst_boottime_clock.moc"
