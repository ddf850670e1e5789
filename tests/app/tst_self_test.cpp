#include "app/self_test/fixture_process.h"
#include "app/self_test/fixture_windows.h"
#include "app/self_test/rule_checks.h"
#include "app/self_test/self_test.h"
#include "model/model_world.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTest>

using namespace tovel;

namespace {

constexpr std::uint32_t movingWindow = 901;
constexpr std::uint32_t stayingWindow = 902;

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

    std::uint32_t open(const QString &, const QRect &content) override
    {
        const std::uint32_t number = m_opened++ == 0 ? movingWindow : stayingWindow;
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

    QByteArray line; // null when the process does not start, empty when it prints nothing
    int ends = 0;

private:
    SimulatedDesktop &m_desktop;
    std::int32_t m_pid;
    int m_opened = 0;
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

    QString outText;
    QString errText;
    QTextStream out{&outText};
    QTextStream err{&errText};
    SelfTestSetting setting{desktop.platform(), out, err};
    SimulatedFixture fixture{desktop};
};

// The exit status, the values that the mode printed, and what its complaint begins with.
QString told(World &world, int status)
{
    QStringList result{QString::number(status)};
    static const QRegularExpression value(u"true|false|\\d+"_s);
    for (const QRegularExpressionMatch &match : value.globalMatch(world.outText))
        result.append(match.captured());
    if (!world.errText.isEmpty())
        result.append(world.errText.section(u':', 0, 0));
    if (world.shownOnA() != 10)
        result.append(u"on another desktop"_s);
    return result.join(u' ');
}

const Change oneDesktop = [](ModelWorld &world) {
    world.spacesOfA().removeIf(
        [](const SimSpace &space) { return space.id == 11 || space.id == 12; });
};

} // namespace

class TestSelfTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void picksTheModeByFlag()
    {
        const auto mode = [](const QString &line) { return selfTestMode(line.split(u' ')); };
        QVERIFY(!mode(u"tovel --minimized --Diagnose --fixture=1 -self-test"_s));
        QVERIFY(mode(u"tovel x --fixture"_s) == SelfTestMode::Fixture);
        QVERIFY(mode(u"tovel --self-test --integration-test"_s) == SelfTestMode::IntegrationTest);
        QVERIFY(mode(u"tovel --fixture --switch-test --diagnose"_s) == SelfTestMode::Diagnose);
    }

    void theFirstRuleThatFailsEndsTheRun()
    {
        World failing;
        constexpr RuleCheck checks[] = {{"one", [] { return true; }},
                                        {"two", [] { return false; }},
                                        {"three", [] { return true; }}};
        QCOMPARE(runRuleChecks(checks, failing.out, failing.err), SelfTestFailed);
        QCOMPARE(failing.outText, u"PASS: one\n"_s);
        QCOMPARE(failing.errText, u"FAIL: two\n"_s);
    }

    void diagnosisListsWhatIsThere()
    {
        World world;
        world.window(101).fullScreen = true;
        QCOMPARE(diagnose(world.setting), 0);
        QCOMPARE(world.outText,
                 u"Private window APIs: available\nAccessibility: allowed\nDisplays: 2\n"
                 "Display 1: 3 regular desktops, 1 full-screen spaces\n"
                 "Display 2: 2 regular desktops, 0 full-screen spaces\n"
                 "Selected windows: 2; skipped: 1\n"
                 "Notes: Full screen — leave full screen to move\n"_s);
    }

    void switchingGoesThereAndBack()
    {
        const auto switching = [](const Change &change) {
            World world;
            change(world);
            return told(world, world.finish(testSwitching(world.setting)));
        };
        // To the last desktop, over the full-screen space: three steps.
        QCOMPARE(switching(nothing), u"0 true 3 true"_s);
        QCOMPARE(switching([](auto &w) { w.facts().stepsEnabled = false; }), u"1 false 0 true"_s);
        QCOMPARE(switching(oneDesktop), u"2"_s);
    }

    // State kept, status of the move and of the way back, moved, other stayed, frame kept,
    // restored.
    void movementMovesOneWindowThereAndBack()
    {
        const auto movement = [](const Change &before, const Change &atMove = nothing,
                                 bool minimized = false) {
            World world;
            before(world);
            world.desktop.dropSymbol(SimulatedDesktop::submitMoveSymbol());
            world.desktop.onMoveRequested([&](auto, std::uint64_t space) {
                if (space == 11)
                    atMove(world);
            });
            const int status = world.finish(testMovement(world.setting, world.fixture, minimized));
            return told(world, status);
        };
        const QString good = u"0 true 0 0 true true true true"_s;
        QCOMPARE(movement(nothing), good);
        QCOMPARE(movement(nothing, nothing, true), good);
        const Change minimize = [](auto &w) { w.window(movingWindow).minimized = true; };
        QCOMPARE(movement(nothing, minimize), u"1 false 0 0 true true true true"_s);
        const Change shiftOnly = [](auto &w) {
            w.window(movingWindow).frame.translate(0.5, 0);
            w.window(movingWindow).move = SimMove::Never;
        };
        QCOMPARE(movement(nothing, shiftOnly), u"1 true 0 0 false true false true"_s);
        const Change takeOtherAlong = [](auto &w) {
            w.window(stayingWindow).spaces = {11};
            w.desktop.after(0.1, [&w] { w.facts().setWorkspaceStatus = 1001; });
        };
        QCOMPARE(movement(nothing, takeOtherAlong), u"1 true 0 1001 true false true false"_s);
        QCOMPARE(movement(oneDesktop), u"2 SKIP"_s);
        const Change withdraw
            = [](auto &w) { w.desktop.after(0.1, [&w] { w.window(movingWindow).spaces = {}; }); };
        QCOMPARE(movement(withdraw), u"1 FAIL"_s);
    }

    // Identified, moved, other stayed, frame kept, restored.
    void movementOfAnotherProcessEndsIt()
    {
        const auto across = [](const QByteArray &line, const Change &change = nothing) {
            World world;
            world.fixture.line = line;
            world.desktop.after(0.5, [&] { change(world); });
            const int status = world.finish(testAcrossProcesses(world.setting, world.fixture));
            return world.fixture.ends == (line.isNull() ? 0 : 1) ? told(world, status) : u"?"_s;
        };
        QCOMPARE(across("x,901,,902,-3,99999999999"), u"0 true true true true true"_s);
        const Change hide = [](auto &w) {
            w.window(movingWindow).listed = false;
            w.desktop.replaceReply("CGWindowListCopyWindowInfo", std::nullopt);
        };
        QCOMPARE(across("901,902", hide), u"1 false true true false true"_s);
        for (const QByteArray &line : {QByteArray(""), QByteArray("901"), QByteArray("77,902")})
            QCOMPARE(across(line), u"1"_s);
        QCOMPARE(across({}), u"1 FAIL"_s); // it does not start
    }
};

QTEST_GUILESS_MAIN(TestSelfTest)
#include "tst_self_test.moc"
