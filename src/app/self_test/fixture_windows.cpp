#include "app/self_test/fixture_windows.h"

#include "model/readings.h"
#include "platform/clock.h"
#include "platform/own_windows.h"
#include "platform/platform.h"
#include "platform/sleep.h"

namespace tovel {

namespace {

constexpr double settling = 0.3; // seconds
constexpr double glance = 0.02; // seconds between two looks at a window that is not there yet
constexpr int mostGlances = 100;

} // namespace

QCoro::Task<FixturePair> openFixturePair(Platform &platform, FixtureWindows &windows,
                                         QString firstTitle, QString secondTitle)
{
    Clock &clock = platform.clock();
    const OwnWindow first = windows.open(firstTitle, firstFixtureContent);
    const OwnWindow second = windows.open(secondTitle, secondFixtureContent);
    FixturePair pair;
    // Showing a window is only a request, which a busy window manager takes its time to grant.
    for (int i = 0; i < mostGlances; ++i) {
        pair = {platform.ownWindows().numberOf(first), platform.ownWindows().numberOf(second)};
        if (!readWindowSpaces(pair.first).isEmpty() && !readWindowSpaces(pair.second).isEmpty())
            break;
        co_await Sleep(clock, glance);
    }
    co_await Sleep(clock, settling);
    co_return pair;
}

} // namespace tovel
