#include "app/self_test/fixture_process.h"
#include "app/self_test/fixture_windows.h"
#include "app/self_test/rule_checks.h"
#include "app/self_test/self_test.h"
#include "model/model_world.h"
#include "support/test.h"

#include <QCoreApplication>

namespace {

constexpr std::uint32_t movingWindow = 901;
constexpr std::uint32_t stayingWindow = 902;

// Two windows on the simulated desktop, of this process or of another that prints their numbers.
// The second takes its time to come, and the first to move.
class SimulatedFixture final : public FixtureWindows, public FixtureProcess
{
public:
    explicit SimulatedFixture(SimulatedDesktop &desktop)
        : m_desktop(desktop)
        , m_pid(static_cast<std::int32_t>(QCoreApplication::applicationPid()))
    {
        m_desktop.addApplication({.pid = m_pid});
    }

    OwnWindow open(const QString &title, const QRect &content) override
    {
        const bool isFirst = m_opened++ == 0;
        const std::uint32_t number = isFirst ? movingWindow : stayingWindow;
        SimWindow &window = m_desktop.addWindow({.number = number,
                                                 .pid = m_pid,
                                                 .title = title,
                                                 .frame = QRectF(content),
                                                 .moveDelay = 0.25});
        m_desktop.after(isFirst ? 0 : 0.2, [&window] { window.spaces = {10}; });
        return {number, title};
    }

    void minimize(const QString &title) override
    {
        const bool isFirst = m_desktop.window(movingWindow).title == title;
        m_desktop.window(isFirst ? movingWindow : stayingWindow).minimized = true;
    }

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
    // The exit status, -1 when the mode does not end, and what was printed.
    QString run(QCoro::Task<int> task)
    {
        desktop.clock().runUntil([&] { return task.isReady(); }, 600);
        const int status = task.isReady() ? QCoro::waitFor(std::move(task)) : -1;
        return u"%1\n"_s.arg(status) + outText + errText
            + (shownOnA() == 10 ? QString() : u"on another desktop"_s);
    }

    QString outText;
    QString errText;
    QTextStream out{&outText};
    QTextStream err{&errText};
    SelfTestSetting setting{desktop.platform(), out, err};
    SimulatedFixture fixture{desktop};
};

// The exit status and the lines, with the values in their places.
QString lines(const QString &form, const QString &values)
{
    QString result = u"%\n"_s + form;
    for (const QString &value : values.split(u' '))
        result.replace(result.indexOf(u'%'), 1, value);
    return result;
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
        const auto diagnosis = [](const Change &change) {
            World world;
            world.window(101).fullScreen = true;
            change(world);
            const int status = diagnose(world.setting);
            return u"%1\n"_s.arg(status) + world.outText;
        };
        const QString head = u"Private window APIs: %\nAccessibility: %\nDisplays: %\n"_s;
        const QString displays = u"Display 1: 3 regular desktops, 1 full-screen spaces\n"
                                 "Display 2: 2 regular desktops, 0 full-screen spaces\n"_s;
        const QString all = head + displays
            + u"Selected windows: 2; skipped: 1\nNotes: Full screen — leave full screen to move\n"_s;
        QCOMPARE(diagnosis(nothing), lines(all, u"0 available allowed 2"_s));
        QVERIFY(diagnosis([](auto &w) {
                    static_cast<World &>(w).setting.session = u"Herd 1.2"_s;
                }).endsWith(u"to move\nSession: Herd 1.2\n"_s));
        QCOMPARE(diagnosis([](auto &w) { w.facts().trusted = false; }),
                 lines(head + displays, u"0 available not_yet_allowed 2"_s).replace(u'_', u' '));
        QCOMPARE(diagnosis([](auto &w) { w.desktop.dropSymbol("SLSSpaceSetCompatID"); }),
                 lines(all, u"1 missing allowed 2"_s));
        const auto with = [&](const QVariantList &reply) {
            return diagnosis(
                [&](auto &w) { w.desktop.replaceReply("SLSCopyManagedDisplaySpaces", reply); });
        };
        QVERIFY(with({}).startsWith(lines(head, u"1 available allowed 0"_s)));
        QVERIFY(with({QVariantMap{{u"Spaces"_s, QVariantList{7}}}})
                    .contains(u"Display 1: 0 regular desktops, 1 full-screen spaces\n"_s));
    }

    void switchingGoesThereAndBack()
    {
        const auto switching = [](const Change &change) {
            World world;
            change(world);
            return world.run(testSwitching(world.setting));
        };
        const QString form = u"Native destination transition: %\n"
                             "Real workspace notifications: %\nOriginal desktop restored: %\n"_s;
        // To the last desktop, over the full-screen space: three steps.
        QCOMPARE(switching(nothing), lines(form, u"0 true 3 true"_s));
        QCOMPARE(switching([](auto &w) { w.facts().stepsEnabled = false; }),
                 lines(form, u"1 false 0 true"_s));
        const Change oneWay
            = [](auto &w) { w.desktop.after(1.4, [&w] { w.facts().stepsEnabled = false; }); };
        QCOMPARE(switching(oneWay), lines(form, u"1 true 3 false"_s) + u"on another desktop"_s);
        QCOMPARE(switching(oneDesktop), u"2\n"_s);
    }

    void movementMovesOneWindowThereAndBack()
    {
        const auto movement
            = [](const Change &before, const Change &atMove = nothing, bool minimized = false) {
                  World world;
                  before(world);
                  world.desktop.dropSymbol(SimulatedDesktop::submitMoveSymbol());
                  world.desktop.onMoveRequested([&](auto, std::uint64_t space) {
                      if (space == 11)
                          atMove(world);
                  });
                  return world.run(testMovement(world.setting, world.fixture, minimized));
              };
        const auto said = [](const QString &values) {
            return lines(u"Minimized state preserved: %\n"
                         "Move return code: %; restore return code: %\n"
                         "Moved to requested desktop: %\nOther window stayed: %\n"
                         "Window position and size preserved: %\n"
                         "Original desktop restored: %\n"_s,
                         values);
        };
        const QString good = said(u"0 true 0 0 true true true true"_s);
        const Change minimize = [](auto &w) { w.window(movingWindow).minimized ^= true; };
        QCOMPARE(movement(nothing), good);
        QCOMPARE(movement(nothing, nothing, true), good);
        QCOMPARE(movement(nothing, minimize), said(u"1 false 0 0 true true true true"_s));
        QCOMPARE(movement(oneDesktop), u"2\nSKIP: need two regular desktops on one display\n"_s);
        for (const std::uint32_t number : {movingWindow, stayingWindow}) {
            const Change withdraw = [number](auto &w) {
                w.desktop.after(0.3, [&w, number] { w.window(number).spaces = {}; });
            };
            QCOMPARE(movement(withdraw), u"1\nFAIL: could not determine test window desktop\n"_s);
        }
    }

    void movementOfAnotherProcessEndsIt()
    {
        const auto across = [](const QByteArray &line, const Change &change = nothing) {
            World world;
            world.fixture.line = line;
            world.desktop.after(0.5, [&] { change(world); });
            const QString said = world.run(testAcrossProcesses(world.setting, world.fixture));
            return world.fixture.ends == (line.isNull() ? 0 : 1)
                ? said + world.desktop.takeJournal().join(u' ')
                : u"left running"_s;
        };
        const auto said = [](const QString &values) {
            return lines(u"Cross-process AX window identified: %\n"
                         "Cross-process move confirmed: %\nUnselected window stayed: %\n"
                         "Frame preserved: %\nOriginal desktop restored: %\n"
                         "submit 901 % submit 901 %"_s,
                         values);
        };
        QCOMPARE(across("x,901,,902,-3,99999999999,3x"),
                 said(u"0 true true true true true 11 10"_s));
        const Change hide = [](auto &w) {
            w.window(movingWindow).listed = false;
            w.desktop.replaceReply("CGWindowListCopyWindowInfo", std::nullopt);
        };
        QCOMPARE(across("901,902", hide), said(u"1 false true true false true 11 10"_s));
        const Change elsewhere = [](auto &w) { w.window(movingWindow).spaces = {21}; };
        QCOMPARE(across("901,902", elsewhere), said(u"1 true true false true true 20 21"_s));
        const Change onTwoDesktops = [](auto &w) {
            w.desktop.replaceReply("SLSCopySpacesForWindows", QVariantList{10ULL, 11ULL});
        };
        QCOMPARE(across("901,902", onTwoDesktops), said(u"1 true false false true false 11 10"_s));
        for (const QByteArray &line :
             {QByteArray(""), QByteArray("901"), QByteArray("77,902"), QByteArray("901,902,3")})
            QCOMPARE(across(line), u"1\n"_s);
        QCOMPARE(across("901,902", oneDesktop), u"2\n"_s);
        QCOMPARE(across({}), u"1\nFAIL: fixture launch failed\n"_s);
    }
};

QTEST_GUILESS_MAIN(TestSelfTest)
#include "tst_self_test.moc"
