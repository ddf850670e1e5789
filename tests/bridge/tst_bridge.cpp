#include "bridge/bridge.h"
#include "platform/quartz.h"
#include "platform/simulated/simulated_desktop.h"
#include "support/test.h"

#include <array>

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
    void bindsOnce()
    {
        World world;
        QVERIFY(TAvailable());
        QCOMPARE(world.desktop.takeLookups().size(), 9);
        world.desktop.dropSymbol("SLSMainConnectionID");
        QVERIFY(TAvailable());
        QCOMPARE(TDisplays().size(), 1);
        QCOMPARE(world.desktop.takeLookups(), QStringList());

        const PlatformInstallation again(world.desktop.platform());
        QVERIFY(!TAvailable()); // bound anew, without the symbol
    }

    void absenceIsNeutral()
    {
        // What is lost without the symbol, or where it replies nothing.
        const auto lost = [](const char *symbol, bool replies = false) {
            World world;
            world.desktop.addWindow({.number = 102,
                                     .pid = pid,
                                     .orderedIn = false,
                                     .listed = false,
                                     .remoteElement = 5});
            world.desktop.dropSymbol(SimulatedDesktop::submitMoveSymbol()); // moves by tag
            if (replies)
                world.desktop.replaceReply(symbol, std::nullopt);
            else
                world.desktop.dropSymbol(symbol);
            const auto elements = world.numbers();
            const std::pair<QString, bool> answers[] = {
                {u"available"_s, TAvailable()},
                {u"move"_s, TMove(101, 10) != kBridgeUnavailable},
                {u"displays"_s, !TDisplays().isEmpty()},
                {u"spaces"_s, TWindowSpaces(101) == QVariantList{quint64(10)}},
                {u"ordered"_s, TWindowIsOrderedOut(102)},
                {u"inventory"_s, !TWindowInventory().isEmpty()},
                {u"elements"_s, elements.contains(101)},
                {u"probing"_s, elements.contains(102)},
            };
            QStringList result;
            for (const auto &[name, answered] : answers) {
                if (!answered)
                    result.append(name);
            }
            return result.join(u' ');
        };
        QCOMPARE(lost("none"), QString());
        QCOMPARE(lost("SLSMainConnectionID"),
                 u"available move displays spaces ordered inventory"_s);
        QCOMPARE(lost("SLSCopyManagedDisplaySpaces"), u"available move displays inventory"_s);
        QCOMPARE(lost("SLSCopySpacesForWindows"), u"available move spaces"_s);
        QCOMPARE(lost("SLSSpaceSetCompatID"), u"available move"_s);
        QCOMPARE(lost("SLSSetWindowListWorkspace"), u"available move"_s);
        QCOMPARE(lost("SLSWindowIsOrderedIn"), u"ordered"_s);
        QCOMPARE(lost("SLSCopyWindowsWithOptionsAndTags"), u"inventory"_s);
        QCOMPARE(lost("_AXUIElementGetWindow"), u"available move elements probing"_s);
        QCOMPARE(lost("_AXUIElementCreateWithRemoteToken"), u"probing"_s);
        for (const char *list :
             {"SLSCopyWindowsWithOptionsAndTags 7", "SLSCopyWindowsWithOptionsAndTags 2",
              "CGWindowListCopyWindowInfo"})
            QCOMPARE(lost(list, true), u"inventory"_s);
        QCOMPARE(lost("SLSCopyManagedDisplaySpaces", true), u"displays inventory"_s);
        QCOMPARE(lost("SLSCopySpacesForWindows", true), u"spaces"_s);
    }

    void inventory()
    {
        // Whether window 101 is minimized, or -1 when it is left out; the other one is always
        // there.
        const auto minimized = [](const Change &change) {
            World world;
            world.desktop.addWindow({.number = 102, .pid = pid, .spaces = {11}});
            change(world.desktop);
            const QVariantMap other{{u"id"_s, 102U}, {u"pid"_s, pid}, {u"minimized"_s, 0}};
            QVariantList windows = TWindowInventory();
            if (windows.isEmpty() || windows.takeLast() != other)
                return -2;
            return windows.isEmpty() ? -1 : windows[0].toMap()[u"minimized"_s].toInt();
        };
        QCOMPARE(minimized([](auto &) {}), 0);
        QCOMPARE(minimized([](auto &d) { d.window(101).minimized = true; }), 1);
        QCOMPARE(minimized([](auto &d) { d.window(101).frame.setWidth(31); }), -1);
        QCOMPARE(minimized([](auto &d) { d.window(101).frame.setHeight(31); }), -1);
        QCOMPARE(minimized([](auto &d) { d.window(101).frame = QRectF(0, 0, 32, 32); }), 0);
        QCOMPARE(minimized([](auto &d) { d.window(101).spaces = {99}; }), -1); // nobody's desktop
        for (const int layer : {-1, 1})
            QCOMPARE(minimized([&](auto &d) { d.window(101).layer = layer; }), -1);
        QCOMPARE(minimized([](auto &d) { d.window(101).orderedIn = false; }), -1);
        const Change hide = [](auto &d) {
            d.window(101).orderedIn = false;
            d.application(pid).hidden = true;
        };
        QCOMPARE(minimized(hide), 0);
        const Change nobodys = [](auto &d) {
            d.window(101).orderedIn = false;
            d.window(101).pid = 999;
        };
        QCOMPARE(minimized(nobodys), -1);
        const Change failing = [](auto &d) {
            d.window(101).orderedIn = false;
            QVERIFY(TWindowIsOrderedOut(101));
            d.window(101).orderedInStatus = 5;
            QVERIFY(!TWindowIsOrderedOut(101));
        };
        QCOMPARE(minimized(failing), 0);
        for (const auto *key :
             {kCGWindowNumber, kCGWindowOwnerPID, kCGWindowLayer, kCGWindowBounds}) {
            const Change without = [key](SimulatedDesktop &desktop) {
                desktop.alterReply("CGWindowListCopyWindowInfo", [key](auto list) {
                    QVariantMap information = list->at(0).toMap();
                    information.remove(QString::fromUtf16(key));
                    list->replace(0, information);
                    return list;
                });
            };
            QCOMPARE(minimized(without), -1);
        }
    }

    void identification()
    {
        const auto found = [](const Change &change) {
            World world;
            world.desktop.addWindow({.number = 102, .pid = pid, .spaces = {11}});
            change(world.desktop);
            return world.numbers();
        };
        const Numbers both{101, 102};
        const Numbers other{102};
        QCOMPARE(found([](auto &) {}), both);
        QCOMPARE(found([](auto &d) { d.window(101).subrole = u"AXDialog"_s; }), both);
        QCOMPARE(found([](auto &d) { d.window(101).subrole = u"AXFloatingWindow"_s; }), other);
        const AXAttributeValue failed{kAXErrorCannotComplete, u"AXDialog"_s};
        QCOMPARE(found([&](auto &d) { d.window(101).attributes[u"AXSubrole"_s] = failed; }), other);
        QCOMPARE(found([](auto &d) { d.window(101).elementNumber = 0; }), other);
        QCOMPARE(found([](auto &d) { d.window(101).elementNumber = 102; }), other);
        for (const AXProcessIdentifier stranger :
             {AXProcessIdentifier{kAXErrorSuccess, pid + 1}, {kAXErrorCannotComplete, pid}})
            QCOMPARE(found([&](auto &d) { d.window(101).elementPid = stranger; }), other);
        // What is not listed is the main or the focused window, or found by the last probe, or not
        // at all.
        const auto unlisted = [&](const Change &change) {
            return found([&](auto &d) {
                d.window(101).listed = false;
                change(d);
            });
        };
        QCOMPARE(unlisted([](auto &d) { d.application(pid).mainWindow = 101; }), both);
        QCOMPARE(unlisted([](auto &d) { d.application(pid).focusedWindow = 101; }), both);
        QCOMPARE(unlisted([](auto &d) { d.window(101).remoteElement = 1151; }), both);
        QCOMPARE(unlisted([](auto &d) { d.window(101).remoteElement = 1152; }), other);
        QCOMPARE(found([](auto &d) {
                     d.application(pid).attributes[u"AXWindows"_s]
                         = {kAXErrorSuccess, QVariantList{7, QVariant(), u"text"_s}};
                 }),
                 Numbers());
        QCOMPARE(found([](auto &d) { d.world().trusted = false; }), Numbers());
        QCOMPARE(TWindowID(nullptr), 0U);
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
        world.desktop.world().trusted = false;
        QCOMPARE(probes(), range(0, 0));
        world.desktop.world().trusted = true;
        QCOMPARE(probes(), range(0, 1152));
        QCOMPARE(probes(), range(0, 128) + range(1152, 2176));

        // A start of its own after the process was replaced by another with its number.
        world.desktop.quit(pid);
        world.desktop.addApplication({.pid = pid, .launchDate = World::started(2)});
        world.desktop.world().probeCost = 0.06;
        QCOMPARE(probes(), range(0, 1));
        world.desktop.world().probeCost = 0.055;
        QCOMPARE(probes(), range(0, 2));
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

    void move()
    {
        using Operation = SimOperationClass;
        // Of marking the desktop, sending, and clearing the mark.
        using Statuses = std::array<int, 3>;
        const auto moved = [](Operation operation, const Statuses &statuses = {},
                              MachOFault fault = MachOFault::None) {
            World world;
            SimWorld &facts = world.desktop.world();
            facts.operationClass = operation;
            if (fault != MachOFault::None)
                world.desktop.setFrameworkImage(fault);
            facts.setCompatStatus = statuses[0];
            facts.setWorkspaceStatus = statuses[1];
            facts.clearCompatStatus = statuses[2];
            const int status = TMove(101, 11);
            return QString::number(status) + u": "_s + world.desktop.takeJournal().join(u", ");
        };
        const QString mark = u"SLSSpaceSetCompatID 11 746f766c"_s;
        const QString byTag
            = mark + u", SLSSetWindowListWorkspace 101 746f766c, SLSSpaceSetCompatID 11 0"_s;
        QCOMPARE(moved(Operation::Present, {3, 4, 5}), u"0: submit 101 11"_s);
        QCOMPARE(moved(Operation::Present, {}, MachOFault::WrongMagic), u"0: "_s + byTag);
        QCOMPARE(moved(Operation::WithoutInitialiser), u"0: "_s + byTag);
        QCOMPARE(moved(Operation::GivesNull), u"0: "_s + byTag);
        QCOMPARE(moved(Operation::Absent), u"0: "_s + byTag);
        QCOMPARE(moved(Operation::Absent, {3, 4, 5}), u"3: "_s + mark);
        QCOMPARE(moved(Operation::Absent, {0, 4, 5}), u"4: "_s + byTag);
        QCOMPARE(moved(Operation::Absent, {0, 0, 5}), u"5: "_s + byTag);
    }

    void desktopStep()
    {
        World world;
        SimWorld &facts = world.desktop.world();
        for (bool *fact : {&facts.trusted, &facts.eventSourceFails, &facts.keyDownEventFails,
                           &facts.keyUpEventFails}) {
            *fact = !*fact;
            QVERIFY(!TPostDesktopStep(true));
            *fact = !*fact;
        }
        QCOMPARE(world.desktop.takeJournal(), QStringList());
        QVERIFY(TPostDesktopStep(true) && TPostDesktopStep(false));
        QCOMPARE(world.desktop.takeJournal().join(u", "),
                 u"post 0 down 124 840000, post 0 up 124 840000, "
                 "post 0 down 123 840000, post 0 up 123 840000"_s);
    }
};

QTEST_GUILESS_MAIN(TestBridge)
#include "tst_bridge.moc"
