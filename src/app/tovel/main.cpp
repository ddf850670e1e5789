#include "app/console.h"
#include "app/platform_choice.h"
#include "app/program.h"
#include "app/self_test/rule_checks.h"
#include "app/self_test/self_test.h"
#include "app/tovel/child_process.h"
#include "app/tovel/command_line.h"
#include "app/tovel/panel.h"
#include "app/tovel/window_set.h"

#include <QGuiApplication>

#include <cstdio>
#include <cstdlib>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr int UnwrittenOutput = 1;
constexpr int UsageError = 2;

bool opensWindows(SelfTestMode mode)
{
    return mode == SelfTestMode::Fixture || mode == SelfTestMode::IntegrationTest;
}

std::unique_ptr<QCoreApplication> makeApplication(SelfTestMode mode, int &argc, char **argv)
{
    if (!opensWindows(mode))
        return std::make_unique<QCoreApplication>(argc, argv);

    prepareDisplay(toolkitPlugins());
    auto application = std::make_unique<QGuiApplication>(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return application;
}

int runFixture(const SelfTestSetting &setting)
{
    if (QGuiApplication::platformName() == "offscreen"_L1) {
        setting.err << "FAIL: the fixture windows need a display" << Qt::endl;
        return SelfTestFailed;
    }
    WindowSet windows;
    QCoro::waitFor(showFixture(setting, windows));
    return QCoreApplication::exec();
}

int runMode(SelfTestMode mode, const QStringList &arguments, const SelfTestSetting &setting)
{
    switch (mode) {
    case SelfTestMode::Diagnose:
        return diagnose(setting);
    case SelfTestMode::SwitchTest:
        return QCoro::waitFor(testSwitching(setting));
    case SelfTestMode::Fixture:
        return runFixture(setting);
    case SelfTestMode::CrossProcessTest: {
        ChildProcess process(arguments.value(0));
        return QCoro::waitFor(testAcrossProcesses(setting, process));
    }
    case SelfTestMode::IntegrationTest: {
        WindowSet windows;
        return QCoro::waitFor(testMovement(setting, windows, asksForMinimized(arguments)));
    }
    case SelfTestMode::SelfTest:
        return runRuleChecks(ruleChecks(), setting.out, setting.err);
    }
    Q_UNREACHABLE();
}

int print(const QString &text, QTextStream &err)
{
    if (writeText(stdout, text))
        return EXIT_SUCCESS;
    err << "tovel: the output could not be written" << Qt::endl;
    return UnwrittenOutput;
}

int runTask(Task task, int &argc, char **argv, QTextStream &err)
{
    switch (task) {
    case Task::PrintHelp:
        return print(usageText(), err);
    case Task::PrintVersion:
        return print(u"tovel %1\n"_s.arg(QCoreApplication::applicationVersion()), err);
    case Task::ShowPanel:
        return runPanel(argc, argv, AppDelegate::Launch::Shown, err);
    case Task::StartHidden:
        return runPanel(argc, argv, AppDelegate::Launch::Hidden, err);
    }
    Q_UNREACHABLE();
}

} // namespace

int runProgram(int argc, char *argv[])
{
    openMissingStreams();
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    QTextStream out(stdout);
    QTextStream err(stderr);

    QCoreApplication::setApplicationName(u"org.tovel.Tovel"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(TOVEL_VERSION));
    const std::optional<SelfTestMode> mode = selfTestMode(arguments);
    if (!mode)
        return runTask(task(arguments), argc, argv, err);

    const std::unique_ptr<QCoreApplication> application = makeApplication(*mode, argc, argv);
    const std::unique_ptr<PlatformChoice> choice = choosePlatform();
    if (!choice) {
        err << "tovel: " << printable(unknownPlatformText()) << Qt::endl;
        return UsageError;
    }
    const PlatformInstallation installation(choice->platform());
    return runMode(*mode, arguments,
                   {choice->platform(), out, err, printable(choice->sessionName())});
}
