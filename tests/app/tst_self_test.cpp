#include "app/self_test/fixture_process.h"
#include "app/self_test/fixture_windows.h"
#include "app/self_test/rule_checks.h"
#include "app/self_test/self_test.h"
#include "model/model_world.h"

#include <QCoreApplication>
#include <QTest>

#include <functional>

using namespace tovel;

namespace {

constexpr std::uint32_t movingWindow = 901;
constexpr std::uint32_t stayingWindow = 902;

using Change = std::function<void(ModelWorld &)>;
using WindowChange = std::function<void(SimWindow &moving, SimWindow &staying)>;

SimWindow fixtureWindow(std::uint32_t number, std::int32_t pid, const QRect &content)
{
    return {.number = number, .pid = pid, .spaces = {10}, .frame = QRectF(content)};
}

// Windows of this process on the simulated desktop.
class SimulatedWindows final : public FixtureWindows
{
public:
    explicit SimulatedWindows(SimulatedDesktop &desktop)
        : m_desktop(desktop)
        , m_pid(static_cast<std::int32_t>(QCoreApplication::applicationPid()))
    {
        m_desktop.addApplication({.pid = m_pid});
    }

    std::uint32_t open(const QString &title, const QRect &content) override
    {
        const std::uint32_t number = titles.isEmpty() ? movingWindow : stayingWindow;
        titles.append(title);
        if (server)
            m_desktop.addWindow(fixtureWindow(number, m_pid, content));
        return number;
    }

    void minimize(std::uint32_t number) override { m_desktop.window(number).minimized = true; }

    QStringList titles;
    bool server = true; // whether the window server gets to know of the windows

private:
    SimulatedDesktop &m_desktop;
    std::int32_t m_pid;
};

// A process with two windows on the simulated desktop, which prints a line after a second.
class SimulatedProcess final : public FixtureProcess
{
public:
    explicit SimulatedProcess(SimulatedDesktop &desktop)
        : m_desktop(desktop)
    { }

    bool start() override
    {
        if (!starts)
            return false;
        m_running = true;
        m_desktop.addApplication({.pid = 900});
        m_desktop.addWindow(fixtureWindow(movingWindow, 900, firstFixtureContent));
        m_desktop.addWindow(fixtureWindow(stayingWindow, 900, secondFixtureContent));
        whenStarted();
        if (!line.isEmpty())
            m_desktop.after(1, [this] { m_line = line; });
        return true;
    }

    bool isRunning() const override { return m_running; }
    std::int32_t processIdentifier() const override { return 900; }
    std::optional<QByteArray> takeLine() override { return std::exchange(m_line, std::nullopt); }

    void end() override
    {
        m_running = false;
        ++ends;
    }

    bool starts = true;
    std::function<void()> whenStarted;
    QByteArray line;
    int ends = 0;

private:
    SimulatedDesktop &m_desktop;
    std::optional<QByteArray> m_line;
    bool m_running = false;
};

// The simulated desktop with what the mode under test prints.
struct World : ModelWorld
{
    // The exit status; -1 when the mode does not end.
    int finish(QCoro::Task<int> task)
    {
        desktop.clock().runUntil([&] { return task.isReady(); }, 600);
        return task.isReady() ? QCoro::waitFor(std::move(task)) : -1;
    }

    void compare(const QString &expectedOut, const QString &expectedErr)
    {
        QCOMPARE(outText, expectedOut);
        QCOMPARE(errText, expectedErr);
    }

    QString outText;
    QString errText;
    QTextStream out{&outText};
    QTextStream err{&errText};
    SelfTestSetting setting{desktop.platform(), out, err};
};

// Leaves one regular desktop on the display that is shown first.
void leaveOneDesktop(ModelWorld &world)
{
    world.desktop.display(u"A"_s).spaces = {{.id = 10}, {.id = 50, .type = 4}};
}

// The text with its places taken by the values, which blanks separate.
QString filled(QString text, const QString &values)
{
    for (const QString &value : values.split(u' '))
        text = text.arg(value);
    return text;
}

} // namespace

class TestSelfTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void picksTheModeByFlag_data();
    void picksTheModeByFlag();
    void rulesHoldAndTheFirstFailureEndsTheRun();
    void diagnosis_data();
    void diagnosis();
    void switching_data();
    void switching();
    void movement_data();
    void movement();
    void movementPrintsRefusalsAndWhyItCannotTell();
    void fixturePrintsItsWindows();
    void acrossProcesses_data();
    void acrossProcesses();
    void tellsWhenTheProcessDoesNotStart();
};

void TestSelfTest::picksTheModeByFlag_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<std::optional<SelfTestMode>>("mode");
    using Mode = std::optional<SelfTestMode>;
    QTest::newRow("none") << u"tovel --minimized"_s << Mode();
    QTest::newRow("no exact match") << u"tovel --Diagnose --fixture=1 -self-test"_s << Mode();
    QTest::newRow("anywhere") << u"tovel x --fixture"_s << Mode(SelfTestMode::Fixture);
    QTest::newRow("order of the modes, not of the arguments")
        << u"tovel --self-test --integration-test --cross-process-test"_s
        << Mode(SelfTestMode::CrossProcessTest);
    QTest::newRow("diagnosis before all")
        << u"tovel --switch-test --diagnose --fixture"_s << Mode(SelfTestMode::Diagnose);
}

void TestSelfTest::picksTheModeByFlag()
{
    QFETCH(const QString, arguments);
    QFETCH(const std::optional<SelfTestMode>, mode);
    QVERIFY(selfTestMode(arguments.split(u' ')) == mode);
}

void TestSelfTest::rulesHoldAndTheFirstFailureEndsTheRun()
{
    World all;
    QCOMPARE(runRuleChecks(ruleChecks(), all.out, all.err), SelfTestPassed);
    all.compare(u"PASS: regular window can move\n"
                "PASS: minimized window can move\n"
                "PASS: full-screen window skipped\n"
                "PASS: all-desktops window skipped\n"
                "PASS: unknown desktop skipped\n"
                "PASS: non-user space skipped\n"
                "PASS: split flock counted by actual desktop\n"
                "PASS: empty flock has no location\n"
                "PASS: split flock has no disabled destination\n"
                "PASS: only the flock's desktop is the current destination\n"
                "PASS: unknown flock does not disable a monitor's visible desktop\n"_s,
                {});

    World failing;
    constexpr RuleCheck checks[] = {{"one", [] { return true; }},
                                    {"two", [] { return false; }},
                                    {"three", [] { return true; }}};
    QCOMPARE(runRuleChecks(checks, failing.out, failing.err), SelfTestFailed);
    failing.compare(u"PASS: one\n"_s, u"FAIL: two\n"_s);
}

void TestSelfTest::diagnosis_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("out");
    const auto row = [](const char *name, const Change &change, int status, const QString &out) {
        QTest::newRow(name) << change << status << out;
    };
    row(
        "a window stays behind",
        [](ModelWorld &world) { world.desktop.window(101).fullScreen = true; }, 0,
        u"Private window APIs: available\nAccessibility: allowed\nDisplays: 2\n"
        "Display 1: 3 regular desktops, 1 full-screen spaces\n"
        "Display 2: 2 regular desktops, 0 full-screen spaces\n"
        "Selected windows: 2; skipped: 1\n"
        "Notes: Full screen — leave full screen to move\n"_s);
    row(
        "not trusted, spaces without a readable type",
        [](ModelWorld &world) {
            const QVariantList spaces{QVariantMap{{u"type"_s, u"0"_s}}, u"x"_s,
                                      QVariantMap{{u"type"_s, 0}}};
            world.desktop.replaceReply("SLSCopyManagedDisplaySpaces",
                                       QVariantList{QVariantMap{{u"Spaces"_s, spaces}}, u"x"_s});
            world.desktop.world().trusted = false;
        },
        0,
        u"Private window APIs: available\nAccessibility: not yet allowed\nDisplays: 2\n"
        "Display 1: 1 regular desktops, 2 full-screen spaces\n"
        "Display 2: 0 regular desktops, 0 full-screen spaces\n"_s);
    row(
        "nothing there",
        [](ModelWorld &world) {
            world.desktop.world().frameworkPresent = false;
            world.desktop.world().trusted = false;
        },
        1, u"Private window APIs: missing\nAccessibility: not yet allowed\nDisplays: 0\n"_s);
}

void TestSelfTest::diagnosis()
{
    QFETCH(const Change, change);
    QFETCH(const int, status);
    QFETCH(const QString, out);
    World world;
    change(world);
    QCOMPARE(diagnose(world.setting), status);
    world.compare(out, {});
}

void TestSelfTest::switching_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("out");
    // To the last desktop, over the full-screen space: three steps.
    QTest::newRow("there and back")
        << Change([](ModelWorld &) {}) << 0
        << u"Native destination transition: true\nReal workspace notifications: 3\n"
           "Original desktop restored: true\n"_s;
    QTest::newRow("keys do nothing")
        << Change([](ModelWorld &world) { world.desktop.world().stepsEnabled = false; }) << 1
        << u"Native destination transition: false\nReal workspace notifications: 0\n"
           "Original desktop restored: true\n"_s;
    QTest::newRow("one desktop") << Change(leaveOneDesktop) << 2 << QString();
}

void TestSelfTest::switching()
{
    QFETCH(const Change, change);
    QFETCH(const int, status);
    QFETCH(const QString, out);
    World world;
    change(world);
    QCOMPARE(world.finish(testSwitching(world.setting)), status);
    world.compare(out, {});
    QCOMPARE(world.desktop.display(u"A"_s).currentSpace, 10u);
    QCOMPARE(world.desktop.display(u"B"_s).currentSpace, 20u);
}

void TestSelfTest::movement_data()
{
    QTest::addColumn<bool>("minimized");
    QTest::addColumn<WindowChange>("changeAtMove");
    QTest::addColumn<QString>("values");
    const auto row
        = [](const char *name, bool minimized, const WindowChange &change, const QString &values) {
              QTest::newRow(name) << minimized << change << values;
          };
    row(
        "normal", false, [](auto &, auto &) {}, u"true true true true true"_s);
    row(
        "minimized", true, [](auto &, auto &) {}, u"true true true true true"_s);
    row(
        "changes state", false, [](auto &moving, auto &) { moving.minimized = true; },
        u"false true true true true"_s);
    row(
        "never arrives", false, [](auto &moving, auto &) { moving.move = SimMove::Never; },
        u"true false true true true"_s);
    row(
        "takes the other along", false, [](auto &, auto &staying) { staying.spaces = {11}; },
        u"true true false true true"_s);
    row(
        "shifts", false, [](auto &moving, auto &) { moving.frame.translate(0.5, 0); },
        u"true true true false true"_s);
    row(
        "does not come back", false, [](auto &moving, auto &) { moving.elsewhere = 12; },
        u"true true true true false"_s);
}

void TestSelfTest::movement()
{
    QFETCH(const bool, minimized);
    QFETCH(const WindowChange, changeAtMove);
    QFETCH(const QString, values);
    World world;
    SimulatedWindows windows(world.desktop);
    world.desktop.onMoveRequested([&](auto, std::uint64_t space) {
        SimWindow &moving = world.desktop.window(movingWindow);
        if (space == 11)
            changeAtMove(moving, world.desktop.window(stayingWindow));
        else if (moving.elsewhere != 0)
            moving.move = SimMove::Elsewhere;
    });
    const int expected = values.contains(u"false"_s) ? SelfTestFailed : SelfTestPassed;
    QCOMPARE(world.finish(testMovement(world.setting, windows, minimized)), expected);
    world.compare(filled(u"Minimized state preserved: %1\n"
                         "Move return code: 0; restore return code: 0\n"
                         "Moved to requested desktop: %2\nOther window stayed: %3\n"
                         "Window position and size preserved: %4\n"
                         "Original desktop restored: %5\n"_s,
                         values),
                  {});
}

void TestSelfTest::movementPrintsRefusalsAndWhyItCannotTell()
{
    World refusing;
    refusing.desktop.dropSymbol(SimulatedDesktop::submitMoveSymbol());
    refusing.desktop.world().setWorkspaceStatus = 1001;
    SimulatedWindows refused(refusing.desktop);
    QCOMPARE(refusing.finish(testMovement(refusing.setting, refused, false)), SelfTestFailed);
    QVERIFY(refusing.outText.contains(u"\nMove return code: 1001; restore return code: 1001\n"_s));

    World blind;
    SimulatedWindows unseen(blind.desktop);
    unseen.server = false;
    QCOMPARE(blind.finish(testMovement(blind.setting, unseen, false)), SelfTestFailed);
    blind.compare({}, u"FAIL: could not determine test window desktop\n"_s);

    World narrow;
    leaveOneDesktop(narrow);
    SimulatedWindows unopened(narrow.desktop);
    QCOMPARE(narrow.finish(testMovement(narrow.setting, unopened, false)), SelfTestSkipped);
    narrow.compare({}, u"SKIP: need two regular desktops on one display\n"_s);
    QCOMPARE(unopened.titles, QStringList());
}

void TestSelfTest::fixturePrintsItsWindows()
{
    World world;
    SimulatedWindows windows(world.desktop);
    const auto fixture = showFixture(world.setting, windows);
    world.desktop.clock().advance(0.29);
    QCOMPARE(world.outText, QString());
    world.desktop.clock().advance(0.02);
    QVERIFY(fixture.isReady());
    world.compare(u"901,902\n"_s, {});
    const QStringList titles{u"Tovel test fixture 1"_s, u"Tovel test fixture 2"_s};
    QCOMPARE(windows.titles, titles);
}

void TestSelfTest::acrossProcesses_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("values"); // empty when the test ends early
    const auto row = [](const char *name, const QByteArray &line, const Change &change, int status,
                        const QString &values = {}) {
        QTest::newRow(name) << line << change << status << values;
    };
    const Change nothing = [](ModelWorld &) {};
    const QByteArray both = "901,902";
    row("all true", both, nothing, 0, u"true true true true true"_s);
    row("pieces that are no number", "x,901,,902,-3,99999999999", nothing, 0,
        u"true true true true true"_s);
    row(
        "not listed", both,
        [](ModelWorld &world) { world.desktop.window(movingWindow).listed = false; }, 1,
        u"false true true true true"_s);
    row(
        "never arrives", both,
        [](ModelWorld &world) { world.desktop.window(movingWindow).move = SimMove::Never; }, 1,
        u"true false true true true"_s);
    row(
        "no bounds", both,
        [](ModelWorld &world) {
            world.desktop.replaceReply("CGWindowListCopyWindowInfo", std::nullopt);
        },
        1, u"true true true false true"_s);
    row("silent", {}, nothing, 1);
    row("one number", "901", nothing, 1);
    row("three numbers", "901,902,903", nothing, 1);
    row("unknown window", "77,902", nothing, 1);
    row("one desktop", both, leaveOneDesktop, 2);
}

void TestSelfTest::acrossProcesses()
{
    QFETCH(const QByteArray, line);
    QFETCH(const Change, change);
    QFETCH(const int, status);
    QFETCH(const QString, values);
    World world;
    SimulatedProcess process(world.desktop);
    process.line = line;
    process.whenStarted = [&] { change(world); };
    QCOMPARE(world.finish(testAcrossProcesses(world.setting, process)), status);
    const QString printed = u"Cross-process AX window identified: %1\n"
                            "Cross-process move confirmed: %2\nUnselected window stayed: %3\n"
                            "Frame preserved: %4\nOriginal desktop restored: %5\n"_s;
    world.compare(values.isEmpty() ? QString() : filled(printed, values), {});
    QCOMPARE(process.ends, 1);
    QCOMPARE(world.desktop.window(101).spaces, QList<std::uint64_t>{10});
}

void TestSelfTest::tellsWhenTheProcessDoesNotStart()
{
    World world;
    SimulatedProcess process(world.desktop);
    process.starts = false;
    QCOMPARE(world.finish(testAcrossProcesses(world.setting, process)), SelfTestFailed);
    world.compare({}, u"FAIL: fixture launch failed\n"_s);
    QCOMPARE(process.ends, 0);
}

QTEST_GUILESS_MAIN(TestSelfTest)
#include "tst_self_test.moc"
