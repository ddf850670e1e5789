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
    void bindsOnceInOrder()
    {
        World world;
        QVERIFY(TAvailable());
        QCOMPARE(world.desktop.takeLookups().join(u'\n'),
                 u"dlopen /System/Library/PrivateFrameworks/SkyLight.framework/SkyLight\n"
                 "dlsym SLSMainConnectionID\ndlsym SLSCopyManagedDisplaySpaces\n"
                 "dlsym SLSCopySpacesForWindows\ndlsym SLSSpaceSetCompatID\n"
                 "dlsym SLSSetWindowListWorkspace\ndlsym SLSWindowIsOrderedIn\n"
                 "dlsym SLSCopyWindowsWithOptionsAndTags\ndlsym _AXUIElementGetWindow"_s);

        world.desktop.dropSymbol("SLSMainConnectionID");
        QVERIFY(TAvailable());
        QCOMPARE(TDisplays().size(), 1);
        QCOMPARE(world.desktop.takeLookups(), QStringList());

        const PlatformInstallation again(world.desktop.platform());
        QVERIFY(!TAvailable()); // bound anew, without the symbol
    }

    void absenceIsNeutral_data()
    {
        QTest::addColumn<QByteArray>("nullReply"); // empty where the symbol of the name is missing
        QTest::addColumn<QStringList>("lost");
        const auto row
            = [](const char *name, const QStringList &lost, const QByteArray &nullReply = {}) {
                  QTest::newRow(name) << nullReply << lost;
              };
        const QStringList inventory{u"inventory"_s};
        const QStringList displays{u"displays"_s, u"inventory"_s};
        const QStringList move{u"available"_s, u"move"_s};
        row("none", {});
        row("SLSMainConnectionID", move + displays + QStringList{u"spaces"_s, u"ordered"_s});
        row("SLSCopyManagedDisplaySpaces", move + displays);
        row("SLSCopySpacesForWindows", move + QStringList{u"spaces"_s});
        row("SLSSpaceSetCompatID", move);
        row("SLSSetWindowListWorkspace", move);
        row("SLSWindowIsOrderedIn", {u"ordered"_s});
        row("SLSCopyWindowsWithOptionsAndTags", inventory);
        row("_AXUIElementGetWindow", move + QStringList{u"elements"_s});
        row("no displays", displays, "SLSCopyManagedDisplaySpaces");
        row("no spaces", {u"spaces"_s}, "SLSCopySpacesForWindows");
        row("no windows", inventory, "SLSCopyWindowsWithOptionsAndTags 7");
        row("no shown windows", inventory, "SLSCopyWindowsWithOptionsAndTags 2");
        row("no information", inventory, "CGWindowListCopyWindowInfo");
    }

    void absenceIsNeutral()
    {
        QFETCH(QByteArray, nullReply);
        QFETCH(QStringList, lost);
        World world;
        world.desktop.addWindow({.number = 102, .pid = pid, .orderedIn = false});
        if (nullReply.isEmpty())
            world.desktop.dropSymbol(QTest::currentDataTag());
        else
            world.desktop.replaceReply(nullReply, std::nullopt);
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

    void inventory_data()
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
        const auto orderedOut = [&](const char *name, int minimized, const Change &change) {
            row(name, minimized, [=](SimulatedDesktop &desktop) {
                desktop.window(101).orderedIn = false;
                change(desktop);
            });
        };
        orderedOut("ordered out", -1, [](auto &) {});
        orderedOut("ordered out, hidden", 0, [](auto &d) { d.application(pid).hidden = true; });
        orderedOut("order unknown", 0, [](auto &d) { d.window(101).orderedInStatus = 5; });
        orderedOut("order not asked", 0, [](auto &d) { d.dropSymbol("SLSWindowIsOrderedIn"); });
    }

    void inventory()
    {
        QFETCH(Change, change);
        QFETCH(int, minimized);

        World world;
        world.desktop.addWindow({.number = 102, .pid = pid, .spaces = {11}});
        change(world.desktop);
        QVariantList expected;
        if (minimized >= 0)
            expected.append(
                QVariantMap{{u"id"_s, 101U}, {u"pid"_s, pid}, {u"minimized"_s, minimized}});
        expected.append(QVariantMap{{u"id"_s, 102U}, {u"pid"_s, pid}, {u"minimized"_s, 0}});
        QCOMPARE(TWindowInventory(), expected);
        // The same question for one window, which counts as shown when it cannot be told.
        QCOMPARE(TWindowIsOrderedOut(101),
                 QByteArray(QTest::currentDataTag()).startsWith("ordered"));
    }

    void identification_data()
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
        const auto unlisted = [&](const char *name, const Numbers &numbers, const Change &change) {
            row(name, numbers, [=](SimulatedDesktop &desktop) {
                desktop.window(101).listed = false;
                change(desktop);
            });
        };
        unlisted("main", {101, 102}, [](auto &d) { d.application(pid).mainWindow = 101; });
        unlisted("last probe", {101, 102}, [](auto &d) { d.window(101).remoteElement = 1151; });
        unlisted("unreached", {102}, [](auto &d) { d.window(101).remoteElement = 1152; });
        row("no trust", {}, [](auto &d) { d.world().trusted = false; });
        row("ended", {}, [](auto &d) { d.quit(pid); });
        row("items of another kind", {}, [](auto &d) {
            d.application(pid).attributes[u"AXWindows"_s]
                = {kAXErrorSuccess, QVariantList{7, QVariant(), u"text"_s}};
        });
    }

    void identification()
    {
        QFETCH(Change, change);
        QFETCH(Numbers, numbers);

        World world;
        world.desktop.addWindow({.number = 102, .pid = pid, .spaces = {11}});
        change(world.desktop);
        QCOMPARE(world.numbers(), numbers);
        QCOMPARE(TWindowID(nullptr), 0U);
        if (!world.desktop.world().trusted)
            QVERIFY(world.desktop.takeProbes(pid).isEmpty());
    }

    void keepsWhatItFoundUntilItChanges()
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

    void probesWithinItsBounds()
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

    void move_data()
    {
        QTest::addColumn<SimOperationClass>("operation");
        // Of marking the desktop, sending, and clearing the mark.
        QTest::addColumn<QList<int>>("statuses");
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

    void move()
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

    void desktopStep()
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
};

QTEST_GUILESS_MAIN(TestBridge)
#include "tst_bridge.moc"
