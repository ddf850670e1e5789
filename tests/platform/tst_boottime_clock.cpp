#include "platform/linux/boottime_clock.h"

#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

class TestBoottimeClock final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsBothTimes()
    {
        const BoottimeClock clock;
        const double before = clock.monotonicTime();
        QVERIFY(clock.monotonicTime() >= before);
        const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
        const double expected
            = static_cast<double>(reference.msecsTo(QDateTime::currentDateTimeUtc())) / 1000;
        QVERIFY(qAbs(clock.CFAbsoluteTimeGetCurrent() - expected) < 5);
    }

    void firesInOrderOfDueTimeThenStart()
    {
        BoottimeClock clock;
        QStringList calls;
        clock.setWakeHandler([&] { calls << u"wake"_s; });
        const auto late = clock.startTimer(0.03, false, [&] { calls << u"late"_s; });
        const auto first = clock.startTimer(0, false, [&] { calls << u"first"_s; });
        const auto second = clock.startTimer(-1, false, [&] { calls << u"second"_s; });
        auto never = clock.startTimer(0.01, false, [&] { calls << u"never"_s; });
        never.reset();
        QVERIFY(calls.isEmpty());
        QTRY_VERIFY(calls.contains(u"late"_s));
        QCOMPARE(
            calls,
            QStringList({u"wake"_s, u"first"_s, u"wake"_s, u"second"_s, u"wake"_s, u"late"_s}));
    }

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
        bool finished = false;
        const auto last = clock->startTimer(0.02, false, [&] { finished = true; });
        // Lets both fall due together.
        for (const double start = clock->monotonicTime(); clock->monotonicTime() < start + 0.005;) {
        }
        QTRY_VERIFY(finished);
        QCOMPARE(calls, 1);

        auto orphan = clock->startTimer(0, false, [&] { ++strayCalls; });
        clock.reset();
        QCoreApplication::processEvents();
        orphan.reset();
        QCOMPARE(strayCalls, 0);
    }
};

QTEST_GUILESS_MAIN(TestBoottimeClock)
#include "tst_boottime_clock.moc"
