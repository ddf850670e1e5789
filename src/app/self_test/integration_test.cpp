#include "app/self_test/self_test.h"

#include "app/self_test/check_report.h"
#include "app/self_test/fixture_windows.h"
#include "app/self_test/observations.h"
#include "bridge/bridge.h"
#include "model/readings.h"
#include "model/tovel_model.h"
#include "platform/platform.h"
#include "platform/sleep.h"
#include "platform/variants.h"

#include <QCoreApplication>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr double pause = 0.3; // seconds for the window server to do what it was asked for

std::optional<std::uint64_t> testTarget(Platform &platform)
{
    const TovelModel model(platform);
    const QList<Desktop> &desktops = model.desktops();
    const QList<Desktop> others = othersOnDisplay(desktops, firstShown(desktops));
    if (others.isEmpty())
        return std::nullopt;
    return others.first().id;
}

// Asks the window server, because the program itself only knows what it wished for.
std::optional<bool> isMinimized(Platform &platform, std::uint32_t window)
{
    const auto pid = static_cast<std::int32_t>(QCoreApplication::applicationPid());
    const AXUIElementRef element = listedWindow(platform, pid, window);
    return boolean(attribute(element, u"AXMinimized"_s).value_or(QVariant()));
}

} // namespace

QCoro::Task<int> testMovement(const SelfTestSetting &setting, FixtureWindows &windows,
                              bool minimized)
{
    using Spaces = QList<std::uint64_t>;
    Platform &platform = setting.platform;
    Clock &clock = platform.clock();
    const std::optional<std::uint64_t> target = testTarget(platform);
    if (!target) {
        setting.err << "SKIP: need two regular desktops on one display" << Qt::endl;
        co_return SelfTestSkipped;
    }

    const QString title = u"Tovel movement test"_s;
    const auto [moving, staying]
        = co_await openFixturePair(platform, windows, title, u"Tovel stationary test"_s);
    if (minimized) {
        windows.minimize(title);
        co_await Sleep(clock, pause);
        co_await Sleep(clock, pause);
    }

    const Spaces start = readWindowSpaces(moving);
    const Spaces stayingStart = readWindowSpaces(staying);
    if (start.isEmpty() || stayingStart.isEmpty()) {
        setting.err << "FAIL: could not determine test window desktop" << Qt::endl;
        co_return SelfTestFailed;
    }

    const auto frame = windowBounds(platform, moving);
    const std::int32_t moveStatus = TMove(moving, *target);
    co_await Sleep(clock, pause);
    const bool moved = readWindowSpaces(moving) == Spaces{*target};
    const bool stayed = readWindowSpaces(staying) == stayingStart;
    const auto movedFrame = windowBounds(platform, moving);
    const std::int32_t restoreStatus = TMove(moving, start.first());
    co_await Sleep(clock, pause);
    const bool restored = readWindowSpaces(moving) == Spaces{start.first()};

    const CheckResult state[] = {
        {u"Minimized state preserved"_s, isMinimized(platform, moving) == minimized},
    };
    const CheckResult movement[] = {
        {u"Moved to requested desktop"_s, moved},
        {u"Other window stayed"_s, stayed},
        {u"Window position and size preserved"_s, frame && movedFrame == frame},
        {u"Original desktop restored"_s, restored},
    };
    const int stateStatus = report(state, setting.out);
    setting.out << "Move return code: " << moveStatus << "; restore return code: " << restoreStatus
                << Qt::endl;
    const int movementStatus = report(movement, setting.out);
    co_return stateStatus == SelfTestPassed ? movementStatus : stateStatus;
}

} // namespace tovel
