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

    QString outText;
    QString errText;
    QTextStream out{&outText};
    QTextStream err{&errText};
    SelfTestSetting setting{desktop.platform(), out, err};
    SimulatedFixture fixture{desktop};
};

using Run = std::function<int(World &)>;

// The text with its places taken by the values, which blanks separate; nothing without values.
QString filled(QString text, const QString &values)
{
    if (values.isEmpty())
        return {};
    for (const QString &value : values.split(u' '))
        text = text.arg(value);
    return text;
}

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

    void rulesHoldAndTheFirstFailureEndsTheRun()
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

    void fixturePrintsItsWindows()
    {
        World world;
        const auto fixture = showFixture(world.setting, world.fixture);
        world.desktop.clock().advance(0.29);
        QCOMPARE(world.outText, QString());
        world.desktop.clock().advance(0.02);
        QVERIFY(fixture.isReady());
        QCOMPARE(world.outText, u"901,902\n"_s);
        QCOMPARE(world.fixture.titles.join(u'|'), u"Tovel test fixture 1|Tovel test fixture 2"_s);
    }

    void printsAndExits_data()
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
                world.desktop.replaceReply(
                    "SLSCopyManagedDisplaySpaces",
                    QVariantList{QVariantMap{{u"Spaces"_s, spaces}}, u"x"_s});
                world.facts().trusted = false;
                return diagnose(world.setting);
            });
        row("diagnosis: nothing there", 1,
            diagnosis.arg(u"missing"_s, u"not yet allowed"_s, u"0"_s), {}, [](World &world) {
                world.facts().frameworkPresent = false;
                world.facts().trusted = false;
                return diagnose(world.setting);
            });

        const auto switching
            = [&](const char *name, int status, const QString &values, const Change &change) {
                  const QString out
                      = u"Native destination transition: %1\n"
                        "Real workspace notifications: %2\nOriginal desktop restored: true\n"_s;
                  row(name, status, filled(out, values), {}, [=](World &world) {
                      change(world);
                      return world.finish(testSwitching(world.setting));
                  });
              };
        const Change oneDesktop = [](ModelWorld &w) {
            w.spacesOfA().removeIf(
                [](const SimSpace &space) { return space.id == 11 || space.id == 12; });
        };
        // To the last desktop, over the full-screen space: three steps.
        switching("switching: there and back", 0, u"true 3"_s, nothing);
        switching("switching: keys do nothing", 1, u"false 0"_s,
                  [](auto &w) { w.facts().stepsEnabled = false; });
        switching("switching: one desktop", 2, {}, oneDesktop);

        const auto movement
            = [&](const char *name, int status, const QString &values, const Change &before,
                  const Change &atMove = nothing, bool minimized = false, const QString &err = {}) {
                  const QString out
                      = u"Minimized state preserved: %1\n"
                        "Move return code: %2; restore return code: %3\n"
                        "Moved to requested desktop: %4\nOther window stayed: %5\n"
                        "Window position and size preserved: %6\nOriginal desktop restored: %7\n"_s;
                  row(name, status, filled(out, values), err, [=](World &world) {
                      before(world);
                      world.desktop.dropSymbol(SimulatedDesktop::submitMoveSymbol());
                      world.desktop.onMoveRequested([&world, atMove](auto, std::uint64_t space) {
                          if (space == 11)
                              atMove(world);
                      });
                      return world.finish(testMovement(world.setting, world.fixture, minimized));
                  });
              };
        const QString good = u"true 0 0 true true true true"_s;
        movement("movement: normal", 0, good, nothing);
        movement("movement: minimized", 0, good, nothing, nothing, true);
        movement("movement: changes state", 1, u"false 0 0 true true true true"_s, nothing,
                 [](auto &w) { w.window(movingWindow).minimized = true; });
        movement("movement: shifts and never arrives", 1, u"true 0 0 false true false true"_s,
                 nothing, [](auto &w) {
                     w.window(movingWindow).frame.translate(0.5, 0);
                     w.window(movingWindow).move = SimMove::Never;
                 });
        movement("movement: takes the other along and cannot be put back", 1,
                 u"true 0 1001 true false true false"_s, nothing, [](auto &w) {
                     w.window(stayingWindow).spaces = {11};
                     w.desktop.after(0.1, [&w] { w.facts().setWorkspaceStatus = 1001; });
                 });
        movement("movement: one desktop", 2, {}, oneDesktop, nothing, false,
                 u"SKIP: need two regular desktops on one display\n"_s);
        movement(
            "movement: windows on no desktop", 1, {},
            [](auto &w) { w.desktop.after(0.1, [&w] { w.window(movingWindow).spaces = {}; }); },
            nothing, false, u"FAIL: could not determine test window desktop\n"_s);

        const auto across = [&](const char *name, const QByteArray &line, int status,
                                const QString &values = {}, const Change &change = nothing) {
            const QString out = u"Cross-process AX window identified: %1\n"
                                "Cross-process move confirmed: %2\nUnselected window stayed: %3\n"
                                "Frame preserved: %4\nOriginal desktop restored: %5\n"_s;
            row(name, status, filled(out, values), {}, [=](World &world) {
                world.fixture.line = line;
                world.desktop.after(0.5, [&world, change] { change(world); });
                const int result = world.finish(testAcrossProcesses(world.setting, world.fixture));
                return world.fixture.ends == 1 ? result : -1;
            });
        };
        across("other process: pieces that are no number", "x,901,,902,-3,99999999999", 0,
               u"true true true true true"_s);
        across("other process: not listed, no bounds", "901,902", 1,
               u"false true true false true"_s, [](auto &w) {
                   w.window(movingWindow).listed = false;
                   w.desktop.replaceReply("CGWindowListCopyWindowInfo", std::nullopt);
               });
        across("other process: never arrives", "901,902", 1, u"true false true true true"_s,
               [](auto &w) { w.window(movingWindow).move = SimMove::Never; });
        across("other process: silent", "", 1);
        across("other process: one number", "901", 1);
        across("other process: three numbers", "901,902,903", 1);
        across("other process: unknown window", "77,902", 1);
        across("other process: one desktop", "901,902", 2, {}, oneDesktop);
        row("other process: does not start", 1, {}, u"FAIL: fixture launch failed\n"_s,
            [](World &world) {
                const int result = world.finish(testAcrossProcesses(world.setting, world.fixture));
                return world.fixture.ends == 0 ? result : -1;
            });
    }

    void printsAndExits()
    {
        QFETCH(const Run, run);
        QFETCH(const int, status);
        World world;
        QCOMPARE(run(world), status);
        QTEST(world.outText, "out");
        QTEST(world.errText, "err");
        QCOMPARE(world.shownOnA(), 10u);
    }
};

QTEST_GUILESS_MAIN(TestSelfTest)
#include "tst_self_test.moc"
