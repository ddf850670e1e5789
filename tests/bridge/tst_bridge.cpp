#include "bridge/bridge.h"
#include "platform/simulated/simulated_desktop.h"

#include <QTest>

#include <algorithm>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr std::int32_t pid = 500;

// One display with desktops 10 and 11, and one application with window 101 on 10.
struct World
{
    World()
        : installation(desktop.platform())
    {
        desktop.addDisplay({.identifier = u"A"_s,
                            .number = 1,
                            .bounds = QRectF(0, 0, 1920, 1080),
                            .spaces = {{.id = 10}, {.id = 11}},
                            .currentSpace = 10});
        desktop.addApplication(
            {.pid = pid, .bundleIdentifier = u"org.example.Notes"_s, .launchDate = started(1)});
        desktop.addWindow({.number = 101, .pid = pid, .spaces = {10}});
    }

    static QDateTime started(int second) { return QDateTime::fromSecsSinceEpoch(second); }

    QList<std::uint32_t> numbers() const
    {
        QList<std::uint32_t> result;
        for (const AXUIElementRef &element : TApplicationWindows(pid))
            result.append(TWindowID(element));
        std::sort(result.begin(), result.end());
        return result;
    }

    SimulatedDesktop desktop;
    PlatformInstallation installation;
};

QList<std::uint64_t> range(std::uint64_t first, std::uint64_t end)
{
    QList<std::uint64_t> result;
    for (; first < end; ++first)
        result.append(first);
    return result;
}

using Numbers = QList<std::uint32_t>;
using Change = std::function<void(SimulatedDesktop &)>;

} // namespace

class TestBridge : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bindsOnceInOrder();
    void missingSymbol_data();
    void missingSymbol();
    void nullRepliesAreNeutral();
    void inventory_data();
    void inventory();
    void identification_data();
    void identification();
    void untrustedOrEndedProcessHasNoWindows();
    void keepsWhatItFoundUntilItChanges();
    void probesWithinItsBounds();
    void move_data();
    void move();
    void desktopStep();
};

void TestBridge::bindsOnceInOrder()
{
    World world;
    QVERIFY(TAvailable());
    const QStringList lookups{
        u"dlopen /System/Library/PrivateFrameworks/SkyLight.framework/SkyLight"_s,
        u"dlsym SLSMainConnectionID"_s,
        u"dlsym SLSCopyManagedDisplaySpaces"_s,
        u"dlsym SLSCopySpacesForWindows"_s,
        u"dlsym SLSSpaceSetCompatID"_s,
        u"dlsym SLSSetWindowListWorkspace"_s,
        u"dlsym SLSWindowIsOrderedIn"_s,
        u"dlsym SLSCopyWindowsWithOptionsAndTags"_s,
        u"dlsym _AXUIElementGetWindow"_s,
    };
    QCOMPARE(world.desktop.takeLookups(), lookups);

    world.desktop.dropSymbol("SLSMainConnectionID");
    QVERIFY(TAvailable());
    QCOMPARE(TDisplays().size(), 1);
    QCOMPARE(world.desktop.takeLookups(), QStringList());

    const PlatformInstallation again(world.desktop.platform());
    QVERIFY(!TAvailable()); // bound anew, without the symbol
}

void TestBridge::missingSymbol_data()
{
    QTest::addColumn<QStringList>("lost");
    const QStringList move{u"available"_s, u"move"_s};
    QTest::newRow("none") << QStringList();
    QTest::newRow("SLSMainConnectionID")
        << move + QStringList{u"displays"_s, u"spaces"_s, u"ordered"_s, u"inventory"_s};
    QTest::newRow("SLSCopyManagedDisplaySpaces")
        << move + QStringList{u"displays"_s, u"inventory"_s};
    QTest::newRow("SLSCopySpacesForWindows") << move + QStringList{u"spaces"_s};
    QTest::newRow("SLSSpaceSetCompatID") << move;
    QTest::newRow("SLSSetWindowListWorkspace") << move;
    QTest::newRow("SLSWindowIsOrderedIn") << QStringList{u"ordered"_s};
    QTest::newRow("SLSCopyWindowsWithOptionsAndTags") << QStringList{u"inventory"_s};
    QTest::newRow("_AXUIElementGetWindow") << move + QStringList{u"elements"_s};
}

void TestBridge::missingSymbol()
{
    QFETCH(QStringList, lost);
    World world;
    world.desktop.addWindow({.number = 102, .pid = pid, .orderedIn = false});
    world.desktop.dropSymbol(QTest::currentDataTag());
    const QList<std::pair<QString, bool>> answers{
        {u"available"_s, TAvailable()},
        {u"move"_s, TMove(101, 10) != kBridgeUnavailable},
        {u"displays"_s, !TDisplays().isEmpty()},
        {u"spaces"_s, TWindowSpaces(101) == QVariantList{quint64(10)}},
        {u"ordered"_s, TWindowIsOrderedOut(102)},
        {u"inventory"_s, !TWindowInventory().isEmpty()},
        {u"elements"_s, !TApplicationWindows(pid).isEmpty()},
    };
    for (const auto &[name, answered] : answers)
        QVERIFY2(answered != lost.contains(name), qPrintable(name));
}

void TestBridge::nullRepliesAreNeutral()
{
    World world;
    const auto without = [&](const QByteArray &call) {
        world.desktop.replaceReply(call, std::nullopt);
        const QList<qsizetype> sizes{TDisplays().size(), TWindowSpaces(101).size(),
                                     TWindowInventory().size()};
        world.desktop.restoreReply(call);
        return sizes;
    };
    using Sizes = QList<qsizetype>;
    QCOMPARE(without("SLSCopyManagedDisplaySpaces"), (Sizes{0, 1, 0}));
    QCOMPARE(without("SLSCopySpacesForWindows"), (Sizes{1, 0, 1}));
    QCOMPARE(without("SLSCopyWindowsWithOptionsAndTags 7"), (Sizes{1, 1, 0}));
    QCOMPARE(without("SLSCopyWindowsWithOptionsAndTags 2"), (Sizes{1, 1, 0}));
    QCOMPARE(without("CGWindowListCopyWindowInfo"), (Sizes{1, 1, 0}));
}

void TestBridge::inventory_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("minimized"); // -1 for a window that is left out

    const auto row = [](const char *name, int minimized, const Change &change) {
        QTest::newRow(name) << change << minimized;
    };
    row("ordinary", 0, [](auto &) {});
    row("minimized", 1, [](auto &d) { d.window(101).minimized = true; });
    row("31 points wide", -1, [](auto &d) { d.window(101).frame.setWidth(31); });
    row("32 points", 0, [](auto &d) { d.window(101).frame = QRectF(0, 0, 32, 32); });
    row("other layer", -1, [](auto &d) { d.window(101).layer = 3; });
    const auto orderedOut = [](const Change &change) {
        return [=](SimulatedDesktop &desktop) {
            desktop.window(101).orderedIn = false;
            change(desktop);
        };
    };
    row("ordered out", -1, orderedOut([](auto &) {}));
    row("ordered out, hidden", 0, orderedOut([](auto &d) { d.application(pid).hidden = true; }));
    row("order unknown", 0, orderedOut([](auto &d) { d.window(101).orderedInStatus = 5; }));
    row("order not asked", 0, orderedOut([](auto &d) { d.dropSymbol("SLSWindowIsOrderedIn"); }));
}

void TestBridge::inventory()
{
    QFETCH(Change, change);
    QFETCH(int, minimized);

    World world;
    world.desktop.addWindow({.number = 102, .pid = pid, .spaces = {11}});
    change(world.desktop);
    QVariantList expected;
    if (minimized >= 0)
        expected.append(QVariantMap{{u"id"_s, 101U}, {u"pid"_s, pid}, {u"minimized"_s, minimized}});
    expected.append(QVariantMap{{u"id"_s, 102U}, {u"pid"_s, pid}, {u"minimized"_s, 0}});
    QCOMPARE(TWindowInventory(), expected);
    // The same question for one window, which counts as shown when it cannot be told.
    QCOMPARE(TWindowIsOrderedOut(101), QByteArray(QTest::currentDataTag()).startsWith("ordered"));
}

void TestBridge::identification_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<Numbers>("numbers");

    const auto row = [](const char *name, const Numbers &numbers, const Change &change) {
        QTest::newRow(name) << change << numbers;
    };
    row("standard windows", {101, 102}, [](auto &) {});
    row("other subrole", {102}, [](auto &d) { d.window(101).subrole = u"AXFloatingWindow"_s; });
    row("no number", {102}, [](auto &d) { d.window(101).elementNumber = 0; });
    row("same number twice", {102}, [](auto &d) { d.window(101).elementNumber = 102; });
    row("other owner", {102}, [](auto &d) {
        d.window(101).elementPid = AXProcessIdentifier{kAXErrorSuccess, pid + 1};
    });
    const auto unlisted = [](const Change &change) {
        return [=](SimulatedDesktop &desktop) {
            desktop.window(101).listed = false;
            change(desktop);
        };
    };
    row("main", {101, 102}, unlisted([](auto &d) { d.application(pid).mainWindow = 101; }));
    row("last probe", {101, 102}, unlisted([](auto &d) { d.window(101).remoteElement = 1151; }));
    row("unreached", {102}, unlisted([](auto &d) { d.window(101).remoteElement = 1152; }));
    row("items of another kind", {}, [](auto &d) {
        d.application(pid).attributes[u"AXWindows"_s]
            = {kAXErrorSuccess, QVariantList{7, QVariant(), u"text"_s}};
    });
}

void TestBridge::identification()
{
    QFETCH(Change, change);
    QFETCH(Numbers, numbers);

    World world;
    world.desktop.addWindow({.number = 102, .pid = pid, .spaces = {11}});
    change(world.desktop);
    QCOMPARE(world.numbers(), numbers);
    QCOMPARE(TWindowID(nullptr), 0U);
}

void TestBridge::untrustedOrEndedProcessHasNoWindows()
{
    World world;
    world.desktop.world().trusted = false;
    QCOMPARE(world.numbers(), Numbers());
    world.desktop.world().trusted = true;
    world.desktop.quit(pid);
    QCOMPARE(world.numbers(), Numbers());
    QCOMPARE(world.desktop.takeProbes(pid), QList<std::uint64_t>());
}

void TestBridge::keepsWhatItFoundUntilItChanges()
{
    World world;
    world.desktop.addWindow({.number = 102, .pid = pid, .listed = false, .remoteElement = 200});
    QCOMPARE(world.numbers(), (Numbers{101, 102}));
    world.desktop.window(102).remoteElement.reset(); // only the first call could find it
    QCOMPARE(world.numbers(), (Numbers{101, 102}));
    world.desktop.window(102).elementNumber = 103;
    QCOMPARE(world.numbers(), Numbers{101});
    world.desktop.window(102).elementNumber.reset();
    QCOMPARE(world.numbers(), Numbers{101});
}

void TestBridge::probesWithinItsBounds()
{
    World world;
    const auto probes = [&] {
        TApplicationWindows(pid);
        return world.desktop.takeProbes(pid);
    };
    QCOMPARE(probes(), range(0, 1152));
    QCOMPARE(probes(), range(0, 128) + range(1152, 2176));

    // A start of its own after the process was replaced by another with its number.
    world.desktop.quit(pid);
    world.desktop.addApplication({.pid = pid, .launchDate = World::started(2)});
    world.desktop.world().probeCost = 0.06;
    QCOMPARE(probes(), range(0, 1));
    world.desktop.world().probeCost = 0;
    QList<std::uint64_t> last;
    for (int call = 0; call < 64; ++call)
        last = probes();
    QCOMPARE(last.last(), 65663U);
    QCOMPARE(probes(), range(0, 1152));

    world.desktop.addWindow({.number = 103, .pid = pid, .listed = false, .remoteElement = 5});
    world.desktop.takeMessagingTimeouts();
    probes();
    const QList<SimulatedDesktop::MessagingTimeout> expected{
        {pid, 0, 0.3F}, {pid, 103, 0.03F}, {pid, 103, 0.3F}};
    QVERIFY(world.desktop.takeMessagingTimeouts() == expected);
}

void TestBridge::move_data()
{
    QTest::addColumn<SimOperationClass>("operation");
    QTest::addColumn<QList<int>>("statuses"); // of marking the desktop, sending, clearing the mark
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("calls"); // of the three; none for the move by operation
    using Operation = SimOperationClass;
    const auto row
        = [](const char *name, Operation operation, const QList<int> &statuses, int status,
             int calls) { QTest::newRow(name) << operation << statuses << status << calls; };
    row("by operation", Operation::Present, {3, 4, 5}, 0, 0);
    row("no initialiser", Operation::WithoutInitialiser, {0, 0, 0}, 0, 3);
    row("no instance", Operation::GivesNull, {0, 0, 0}, 0, 3);
    row("no class", Operation::Absent, {0, 0, 0}, 0, 3);
    row("no submit function", Operation::Present, {0, 0, 0}, 0, 3);
    row("marking fails", Operation::Absent, {3, 4, 5}, 3, 1);
    row("sending fails", Operation::Absent, {0, 4, 0}, 4, 3);
    row("clearing fails", Operation::Absent, {0, 0, 5}, 5, 3);
    row("sending and clearing fail", Operation::Absent, {0, 4, 5}, 4, 3);
}

void TestBridge::move()
{
    QFETCH(SimOperationClass, operation);
    QFETCH(QList<int>, statuses);
    QFETCH(int, status);
    QFETCH(int, calls);
    World world;
    SimWorld &facts = world.desktop.world();
    facts.operationClass = operation;
    if (operation == SimOperationClass::Present && calls > 0)
        world.desktop.setFrameworkImage(MachOFault::WrongMagic);
    facts.setCompatStatus = statuses[0];
    facts.setWorkspaceStatus = statuses[1];
    facts.clearCompatStatus = statuses[2];
    QCOMPARE(TMove(101, 11), status);
    const QStringList byTag{u"SLSSpaceSetCompatID 11 746f766c"_s,
                            u"SLSSetWindowListWorkspace 101 746f766c"_s,
                            u"SLSSpaceSetCompatID 11 0"_s};
    QCOMPARE(world.desktop.takeJournal(),
             calls ? byTag.first(calls) : QStringList{u"submit 101 11"_s});
}

void TestBridge::desktopStep()
{
    World world;
    SimWorld &facts = world.desktop.world();
    QVERIFY(TPostDesktopStep(true));
    QVERIFY(TPostDesktopStep(false));
    const QStringList keys{u"post 0 down 124 840000"_s, u"post 0 up 124 840000"_s,
                           u"post 0 down 123 840000"_s, u"post 0 up 123 840000"_s};
    QCOMPARE(world.desktop.takeJournal(), keys);

    for (bool *fault :
         {&facts.eventSourceFails, &facts.keyDownEventFails, &facts.keyUpEventFails}) {
        *fault = true;
        QVERIFY(!TPostDesktopStep(true));
        *fault = false;
    }
    facts.trusted = false;
    QVERIFY(!TPostDesktopStep(true));
    QCOMPARE(world.desktop.takeJournal(), QStringList());
}

QTEST_GUILESS_MAIN(TestBridge)
#include "tst_bridge.moc"
