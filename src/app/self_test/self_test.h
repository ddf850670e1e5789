#pragma once

#include <QCoroTask>
#include <QStringList>
#include <QTextStream>

#include <optional>

namespace tovel {

class FixtureProcess;
class FixtureWindows;
class Platform;

// The modes in which the program checks itself and the desktop it runs on, prints what it found as
// plain text, and shows no panel.
enum class SelfTestMode {
    Diagnose,
    SwitchTest,
    Fixture,
    CrossProcessTest,
    IntegrationTest,
    SelfTest
};

// The mode that the command line asks for; of several, the first in the order above.
std::optional<SelfTestMode> selfTestMode(const QStringList &arguments);

// Whether the movement test is to minimize its window first.
bool asksForMinimized(const QStringList &arguments);

enum SelfTestStatus {
    SelfTestPassed = 0,
    SelfTestFailed = 1,
    SelfTestSkipped = 2, // the desktops do not allow the test
};

// What a mode runs on, and where it prints: results to out, failures and skips to err. Borrowed;
// to be kept for as long as the mode runs. The platform must be the installed one.
struct SelfTestSetting
{
    Platform &platform;
    QTextStream &out;
    QTextStream &err;
    QString session{}; // what it calls itself, as far as known
};

// Whether windows can be moved here, what displays there are, and which windows of the flock stay
// behind; last, which session it is. Passes where a display is listed and windows can be moved.
int diagnose(const SelfTestSetting &setting);

// Shows another desktop and the first one again. Silent when skipped.
QCoro::Task<int> testSwitching(const SelfTestSetting &setting);

// Shows the fixture windows and prints their numbers. They are there until they are taken away.
QCoro::Task<> showFixture(const SelfTestSetting &setting, FixtureWindows &windows);

// Finds a window of another process and moves it there and back, the process's other window being
// left alone. The process has ended when this ends. Silent when skipped.
QCoro::Task<int> testAcrossProcesses(const SelfTestSetting &setting, FixtureProcess &process);

// Moves a window of this process there and back, another one being left alone.
QCoro::Task<int> testMovement(const SelfTestSetting &setting, FixtureWindows &windows,
                              bool minimized);

} // namespace tovel
