#include "contract/contract_bench.h"
#include "platform/accessibility.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "platform/dynamic_loader.h"
#include "platform/hot_keys.h"
#include "platform/own_windows.h"
#include "platform/platform.h"
#include "platform/quartz.h"
#include "platform/user_defaults.h"
#include "platform/variants.h"
#include "platform/window_server.h"
#include "platform/workspace.h"
#include "support/test.h"

#include <QPointF>

namespace {

constexpr std::uint32_t NoWindow = 0x7FFFFFF0;
constexpr std::int32_t NoProcess = 0x7FFFFFF0;

// Virtual key codes.
constexpr std::uint32_t KeyH = 4;
constexpr std::uint32_t KeyY = 16;
constexpr std::uint32_t KeyT = 17;
constexpr std::uint32_t Key1 = 18;
constexpr std::uint32_t KeyJ = 38;
constexpr EventTypeSpec HotKeyPressed[] = {{kEventClassKeyboard, kEventHotKeyPressed}};

} // namespace

// What the program relies on of any platform, tried on the one that the environment names: a
// session of the window manager TOVEL_TEST_MANAGER or, with "memory", in memory; else a simulated
// desktop.
class ContractSuite : public QObject, private ContractBench
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QByteArray manager = qgetenv("TOVEL_TEST_MANAGER");
        const QHash<QByteArray, std::unique_ptr<ContractWorld> (*)()> worlds{
            {"memory", makeMemoryWorld},
            {"gnome", makeGnomeWorld},
            {"kwin", makeKWinWorld},
            {"sway", makeSwayWorld},
            {"i3", makeI3World}};
        m_world = manager.isEmpty()
            ? makeSimulatedWorld(qEnvironmentVariableIntValue("TOVEL_TEST_DISPLAYS"))
            : worlds.value(manager, makeX11World)();
        QVERIFY2(m_world, "the session does not start");
        bind();
        QVERIFY(m_entries.canMove() && m_entries.isOrderedIn && m_entries.windowsWithTags);
        QVERIFY(eventually([this] { return shown() != 0; }));
        m_row = row();
    }

    void cleanup()
    {
        for (const std::uint32_t window : std::exchange(m_open, {}))
            m_world->close(window);
        QVERIFY(show(0) && eventually([this] { return frontToBack().isEmpty(); }));
    }

    void cleanupTestCase()
    {
        m_installation.reset();
        m_world.reset();
    }

    void theLoaderFindsWhatThereIs()
    {
        DynamicLoader &loader = m_platform->loader();
        QCOMPARE(loader.dlsym(nullptr, "SLSMainConnectionID"), nullptr);
        QCOMPARE(loader.dlsym(m_entries.sky, "SLSNoSuchEntry"), nullptr);
        QCOMPARE(loader.dlsym(DynamicLoader::rtldDefault(), "SLSNoSuchEntry"), nullptr);
        QCOMPARE(loader.dlopen("/nowhere/Nothing", DynamicLoader::RtldLazy), nullptr);
        QVERIFY(!loader.NSClassFromString("NoSuchClass"));
        QVERIFY(loader.imageMemory(loader._dyld_image_count()).empty());
        QVERIFY(!m_entries.displays(m_connection + 1));
        QVERIFY(m_platform->accessibility().AXIsProcessTrusted());
        QVERIFY(m_platform->accessibility().AXIsProcessTrustedWithOptions({}));
        QVERIFY(m_entries.compat(m_connection + 1, m_row[0], Tag) != 0);
    }

    void displaysListTheirSpaces()
    {
        QCOMPARE(m_entries.displays(m_connection)->size(), m_world->displayCount());
        const QVariantMap facts = display();
        QVERIFY(!text(facts[u"Display Identifier"_s]).value_or(QString()).isEmpty());
        QCOMPARE(m_row.size(), 4);
        QCOMPARE(QSet<quint64>(m_row.begin(), m_row.end()).size(), 4);
        QVERIFY(!m_row.contains(0));
        for (const QVariant &space : array(facts[u"Spaces"_s]).value_or(QVariantList()))
            QCOMPARE(signedNumber(dictionary(space).value()[u"type"_s]), 0);
        QCOMPARE(shown(), m_row[0]);
        QVERIFY(show(2));
        QCOMPARE(row(), m_row);
    }

    void windowsHaveTheirSpaces()
    {
        const auto one = open({.application = u"alpha"_s, .desktop = 2});
        const auto all = open({.application = u"alpha"_s});
        m_world->putOnAllDesktops(all);
        QVERIFY(eventually([&] { return spacesOf(all) == m_row; }));
        QCOMPARE(spacesOf(one), Numbers{m_row[2]});
        QCOMPARE(spacesOf(NoWindow), Numbers());
        QVERIFY(!m_entries.spaces(m_connection + 1, 7, {one}));

        QCOMPARE(windowsOn(m_row[2], 7).count(one), 1);
        QCOMPARE(windowsOn(m_row[2], 7).count(all), 1);
        QCOMPARE(windowsOn(m_row[1], 7), Numbers{all});
        std::uint8_t orderedIn = 7;
        QVERIFY(m_entries.isOrderedIn(m_connection, NoWindow, &orderedIn) != 0);
        QCOMPARE(orderedIn, 7);
        QCOMPARE(m_entries.isOrderedIn(m_connection, one, &orderedIn), 0);
        QCOMPARE(orderedIn, 1);
    }

    void informationDescribesWindows()
    {
        const auto plain = open({.application = u"alpha"_s, .size = QSize(320, 240)});
        const auto other = open({.application = u"alpha"_s});
        const QVariantMap facts = information(plain);
        QCOMPARE(unsignedNumber(facts[QString::fromUtf16(kCGWindowNumber)]), plain);
        QCOMPARE(signedNumber(facts[QString::fromUtf16(kCGWindowLayer)]), 0);
        const QVariantMap bounds = dictionary(facts[QString::fromUtf16(kCGWindowBounds)]).value();
        QCOMPARE(realNumber(bounds[u"Width"_s]), 320.0);
        QCOMPARE(realNumber(bounds[u"Height"_s]), 240.0);
        QVERIFY(realNumber(bounds[u"X"_s]) && realNumber(bounds[u"Y"_s]));
        QCOMPARE(information(NoWindow), QVariantMap());
        QCOMPARE(frontToBack().size(), 2);

        for (const auto &[front, back] : {std::pair(plain, other), std::pair(other, plain)}) {
            Accessibility &accessibility = m_platform->accessibility();
            const auto chosen = element(front);
            QCOMPARE(accessibility.AXUIElementSetAttributeValue(chosen, u"AXMain"_s, true),
                     kAXErrorSuccess);
            // Not every manager takes the request to raise a window without activating it.
            if (accessibility.AXUIElementPerformAction(chosen, u"AXRaise"_s) != kAXErrorSuccess)
                QVERIFY(owner(front)->activateWithOptions(0));
            const Numbers order{front, back};
            QVERIFY(eventually([&] { return frontToBack() == order; }));
        }
    }

    void elementsTellKindAndTitle()
    {
        using enum ContractWindowKind;
        using Title = std::optional<QString>;
        for (const auto &[kind, title, subrole] :
             {std::tuple(Standard, Title(u"Tïtle ✓"_s), u"AXStandardWindow"_s),
              {Standard, std::nullopt, u"AXStandardWindow"_s},
              {Dialog, u"Question"_s, u"AXDialog"_s},
              {Dock, u"Bar"_s, u"AXUnknown"_s}}) {
            if (kind == Dock && !m_world->tellsDocks())
                continue;
            const std::uint32_t window
                = m_world->open({.application = subrole, .title = title, .kind = kind});
            m_open.append(window);
            QVERIFY(eventually([&] { return element(window) != nullptr; }));
            QCOMPARE(attribute(window, u"AXSubrole"_s), QVariant(subrole));
            QCOMPARE(text(attribute(window, u"AXTitle"_s)), title);
            QCOMPARE(attribute(window, u"AXMinimized"_s), QVariant(false));
            QCOMPARE(attribute(window, u"AXFullScreen"_s), QVariant(false));
            QCOMPARE(attribute(window, u"AXNoSuchAttribute"_s), QVariant());
            const auto layer = information(window)[QString::fromUtf16(kCGWindowLayer)];
            QCOMPARE(signedNumber(layer) == 0, kind != Dock);
            // Only what a task bar would show makes an application a regular one.
            QCOMPARE(owner(window)->activationPolicy() == NSApplicationActivationPolicy::Regular,
                     kind != Dock);
        }
    }

    void elementsTellStates()
    {
        const auto minimized = open({.application = u"alpha"_s});
        const auto fullScreen = open({.application = u"alpha"_s});
        m_world->minimize(minimized);
        m_world->makeFullScreen(fullScreen);
        QVERIFY(becomes(minimized, u"AXMinimized"_s));
        QVERIFY(becomes(fullScreen, u"AXFullScreen"_s));
        QCOMPARE(attribute(minimized, u"AXFullScreen"_s), QVariant(false));
        QCOMPARE(attribute(fullScreen, u"AXMinimized"_s), QVariant(false));
        const bool isInPlace = m_world->minimizesInPlace();
        QCOMPARE(windowsOn(m_row[0], 7).contains(minimized), isInPlace);
        QVERIFY(!windowsOn(m_row[0], 2).contains(minimized));
        QVERIFY(windowsOn(m_row[0], 2).contains(fullScreen));
        QCOMPARE(spacesOf(minimized), isInPlace ? Numbers{m_row[0]} : Numbers());
    }

    void elementsFailWithoutTheirWindow()
    {
        Accessibility &accessibility = m_platform->accessibility();
        const auto kept = open({.application = u"alpha"_s});
        const auto window = open({.application = u"alpha"_s, .title = u"Gone"_s});
        const AXUIElementRef gone = element(window);
        const AXUIElementRef nobody = accessibility.AXUIElementCreateApplication(NoProcess);
        QVERIFY(nobody);
        QVERIFY(goes(window));
        QCOMPARE(elements(owner(kept)->processIdentifier()).size(), 1);

        for (const AXUIElementRef &broken : {gone, nobody, AXUIElementRef()}) {
            for (const auto &name : {u"AXWindows"_s, u"AXSubrole"_s, u"AXTitle"_s})
                QVERIFY(!attribute(broken, name).isValid());
            QVERIFY(accessibility.AXUIElementGetPid(broken).error != kAXErrorSuccess);
            QVERIFY(accessibility.AXUIElementPerformAction(broken, u"AXRaise"_s)
                    != kAXErrorSuccess);
            QVERIFY(accessibility.AXUIElementSetAttributeValue(broken, u"AXMain"_s, true)
                    != kAXErrorSuccess);
            std::uint32_t number = 7;
            QVERIFY(m_entries.windowID(broken, &number) != kAXErrorSuccess);
            QCOMPARE(number, 7u);
        }
        QCOMPARE(accessibility.AXUIElementSetMessagingTimeout(nullptr, 1), kAXErrorIllegalArgument);
        QCOMPARE(accessibility.AXUIElementSetMessagingTimeout(element(kept), 1), kAXErrorSuccess);
        QVERIFY(accessibility.AXUIElementPerformAction(element(kept), u"AXPress"_s)
                != kAXErrorSuccess);
        QVERIFY(accessibility.AXUIElementSetAttributeValue(element(kept), u"AXTitle"_s, u"x"_s)
                != kAXErrorSuccess);
    }

    void aNumberThatIsUsedAgainIsAnotherWindow()
    {
        if (!m_world->usesNumbersAgain())
            QSKIP("every window has a number of its own");
        const auto window = open({.application = u"alpha"_s});
        const auto kept = open({.application = u"alpha"_s});
        const AXUIElementRef gone = element(window);
        m_world->replace(window, {.application = u"beta"_s});
        QVERIFY(eventually([&] {
            return owner(window) && owner(window)->bundleIdentifier() == u"beta"_s
                && spacesOf(window) == Numbers{m_row[0]};
        }));
        QCOMPARE(windowOf(gone), 0u);
        QVERIFY(!attribute(gone, u"AXMinimized"_s).isValid());
        QVERIFY(m_platform->accessibility().AXUIElementGetPid(gone).error != kAXErrorSuccess);
        QVERIFY(element(window) && element(window) != gone);
        QCOMPARE(windowsOf(owner(kept)->processIdentifier()), QList<std::uint32_t>{kept});
    }

    void aTaggedSpaceReceivesWindows()
    {
        const auto window = open({.application = u"alpha"_s});
        const auto minimized = open({.application = u"alpha"_s});
        const auto other = open({.application = u"alpha"_s});
        m_world->minimize(minimized);
        QVERIFY(becomes(minimized, u"AXMinimized"_s));
        QVERIFY(sends(window, m_row[3]));
        QVERIFY(sends(minimized, m_row[3]));
        QCOMPARE(attribute(minimized, u"AXMinimized"_s), QVariant(m_world->minimizesInPlace()));
        QCOMPARE(shown(), m_row[0]);

        // A cleared tag, one never given, a space and a connection that do not exist.
        QVERIFY(m_entries.workspace(m_connection, &window, 1, Tag) != 0);
        QVERIFY(m_entries.workspace(m_connection, &window, 1, Tag + 1) != 0);
        QVERIFY(m_entries.compat(m_connection, 999999, Tag) != 0);
        QVERIFY(m_entries.workspace(m_connection + 1, &window, 1, Tag) != 0);
        // Clearing another space leaves the tag where it is.
        QCOMPARE(m_entries.compat(m_connection, m_row[1], Tag), 0);
        m_entries.compat(m_connection, m_row[2], 0);
        QCOMPARE(m_entries.workspace(m_connection, &window, 1, Tag), 0);
        QVERIFY(arrives(window, m_row[1]));
        QCOMPARE(m_entries.compat(m_connection, m_row[1], 0), 0);
        QCOMPARE(spacesOf(other), Numbers{m_row[0]});
    }

    void stepsShowTheNeighbourAndNotifyOnce()
    {
        Workspace &workspace = m_platform->workspace();
        int notifications = 0;
        int others = 0;
        auto subscription = workspace.observeActiveSpaceDidChange([&] { ++notifications; });
        const auto other = workspace.observeActiveSpaceDidChange([&] { ++others; });
        m_platform->quartz().CGWarpMouseCursorPosition({100, 100});
        int expected = 0;
        for (const auto &[key, desktop] : {std::pair(kVK_RightArrow, 1),
                                           {kVK_RightArrow, 2},
                                           {kVK_LeftArrow, 1},
                                           {kVK_LeftArrow, 0}}) {
            press(key);
            ++expected;
            QVERIFY(eventually([&] { return others == expected && shown() == m_row[desktop]; }));
        }
        press(kVK_LeftArrow); // there is none
        m_world->pass(0.3);
        QCOMPARE(shown(), m_row[0]);
        m_world->showDesktop(3);
        QVERIFY(eventually([&] { return others > expected; }));
        QCOMPARE(notifications, expected + 1);
        subscription.reset();
        m_world->showDesktop(1);
        QVERIFY(eventually([&] { return others > expected + 1; }));
        QCOMPARE(notifications, expected + 1);
    }

    void eachDisplayHasARowOfItsOwn()
    {
        if (m_world->displayCount() < 2)
            QSKIP("one display");
        Quartz &quartz = m_platform->quartz();
        const QList<NSScreen> screens = m_platform->workspace().screens();
        QPointF middles[2];
        for (int i = 0; i < 2; ++i) {
            const std::uint32_t number = screens[i].NSScreenNumber.value();
            QCOMPARE(display(i)[u"Display Identifier"_s],
                     quartz.CGDisplayCreateUUIDFromDisplayID(number).value());
            middles[i] = quartz.CGDisplayBounds(number).center();
        }
        QVERIFY(screens[0].localizedName != screens[1].localizedName);
        const Numbers other = row(1);
        QCOMPARE(other.size(), 2);
        QVERIFY(!m_row.contains(other[0]) && !m_row.contains(other[1]));

        const auto stepsTo = [&](const Numbers &expected) {
            return eventually([&] { return Numbers{shown(0), shown(1)} == expected; });
        };
        quartz.CGWarpMouseCursorPosition(middles[1]);
        press(kVK_RightArrow);
        QVERIFY(stepsTo({m_row[0], other[1]}));
        quartz.CGWarpMouseCursorPosition(middles[0]);
        press(kVK_RightArrow);
        QVERIFY(stepsTo({m_row[1], other[1]}));
        quartz.CGWarpMouseCursorPosition(middles[1]);
        press(kVK_LeftArrow);
        QVERIFY(stepsTo({m_row[1], other[0]}));

        const auto window = open({.application = u"alpha"_s});
        QVERIFY(sends(window, other[1]));
    }

    void activationKeepsToTheDockPreference()
    {
        const UserDefaults *dock
            = m_platform->userDefaults().initWithSuiteName(u"com.apple.dock"_s);
        const bool switches = !dock
            || dock->dictionaryRepresentation().boolean(u"workspaces-auto-swoosh"_s) != false;
        const auto stays = open({.application = u"alpha"_s});
        const auto away = open({.application = u"beta"_s, .desktop = 2});
        QVERIFY(owner(away)->activateWithOptions(0));
        if (switches) {
            QVERIFY(eventually([&] { return shown() == m_row[2]; }));
            QCOMPARE(spacesOf(away), Numbers{m_row[2]});
        } else {
            m_world->pass(0.5);
            QCOMPARE(shown(), m_row[0]);
        }
        QCOMPARE(spacesOf(stays), Numbers{m_row[0]});
        if (qEnvironmentVariable("TOVEL_TEST_ACTIVATION") == u"switch")
            QVERIFY(switches);
    }

    void applicationsRunAsLongAsTheirWindows()
    {
        Workspace &workspace = m_platform->workspace();
        const auto first = open({.application = u"alpha"_s});
        const NSRunningApplicationRef alpha = owner(first);
        QVERIFY(alpha);
        QCOMPARE(alpha->bundleIdentifier(), u"alpha"_s);
        QCOMPARE(alpha->localizedName(), u"alpha"_s);
        QCOMPARE(alpha->activationPolicy(), NSApplicationActivationPolicy::Regular);
        QVERIFY(!alpha->isHidden());
        const auto second = open({.application = u"alpha"_s});
        QCOMPARE(owner(second), alpha);
        QCOMPARE(workspace.runningApplications().count(alpha), 1);
        QVERIFY(goes(first));
        QVERIFY(!alpha->isTerminated());
        close(second);
        QVERIFY(eventually([&] { return workspace.runningApplications().isEmpty(); }));
        QVERIFY(alpha->isTerminated());
        QCOMPARE(alpha->localizedName(), u"alpha"_s);
        QVERIFY(!alpha->activateWithOptions(0));
        QVERIFY(!workspace.runningApplicationWithProcessIdentifier(alpha->processIdentifier()));
        QVERIFY(!workspace.runningApplicationWithProcessIdentifier(NoProcess));
    }

    void applicationsOfOneProcessShareNothing()
    {
        const auto ofAlpha = open({.application = u"alpha"_s});
        const auto ofBeta = open({.application = u"beta"_s});
        const std::int32_t alpha = owner(ofAlpha)->processIdentifier();
        const std::int32_t beta = owner(ofBeta)->processIdentifier();
        QVERIFY(alpha != beta);
        QCOMPARE(owner(ofBeta)->bundleIdentifier(), u"beta"_s);
        QCOMPARE(windowsOf(alpha), QList<std::uint32_t>{ofAlpha});
        QCOMPARE(windowsOf(beta), QList<std::uint32_t>{ofBeta});
        for (const auto window : {ofAlpha, ofBeta}) {
            const auto pid = m_platform->accessibility().AXUIElementGetPid(element(window));
            QCOMPARE(pid.error, kAXErrorSuccess);
            QCOMPARE(pid.pid, owner(window)->processIdentifier());
        }
        close(ofAlpha);
        QVERIFY(eventually([&] { return elements(alpha).isEmpty(); }));
        QCOMPARE(owner(ofBeta)->processIdentifier(), beta);
    }

    void screensAndCursorAgree()
    {
        Quartz &quartz = m_platform->quartz();
        const QList<NSScreen> screens = m_platform->workspace().screens();
        QVERIFY(!screens.isEmpty());
        const std::uint32_t number = screens.first().NSScreenNumber.value();
        QVERIFY(number != 0);
        QVERIFY(!screens.first().localizedName.isEmpty());
        QCOMPARE(screens.size(), m_world->displayCount());
        QCOMPARE(quartz.CGDisplayBounds(number), m_world->bounds());
        QVERIFY(!quartz.CGDisplayCreateUUIDFromDisplayID(number).value_or(QString()).isEmpty());
        QVERIFY(quartz.CGDisplayBounds(NoWindow).isEmpty());
        QVERIFY(!quartz.CGDisplayIsBuiltin(NoWindow));
        QVERIFY(!quartz.CGDisplayCreateUUIDFromDisplayID(NoWindow));
        if (!m_world->tellsCursor())
            QSKIP("nobody is told where the cursor is");
        for (const QPointF place : {QPointF(640, 400), QPointF(12, 34)}) {
            quartz.CGWarpMouseCursorPosition(place);
            const auto event = quartz.CGEventCreate();
            QVERIFY(event);
            QCOMPARE(event->location, place);
        }
    }

    void timersKeepTheirOrder()
    {
        QStringList fired;
        const auto start = [&](double interval, const QString &name) {
            return m_platform->clock().startTimer(interval, false,
                                                  [&fired, name] { fired.append(name); });
        };
        const auto late = start(0.08, u"late"_s);
        const auto soon = start(0.02, u"soon"_s);
        const auto now = start(0, u"now"_s);
        std::unique_ptr<Timer> repeating;
        repeating = m_platform->clock().startTimer(0.1, true, [&] {
            fired.append(u"beat"_s);
            if (fired.count(u"beat"_s) == 2)
                repeating.reset();
        });
        const auto end = start(0.4, u"end"_s);
        QVERIFY(fired.isEmpty());
        QVERIFY(eventually([&] { return fired.endsWith(u"end"_s); }));
        QCOMPARE(fired.join(u' '), u"now soon late beat beat end"_s);
    }

    void hotKeyHandlesAreHeldToOnce()
    {
        HotKeys &hotKeys = m_platform->hotKeys();
        QCOMPARE(hotKeys.UnregisterEventHotKey(EventHotKeyRef{12345}), eventHotKeyInvalidErr);
        const auto target = hotKeys.GetApplicationEventTarget();
        const auto first = hotKeys.RegisterEventHotKey(KeyT, HotKeyModifiers, {1, 1}, target, 0);
        QCOMPARE(first.status, noErr);
        QCOMPARE(registerKey(KeyT).status, eventHotKeyExistsErr);
        QCOMPARE(hotKeys.UnregisterEventHotKey(first.hotKey), noErr);
        QCOMPARE(hotKeys.UnregisterEventHotKey(first.hotKey), eventHotKeyInvalidErr);
        QCOMPARE(hotKeys.RegisterEventHotKey(KeyT, HotKeyModifiers, {}, EventTargetRef{}, 0).status,
                 paramErr);
        QCOMPARE(registerKey(0xFFFF).status, eventHotKeyInvalidErr);
        QCOMPARE(hotKeys.InstallEventHandler(target, nullptr, HotKeyPressed, nullptr).status,
                 paramErr);

        // Whoever comes first has a key, in each state of the locks; a refusal leaves nothing.
        if (!m_world->tellsTakenKeys())
            return;
        for (const bool locked : {true, false}) {
            QVERIFY(m_world->take(locked ? KeyH : KeyJ, HotKeyModifiers, locked));
            const auto refused = registerKey(locked ? KeyH : KeyJ);
            QCOMPARE(refused.status, eventHotKeyExistsErr);
            QCOMPARE(refused.hotKey, EventHotKeyRef{});
            QVERIFY(m_world->take(locked ? KeyH : KeyJ, HotKeyModifiers, !locked));
        }
        const auto again = registerKey(KeyT);
        QCOMPARE(again.status, noErr);
        for (const bool locked : {true, false})
            QVERIFY(!m_world->take(KeyT, HotKeyModifiers, locked));
        QCOMPARE(hotKeys.UnregisterEventHotKey(again.hotKey), noErr);
    }

    void aHotKeyIsToldOncePerPress()
    {
        HotKeys &hotKeys = m_platform->hotKeys();
        const auto target = hotKeys.GetApplicationEventTarget();
        static int presses = 0;
        static int passedOn = 0;
        const auto count = [](void *, void *, void *userData) -> OSStatus {
            ++*static_cast<int *>(userData);
            return userData == &passedOn ? eventNotHandledErr : noErr;
        };
        for (int *counter : {&presses, &passedOn}) {
            QCOMPARE(hotKeys.InstallEventHandler(target, count, HotKeyPressed, counter).status,
                     noErr);
        }
        const auto other = registerKey(KeyY);
        const auto hotKey = registerKey(KeyT);
        QCOMPARE(hotKey.status, noErr);
        QCOMPARE(hotKeys.UnregisterEventHotKey(other.hotKey), noErr);
        int expected = 0;
        const auto isTold = [&](double seconds = 0) {
            m_world->press(KeyT, HotKeyModifiers, seconds);
            ++expected;
            return eventually([&] { return presses >= expected; });
        };
        QVERIFY(isTold(1)); // long enough for the keyboard to repeat it
        m_world->toggleLocks();
        QVERIFY(isTold());
        m_world->toggleLocks();
        m_world->press(KeyY, HotKeyModifiers);
        m_world->press(KeyT, HotKeyModifiers | 0x200);
        m_world->press(KeyT, 0);
        QVERIFY(isTold());
        for (const bool usual : {false, true}) {
            m_world->changeKeyboard(usual);
            m_world->pass(0.2); // nobody says when the keys have followed
            QVERIFY(isTold());
        }
        QCOMPARE(hotKeys.UnregisterEventHotKey(hotKey.hotKey), noErr);
        // Shift counts, whether it makes another symbol of the key or not.
        for (const std::uint32_t key : {KeyT, Key1}) {
            const auto last
                = hotKeys.RegisterEventHotKey(key, HotKeyModifiers | 0x200, {1, 3}, target, 0);
            m_world->press(key, HotKeyModifiers);
            for (int i = 0; i < 2; ++i)
                m_world->press(key, HotKeyModifiers | 0x200);
            expected += 2;
            QVERIFY(eventually([&] { return presses >= expected; }));
            QCOMPARE(presses, expected);
            QCOMPARE(hotKeys.UnregisterEventHotKey(last.hotKey), noErr);
        }
        QCOMPARE(passedOn, presses);
    }

    void ownWindowsJoinAllSpacesAndComeToTheFront()
    {
        OwnWindows &own = m_platform->ownWindows();
        const auto window = open({.application = u"alpha"_s, .title = u"Panel"_s});
        const auto other = open({.application = u"alpha"_s, .title = u"Dialog"_s});
        const OwnWindow panel = m_world->own(window);
        const OwnWindow dialog = m_world->own(other);
        const OwnWindow none = m_world->own(NoWindow);
        QVERIFY(show(1));
        constexpr auto Panel = NSWindowCollectionBehaviorCanJoinAllSpaces
            | NSWindowCollectionBehaviorFullScreenAuxiliary;
        for (int round = 0; round < 2; ++round) {
            QVERIFY(own.setCollectionBehavior(panel, Panel));
            QVERIFY(eventually([&] { return isOnAll(window); }));
        }
        QCOMPARE(spacesOf(other), Numbers{m_row[0]});
        QVERIFY(show(0));
        for (const auto front : {window, other}) {
            QVERIFY(own.makeKeyAndOrderFront(front == window ? panel : dialog));
            QVERIFY(eventually([&] { return frontToBack().value(0) == front; }));
        }
        QVERIFY(isOnAll(window));
        QVERIFY(own.setCollectionBehavior(panel, NSWindowCollectionBehaviorDefault));
        QVERIFY(arrives(window, m_row[0]));
        QVERIFY(!own.setCollectionBehavior(none, Panel));
        QVERIFY(!own.makeKeyAndOrderFront(none));

        QVERIFY(own.setLevel(dialog, NSFloatingWindowLevel));
        QVERIFY(own.setLevel(dialog, NSNormalWindowLevel));
        QVERIFY(!own.setLevel(none, NSFloatingWindowLevel));

        // Hidden and shown again, it may be another window.
        QVERIFY(goes(window));
        const auto again = open({.application = u"alpha"_s, .title = u"Panel"_s});
        QVERIFY(own.setCollectionBehavior(m_world->own(again), Panel));
        QVERIFY(eventually([&] { return isOnAll(again); }));
    }
};

QTEST_GUILESS_MAIN(ContractSuite)
#include "tst_contract.moc"
