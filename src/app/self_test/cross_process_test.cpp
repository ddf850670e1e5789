#include "app/self_test/self_test.h"

#include "app/self_test/check_report.h"
#include "app/self_test/fixture_process.h"
#include "app/self_test/observations.h"
#include "bridge/bridge.h"
#include "model/readings.h"
#include "model/tovel_model.h"
#include "platform/clock.h"
#include "platform/platform.h"
#include "platform/sleep.h"

#include <charconv>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

using Spaces = QList<std::uint64_t>;

constexpr double longestSilence = 10; // seconds until a process that prints nothing is given up
constexpr double glance = 0.02; // seconds between two looks at what it printed
constexpr double pause = 0.5; // seconds for the window server to do what it was asked for

// Without results where the test ended early.
struct Outcome
{
    int status = SelfTestFailed;
    QList<CheckResult> results;
};

QCoro::Task<QByteArray> firstLine(Clock &clock, FixtureProcess &process)
{
    const double deadline = clock.monotonicTime() + longestSilence;
    while (clock.monotonicTime() < deadline) {
        if (const auto line = process.takeLine())
            co_return *line;
        if (!process.isRunning())
            break;
        co_await Sleep(clock, glance);
    }
    co_return QByteArray();
}

// Pieces that are no window number are left out.
QList<std::uint32_t> windowNumbers(const QByteArray &line)
{
    QList<std::uint32_t> numbers;
    for (const QByteArray &piece : line.split(',')) {
        std::uint32_t number = 0;
        const auto [end, error] = std::from_chars(piece.cbegin(), piece.cend(), number);
        if (error == std::errc() && end == piece.cend())
            numbers.append(number);
    }
    return numbers;
}

QCoro::Task<Outcome> checkWindowsOf(FixtureProcess &process, const SelfTestSetting &setting)
{
    Platform &platform = setting.platform;
    Clock &clock = platform.clock();
    Outcome outcome;
    const QByteArray line = co_await firstLine(clock, process);
    const QList<std::uint32_t> numbers = windowNumbers(line);
    if (numbers.size() != 2)
        co_return outcome;
    const std::uint32_t moving = numbers.first();
    const std::uint32_t staying = numbers.last();
    const Spaces start = readWindowSpaces(moving);
    if (start.isEmpty())
        co_return outcome;

    const QList<Desktop> desktops = TovelModel(platform).desktops();
    const Desktop *found = desktopWithID(desktops, start.first());
    const auto source = found ? std::optional(*found) : std::nullopt;
    const QList<Desktop> others = othersOnDisplay(desktops, source);
    if (others.isEmpty()) {
        outcome.status = SelfTestSkipped;
        co_return outcome;
    }
    const std::uint64_t target = others.first().id;

    const auto frame = windowBounds(platform, moving);
    const bool identified = listedWindow(platform, process.processIdentifier(), moving) != nullptr;
    TMove(moving, target);
    co_await Sleep(clock, pause);
    const bool moved = readWindowSpaces(moving) == Spaces{target};
    const bool stayed = readWindowSpaces(staying) == Spaces{source->id};
    const auto movedFrame = windowBounds(platform, moving);
    TMove(moving, source->id);
    co_await Sleep(clock, pause);
    const bool restored = readWindowSpaces(moving) == Spaces{source->id};

    outcome.results = {
        {u"Cross-process AX window identified"_s, identified},
        {u"Cross-process move confirmed"_s, moved},
        {u"Unselected window stayed"_s, stayed},
        {u"Frame preserved"_s, frame && movedFrame == frame},
        {u"Original desktop restored"_s, restored},
    };
    co_return outcome;
}

} // namespace

QCoro::Task<int> testAcrossProcesses(const SelfTestSetting &setting, FixtureProcess &process)
{
    if (!process.start()) {
        setting.err << "FAIL: fixture launch failed" << Qt::endl;
        co_return SelfTestFailed;
    }
    const Outcome outcome = co_await checkWindowsOf(process, setting);
    // Before anything is printed: a reader that has gone away must not leave the process behind.
    process.end();
    if (outcome.results.isEmpty())
        co_return outcome.status;
    const int status = report(outcome.results, setting.out);
    co_return status;
}

} // namespace tovel
