#include "platform/simulated/virtual_clock.h"

#include <QTest>

using namespace tovel;

class TstVirtualClock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void timersFireInOrderOfDueTimeThenOfStart();
    void repeatingTimerFiresUntilItIsDestroyed();
    void handlersMayStartAndDestroyTimers();
    void wallClockTimeFiresNothing();
    void runUntilStopsWhenThePredicateHolds();
};

void TstVirtualClock::timersFireInOrderOfDueTimeThenOfStart()
{
    VirtualClock clock;
    const double start = clock.monotonicTime();
    QList<int> fired;
    QList<double> times;
    std::vector<std::unique_ptr<Timer>> timers;
    const auto add = [&](int id, double interval) {
        timers.push_back(clock.startTimer(interval, false, [&, id] {
            fired.append(id);
            times.append(clock.monotonicTime() - start);
        }));
    };
    add(1, 0.5);
    add(2, 0.2);
    add(3, 0.5);
    add(4, 2);
    clock.advance(0);
    QVERIFY(fired.isEmpty());

    clock.advance(1);
    QCOMPARE(fired, QList<int>({2, 1, 3}));
    QVERIFY(qAbs(times[0] - 0.2) < 1e-6 && qAbs(times[1] - 0.5) < 1e-6);
    QVERIFY(qAbs(clock.monotonicTime() - start - 1) < 1e-6);
    QCOMPARE(clock.timerCount(), 1);
}

void TstVirtualClock::repeatingTimerFiresUntilItIsDestroyed()
{
    VirtualClock clock;
    int fired = 0;
    auto timer = clock.startTimer(0.06, true, [&] { ++fired; });
    clock.advance(0.72); // twelve times 0.06, which is not exact in binary
    QCOMPARE(fired, 12);
    timer.reset();
    clock.advance(10);
    QCOMPARE(fired, 12);
}

void TstVirtualClock::handlersMayStartAndDestroyTimers()
{
    VirtualClock clock;
    std::unique_ptr<Timer> own;
    std::unique_ptr<Timer> other = clock.startTimer(0.2, false, [] { QFAIL("was destroyed"); });
    std::unique_ptr<Timer> started;
    const auto captured = std::make_shared<int>(0);
    own = clock.startTimer(0.1, true, [&, captured] {
        own.reset();
        other.reset();
        started = clock.startTimer(0.1, false, [captured] { *captured += 10; });
        ++*captured;
    });
    clock.advance(1);
    QCOMPARE(*captured, 11);
    QCOMPARE(clock.timerCount(), 0);
}

void TstVirtualClock::wallClockTimeFiresNothing()
{
    VirtualClock clock;
    const double start = clock.CFAbsoluteTimeGetCurrent();
    int fired = 0;
    const auto timer = clock.startTimer(0.1, false, [&] { ++fired; });
    clock.advanceWallClock(0.3);
    QCOMPARE(fired, 0);
    QVERIFY(qAbs(clock.CFAbsoluteTimeGetCurrent() - start - 0.3) < 1e-6);
    clock.advance(0);
    QCOMPARE(fired, 1);
}

void TstVirtualClock::runUntilStopsWhenThePredicateHolds()
{
    VirtualClock clock;
    const double start = clock.monotonicTime();
    int fired = 0;
    const auto timer = clock.startTimer(0.5, true, [&] { ++fired; });
    QVERIFY(clock.runUntil([&] { return fired == 2; }, 10));
    QVERIFY(qAbs(clock.monotonicTime() - start - 1) < 1e-6);
    QVERIFY(!clock.runUntil([&] { return fired == 9; }, 1.2));
    QVERIFY(qAbs(clock.monotonicTime() - start - 2.2) < 1e-6);
}

QTEST_APPLESS_MAIN(TstVirtualClock)
#include "tst_virtual_clock.moc"
