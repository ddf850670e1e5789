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

using WindowChange = std::function<void(SimWindow &moving, SimWindow &staying)>;

// Two windows on the simulated desktop, of this process or of another that prints their numbers.
class SimulatedFixture final : public FixtureWindows, public FixtureProcess
{
public:
    explicit SimulatedFixture(SimulatedDesktop &desktop)
        : m_desktop(desktop)
        , m_pid(static_cast<std::int32_t>(QCoreApplication::applicationPid()))
    {
        m_desktop.addApplication({.pid = m_pid});
    }

    std::uint32_t open(const QString &title, const QRect &content) override
    {
        const std::uint32_t number = titles.isEmpty() ? movingWindow : stayingWindow;
        titles.append(title);
        if (isSeen)
            m_desktop.addWindow(
                {.number = number, .pid = m_pid, .spaces = {10}, .frame = QRectF(content)});
        return number;
    }

    void minimize(std::uint32_t number) override { m_desktop.window(number).minimized = true; }

    bool start() override
    {
        if (line.isNull())
            return false;
        open(u"1"_s, firstFixtureContent);
        open(u"2"_s, secondFixtureContent);
        m_desktop.after(1, [this] { m_hasPrinted = !line.isEmpty(); });
        return true;
    }

    bool isRunning() const override { return ends == 0; }
    std::int32_t processIdentifier() const override { return m_pid; }

    std::optional<QByteArray> takeLine() override
    {
        return std::exchange(m_hasPrinted, false) ? std::optional(line) : std::nullopt;
    }

    void end() override { ++ends; }

    bool isSeen = true; // whether the window server gets to know of the windows
    QStringList titles;
    QByteArray line; // null when the process does not start, empty when it prints nothing
    int ends = 0;

private:
    SimulatedDesktop &m_desktop;
    std::int32_t m_pid;
    bool m_hasPrinted = false;
};

// The simulated desktop, and what the mode under test prints.
struct World : ModelWorld
{
    // The exit status; -1 when the mode does not end.
    int finish(QCoro::Task<int> task)
    {
        desktop.clock().runUntil([&] { return task.isReady(); }, 600);
        return task.isReady() ? QCoro::waitFor(std::move(task)) : -1;
    }

    // Leaves one regular desktop on the display that is shown first.
    void leaveOneDesktop() { desktop.display(u"A"_s).spaces = {{.id = 10}, {.id = 50, .type = 4}}; }

    QString outText;
    QString errText;
    QTextStream out{&outText};
    QTextStream err{&errText};
    SelfTestSetting setting{desktop.platform(), out, err};
    SimulatedFixture fixture{desktop};
};

using Run = std::function<int(World &)>;

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
    void picksTheModeByFlag();
    void rulesHoldAndTheFirstFailureEndsTheRun();
    void printsAndExits_data();
    void printsAndExits();
    void movement_data();
    void movement();
    void fixturePrintsItsWindows();
    void acrossProcesses_data();
    void acrossProcesses();
};

void TestSelfTest::picksTheModeByFlag()
{
    const auto mode = [](const QString &line) { return selfTestMode(line.split(u' ')); };
    QVERIFY(!mode(u"tovel --minimized --Diagnose --fixture=1 -self-test"_s));
    QVERIFY(mode(u"tovel x --fixture"_s) == SelfTestMode::Fixture);
    QVERIFY(mode(u"tovel --self-test --integration-test"_s) == SelfTestMode::IntegrationTest);
    QVERIFY(mode(u"tovel --fixture --switch-test --diagnose"_s) == SelfTestMode::Diagnose);
}

void TestSelfTest::rulesHoldAndTheFirstFailureEndsTheRun()
{
    World all;
    QCOMPARE(runRuleChecks(ruleChecks(), all.out, all.err), SelfTestPassed);
    QCOMPARE(all.outText,
             u"PASS: regular window can move\n"
             "PASS: minimized window can move\n"
             "PASS: full-screen window skipped\n"
             "PASS: all-desktops window skipped\n"
             "PASS: unknown desktop skipped\n"
             "PASS: non-user space skipped\n"
             "PASS: split flock counted by actual desktop\n"
             "PASS: empty flock has no location\n"
             "PASS: split flock has no disabled destination\n"
             "PASS: only the flock's desktop is the current destination\n"
             "PASS: unknown flock does not disable a monitor's visible desktop\n"_s);
    QCOMPARE(all.errText, QString());

    World failing;
    constexpr RuleCheck checks[] = {{"one", [] { return true; }},
                                    {"two", [] { return false; }},
                                    {"three", [] { return true; }}};
    QCOMPARE(runRuleChecks(checks, failing.out, failing.err), SelfTestFailed);
    QCOMPARE(failing.outText, u"PASS: one\n"_s);
    QCOMPARE(failing.errText, u"FAIL: two\n"_s);
}

void TestSelfTest::printsAndExits_data()
{
    QTest::addColumn<Run>("run");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("err");
    const auto row = [](const char *name, int status, const QString &out, const QString &err,
                        const Run &run) { QTest::newRow(name) << run << status << out << err; };

    const QString diagnosis = u"Private window APIs: %1\nAccessibility: %2\nDisplays: %3\n"_s;
    row("diagnosis: a window stays behind", 0,
        diagnosis.arg(u"available"_s, u"allowed"_s, u"2"_s)
            + u"Display 1: 3 regular desktops, 1 full-screen spaces\n"
              "Display 2: 2 regular desktops, 0 full-screen spaces\n"
              "Selected windows: 2; skipped: 1\n"
              "Notes: Full screen — leave full screen to move\n"_s,
        {}, [](World &world) {
            world.desktop.window(101).fullScreen = true;
            return diagnose(world.setting);
        });
    row("diagnosis: not trusted, spaces without a readable type", 0,
        diagnosis.arg(u"available"_s, u"not yet allowed"_s, u"2"_s)
            + u"Display 1: 1 regular desktops, 2 full-screen spaces\n"
              "Display 2: 0 regular desktops, 0 full-screen spaces\n"_s,
        {}, [](World &world) {
            const QVariantList spaces{QVariantMap{{u"type"_s, u"0"_s}}, u"x"_s,
                                      QVariantMap{{u"type"_s, 0}}};
            world.desktop.replaceReply("SLSCopyManagedDisplaySpaces",
                                       QVariantList{QVariantMap{{u"Spaces"_s, spaces}}, u"x"_s});
            world.desktop.world().trusted = false;
            return diagnose(world.setting);
        });
    row("diagnosis: nothing there", 1, diagnosis.arg(u"missing"_s, u"not yet allowed"_s, u"0"_s),
        {}, [](World &world) {
            world.desktop.world().frameworkPresent = false;
            world.desktop.world().trusted = false;
            return diagnose(world.setting);
        });

    const QString switching
        = u"Native destination transition: %1\n"
          "Real workspace notifications: %2\nOriginal desktop restored: true\n"_s;
    // To the last desktop, over the full-screen space: three steps.
    row("switching: there and back", 0, switching.arg(u"true"_s, u"3"_s), {},
        [](World &world) { return world.finish(testSwitching(world.setting)); });
    row("switching: keys do nothing", 1, switching.arg(u"false"_s, u"0"_s), {}, [](World &world) {
        world.desktop.world().stepsEnabled = false;
        return world.finish(testSwitching(world.setting));
    });
    row("switching: one desktop", 2, {}, {}, [](World &world) {
        world.leaveOneDesktop();
        return world.finish(testSwitching(world.setting));
    });

    row("movement: one desktop", 2, {}, u"SKIP: need two regular desktops on one display\n"_s,
        [](World &world) {
            world.leaveOneDesktop();
            return world.finish(testMovement(world.setting, world.fixture, false));
        });
    row("movement: windows on no desktop", 1, {},
        u"FAIL: could not determine test window desktop\n"_s, [](World &world) {
            world.fixture.isSeen = false;
            return world.finish(testMovement(world.setting, world.fixture, false));
        });
    row("other process: does not start", 1, {}, u"FAIL: fixture launch failed\n"_s,
        [](World &world) {
            return world.finish(testAcrossProcesses(world.setting, world.fixture));
        });
}

void TestSelfTest::printsAndExits()
{
    QFETCH(const Run, run);
    QFETCH(const int, status);
    World world;
    QCOMPARE(run(world), status);
    QTEST(world.outText, "out");
    QTEST(world.errText, "err");
    QCOMPARE(world.fixture.ends, 0);
    QCOMPARE(world.desktop.display(u"A"_s).currentSpace, 10u);
    QCOMPARE(world.desktop.display(u"B"_s).currentSpace, 20u);
}

void TestSelfTest::movement_data()
{
    QTest::addColumn<bool>("minimized");
    QTest::addColumn<WindowChange>("changeAtMove");
    QTest::addColumn<QString>("values");
    const auto row
        = [](const char *name, bool minimized, const QString &values, const WindowChange &change) {
              QTest::newRow(name) << minimized << change << values;
          };
    row("normal", false, u"true 0 0 true true true true"_s, [](auto &, auto &) {});
    row("minimized", true, u"true 0 0 true true true true"_s, [](auto &, auto &) {});
    row("changes state", false, u"false 0 0 true true true true"_s,
        [](auto &moving, auto &) { moving.minimized = true; });
    row("never arrives", false, u"true 0 0 false true true true"_s,
        [](auto &moving, auto &) { moving.move = SimMove::Never; });
    row("takes the other along", false, u"true 0 0 true false true true"_s,
        [](auto &, auto &staying) { staying.spaces = {11}; });
    row("shifts", false, u"true 0 0 true true false true"_s,
        [](auto &moving, auto &) { moving.frame.translate(0.5, 0); });
    row("cannot be put back", false, u"true 0 1001 true true true false"_s, nullptr);
}

void TestSelfTest::movement()
{
    QFETCH(const bool, minimized);
    QFETCH(const WindowChange, changeAtMove);
    QFETCH(const QString, values);
    World world;
    world.desktop.dropSymbol(SimulatedDesktop::submitMoveSymbol());
    world.desktop.onMoveRequested([&](auto, std::uint64_t space) {
        if (changeAtMove && space == 11)
            changeAtMove(world.desktop.window(movingWindow), world.desktop.window(stayingWindow));
        if (!changeAtMove)
            world.desktop.after(0.1, [&] { world.desktop.world().setWorkspaceStatus = 1001; });
    });
    const int expected = values.contains(u"false"_s) ? SelfTestFailed : SelfTestPassed;
    QCOMPARE(world.finish(testMovement(world.setting, world.fixture, minimized)), expected);
    QCOMPARE(world.outText,
             filled(u"Minimized state preserved: %1\n"
                    "Move return code: %2; restore return code: %3\n"
                    "Moved to requested desktop: %4\nOther window stayed: %5\n"
                    "Window position and size preserved: %6\n"
                    "Original desktop restored: %7\n"_s,
                    values));
    QCOMPARE(world.errText, QString());
}

void TestSelfTest::fixturePrintsItsWindows()
{
    World world;
    const auto fixture = showFixture(world.setting, world.fixture);
    world.desktop.clock().advance(0.29);
    QCOMPARE(world.outText, QString());
    world.desktop.clock().advance(0.02);
    QVERIFY(fixture.isReady());
    QCOMPARE(world.outText, u"901,902\n"_s);
    const QStringList titles{u"Tovel test fixture 1"_s, u"Tovel test fixture 2"_s};
    QCOMPARE(world.fixture.titles, titles);
}

void TestSelfTest::acrossProcesses_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<std::function<void(World &)>>("change");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("values"); // empty when the test ends early
    const auto row
        = [](
              const char *name, const QByteArray &line, int status, const QString &values = {},
              const std::function<void(World &)> &change = [](World &) {}) {
              QTest::newRow(name) << line << change << status << values;
          };
    row("all true", "901,902", 0, u"true true true true true"_s);
    row("pieces that are no number", "x,901,,902,-3,99999999999", 0, u"true true true true true"_s);
    row("not listed", "901,902", 1, u"false true true true true"_s,
        [](World &world) { world.desktop.window(movingWindow).listed = false; });
    row("never arrives", "901,902", 1, u"true false true true true"_s,
        [](World &world) { world.desktop.window(movingWindow).move = SimMove::Never; });
    row("no bounds", "901,902", 1, u"true true true false true"_s, [](World &world) {
        world.desktop.replaceReply("CGWindowListCopyWindowInfo", std::nullopt);
    });
    row("silent", "", 1);
    row("one number", "901", 1);
    row("three numbers", "901,902,903", 1);
    row("unknown window", "77,902", 1);
    row("one desktop", "901,902", 2, {}, [](World &world) { world.leaveOneDesktop(); });
}

void TestSelfTest::acrossProcesses()
{
    QFETCH(const QByteArray, line);
    QFETCH(const std::function<void(World &)>, change);
    QFETCH(const int, status);
    QFETCH(const QString, values);
    World world;
    world.fixture.line = line;
    world.desktop.after(0.5, [&] { change(world); });
    QCOMPARE(world.finish(testAcrossProcesses(world.setting, world.fixture)), status);
    const QString printed = u"Cross-process AX window identified: %1\n"
                            "Cross-process move confirmed: %2\nUnselected window stayed: %3\n"
                            "Frame preserved: %4\nOriginal desktop restored: %5\n"_s;
    QCOMPARE(world.outText, values.isEmpty() ? QString() : filled(printed, values));
    QCOMPARE(world.errText, QString());
    QCOMPARE(world.fixture.ends, 1);
}

QTEST_GUILESS_MAIN(TestSelfTest)
#include "tst_self_test.moc"
