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
    void orderedOut();
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

    {
        SimulatedDesktop other;
        other.world().frameworkPresent = false;
        const PlatformInstallation installation(other.platform());
        QVERIFY(!TAvailable());
        QCOMPARE(TMove(101, 11), kBridgeUnavailable);
    }
    QVERIFY(!TAvailable()); // bound anew, without the symbol
}

void TestBridge::missingSymbol_data()
{
    QTest::addColumn<QByteArray>("symbol");
    QTest::addColumn<QString>("left"); // a letter per function that still answers

    const auto row = [](const char *symbol, const QString &left) {
        QTest::newRow(symbol) << QByteArray(symbol) << left;
    };
    row("none", u"available displays spaces ordered inventory number move"_s);
    row("SLSMainConnectionID", u"number"_s);
    row("SLSCopyManagedDisplaySpaces", u"spaces ordered number"_s);
    row("SLSCopySpacesForWindows", u"displays ordered inventory number"_s);
    row("SLSSpaceSetCompatID", u"displays spaces ordered inventory number"_s);
    row("SLSSetWindowListWorkspace", u"displays spaces ordered inventory number"_s);
    row("SLSWindowIsOrderedIn", u"available displays spaces inventory number move"_s);
    row("SLSCopyWindowsWithOptionsAndTags", u"available displays spaces ordered number move"_s);
    row("_AXUIElementGetWindow", u"displays spaces ordered inventory"_s);
}

void TestBridge::missingSymbol()
{
    QFETCH(QByteArray, symbol);
    QFETCH(QString, left);

    World world;
    world.desktop.addWindow({.number = 102, .pid = pid, .spaces = {}, .orderedIn = false});
    world.desktop.dropSymbol(symbol);
    const auto elements = world.desktop.platform().accessibility().AXUIElementCopyAttributeValue(
        world.desktop.platform().accessibility().AXUIElementCreateApplication(pid), u"AXWindows"_s);
    const auto element = elements.value.toList().value(0).value<AXUIElementRef>();

    QStringList answers;
    const auto note = [&](const QString &name, bool answered) {
        if (answered)
            answers.append(name);
    };
    note(u"available"_s, TAvailable());
    note(u"displays"_s, !TDisplays().isEmpty());
    note(u"spaces"_s, TWindowSpaces(101) == QVariantList{quint64(10)});
    note(u"ordered"_s, TWindowIsOrderedOut(102));
    note(u"inventory"_s, !TWindowInventory().isEmpty());
    note(u"number"_s, TWindowID(element) == 101);
    note(u"move"_s, TMove(101, 11) == 0);
    QCOMPARE(answers.join(u' '), left);
}

void TestBridge::nullRepliesAreNeutral()
{
    World world;
    const auto replaced = [&](const QByteArray &call, const SimulatedDesktop::Reply &reply = {}) {
        world.desktop.replaceReply(call, reply);
        const auto answers
            = TDisplays().size() + TWindowSpaces(101).size() * 2 + TWindowInventory().size() * 4;
        world.desktop.restoreReply(call);
        return answers;
    };
    QCOMPARE(replaced("SLSCopyManagedDisplaySpaces"), 2); // nor an inventory, without spaces
    QCOMPARE(replaced("SLSCopySpacesForWindows"), 5);
    QCOMPARE(replaced("SLSCopyWindowsWithOptionsAndTags 7"), 3);
    QCOMPARE(replaced("SLSCopyWindowsWithOptionsAndTags 2"), 3);
    QCOMPARE(replaced("CGWindowListCopyWindowInfo"), 3);
    QCOMPARE(replaced("CGWindowListCopyWindowInfo", {{u"text"_s, QVariantMap()}}), 3);
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
    row("31 points high", -1, [](auto &d) { d.window(101).frame.setHeight(31); });
    row("32 points", 0, [](auto &d) { d.window(101).frame = QRectF(0, 0, 32, 32); });
    row("other layer", -1, [](auto &d) { d.window(101).layer = 3; });
    row("on no desktop", -1, [](auto &d) { d.window(101).spaces.clear(); });
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
    QCOMPARE(world.desktop.calls("CGWindowListCopyWindowInfo"), 1);
}

void TestBridge::orderedOut()
{
    World world;
    QVERIFY(!TWindowIsOrderedOut(101));
    world.desktop.window(101).orderedIn = false;
    QVERIFY(TWindowIsOrderedOut(101));
    world.desktop.window(101).orderedInStatus = 1;
    QVERIFY(!TWindowIsOrderedOut(101));
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
    row("no subrole", {102}, [](auto &d) { d.window(101).subrole.reset(); });
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
    row("unlisted", {102}, unlisted([](auto &) {}));
    row("main", {101, 102}, unlisted([](auto &d) { d.application(pid).mainWindow = 101; }));
    row("focused", {101, 102}, unlisted([](auto &d) { d.application(pid).focusedWindow = 101; }));
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
    QCOMPARE(world.desktop.takeProbes(pid), QList<std::uint64_t>());
    world.desktop.world().trusted = true;
    QCOMPARE(world.numbers(), Numbers{101});
    world.desktop.takeProbes(pid);
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
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("status");
    QTest::addColumn<QStringList>("journal");

    const QString mark = u"SLSSpaceSetCompatID 11 746f766c"_s;
    const QString send = u"SLSSetWindowListWorkspace 101 746f766c"_s;
    const QString clear = u"SLSSpaceSetCompatID 11 0"_s;
    const QStringList submitted{u"submit 101 11"_s};
    const QStringList tagged{mark, send, clear};
    const auto row
        = [](const char *name, int status, const QStringList &journal, const Change &change) {
              QTest::newRow(name) << change << status << journal;
          };
    const auto byTag = [](std::int32_t set, std::int32_t workspace, std::int32_t cleared) {
        return [=](SimulatedDesktop &desktop) {
            desktop.dropSymbol(SimulatedDesktop::submitMoveSymbol());
            desktop.world().setCompatStatus = set;
            desktop.world().setWorkspaceStatus = workspace;
            desktop.world().clearCompatStatus = cleared;
        };
    };
    const auto withClass = [](SimOperationClass operation) {
        return [=](SimulatedDesktop &desktop) { desktop.world().operationClass = operation; };
    };
    row("by operation", 0, submitted, [](auto &) {});
    row("no class", 0, tagged, withClass(SimOperationClass::Absent));
    row("no initialiser", 0, tagged, withClass(SimOperationClass::WithoutInitialiser));
    row("no instance", 0, tagged, withClass(SimOperationClass::GivesNull));
    row("no submit function", 0, tagged, byTag(0, 0, 0));
    row("marking fails", 3, {mark}, byTag(3, 4, 5));
    row("sending fails", 4, tagged, byTag(0, 4, 0));
    row("clearing fails", 5, tagged, byTag(0, 0, 5));
    row("sending and clearing fail", 4, tagged, byTag(0, 4, 5));
}

void TestBridge::move()
{
    QFETCH(Change, change);
    QFETCH(int, status);
    QFETCH(QStringList, journal);

    World world;
    change(world.desktop);
    QCOMPARE(TMove(101, 11), status);
    QCOMPARE(world.desktop.takeJournal(), journal);
    const bool refused = world.desktop.world().setCompatStatus != 0
        || world.desktop.world().setWorkspaceStatus != 0;
    QCOMPARE(TWindowSpaces(101), QVariantList{quint64(refused ? 10 : 11)});
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
