#include "contract/contract_world.h"
#include "contract/window_server_entries.h"
#include "platform/accessibility.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "platform/hot_keys.h"
#include "platform/platform.h"
#include "platform/quartz.h"
#include "platform/user_defaults.h"
#include "platform/workspace.h"

#include <QPointF>
#include <QTest>

#include <algorithm>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr std::uint32_t Tag = 0x746F766C;
constexpr std::uint32_t NoWindow = 0x7FFFFFF0;
constexpr std::int32_t NoProcess = 0x7FFFFFF0;

} // namespace

// What the program relies on of any platform, tried on the one that the environment names: without
// TOVEL_TEST_MANAGER the simulated desktop, else a session of that window manager.
class ContractSuite : public QObject
{
    Q_OBJECT

private:
    // Opens a window and waits until the platform knows it and where it is.
    std::uint32_t open(const ContractWindow &window)
    {
        const std::uint32_t number = m_world->open(window);
        m_open.append(number);
        const bool isThere = m_world->eventually([&] {
            return m_server->spacesOf(number) == QList<quint64>{m_row.value(window.desktop)}
            && element(number);
        });
        if (!isThere)
            qWarning("window %u of %s does not appear", number, qPrintable(window.application));
        return number;
    }

    void close(std::uint32_t window)
    {
        m_open.removeOne(window);
        m_world->close(window);
    }

    // The application that has the window, by the window's own word.
    NSRunningApplicationRef owner(std::uint32_t window)
    {
        const auto list = m_platform->quartz().CGWindowListCopyWindowInfo(
            kCGWindowListOptionIncludingWindow, window);
        const auto facts = dictionary(list.value_or(QVariantList()).value(0));
        const auto pid = signedNumber(
            facts.value_or(QVariantMap()).value(QString::fromUtf16(kCGWindowOwnerPID)));
        return m_platform->workspace().runningApplicationWithProcessIdentifier(
            static_cast<std::int32_t>(pid.value_or(0)));
    }

    QList<AXUIElementRef> elements(std::int32_t pid)
    {
        Accessibility &accessibility = m_platform->accessibility();
        const auto value = accessibility.AXUIElementCopyAttributeValue(
            accessibility.AXUIElementCreateApplication(pid), u"AXWindows"_s);
        QList<AXUIElementRef> result;
        for (const QVariant &item : array(value.value).value_or(QVariantList()))
            result.append(item.value<AXUIElementRef>());
        return result;
    }

    AXUIElementRef element(std::uint32_t window)
    {
        const auto application = owner(window);
        for (const auto &found : elements(application ? application->processIdentifier() : 0)) {
            std::uint32_t number = 0;
            if (m_server->getWindow(found, &number) == kAXErrorSuccess && number == window)
                return found;
        }
        return nullptr;
    }

    QList<std::uint32_t> windowsOf(std::int32_t pid)
    {
        QList<std::uint32_t> numbers;
        for (const AXUIElementRef &found : elements(pid)) {
            numbers.append(0);
            m_server->getWindow(found, &numbers.last());
        }
        return numbers;
    }

    QVariant attribute(const AXUIElementRef &of, const QString &name)
    {
        const auto value = m_platform->accessibility().AXUIElementCopyAttributeValue(of, name);
        return value.error == kAXErrorSuccess ? value.value : QVariant();
    }
    QVariant attribute(std::uint32_t window, const QString &name)
    {
        return attribute(element(window), name);
    }

    QList<quint64> frontToBack()
    {
        QList<quint64> numbers;
        const auto list = m_platform->quartz().CGWindowListCopyWindowInfo(0, 0);
        for (const QVariant &facts : list.value_or(QVariantList()))
            numbers.append(
                unsignedNumber(facts.toMap().value(QString::fromUtf16(kCGWindowNumber))).value());
        return numbers;
    }
    bool isInFrontOf(std::uint32_t window, std::uint32_t other)
    {
        const auto numbers = frontToBack();
        return numbers.contains(window) && numbers.contains(other)
            && numbers.indexOf(window) < numbers.indexOf(other);
    }

    // Asks for a move the way that a session without the operation class offers.
    std::int32_t ask(std::uint32_t window, quint64 space)
    {
        const std::int32_t marked = m_server->setTag(m_server->connection, space, Tag);
        const std::int32_t sent = m_server->setWorkspace(m_server->connection, &window, 1, Tag);
        m_server->setTag(m_server->connection, space, 0);
        return marked != 0 ? marked : sent;
    }

    void step(std::uint16_t key)
    {
        Quartz &quartz = m_platform->quartz();
        const auto source = quartz.CGEventSourceCreate(kCGEventSourceStateHIDSystemState);
        QVERIFY(source);
        for (const bool isDown : {true, false}) {
            auto event = quartz.CGEventCreateKeyboardEvent(*source, key, isDown);
            QVERIFY(event);
            event->flags = kCGEventFlagMaskControl | kCGEventFlagMaskSecondaryFn;
            quartz.CGEventPost(kCGHIDEventTap, *event);
        }
    }

    std::unique_ptr<ContractWorld> m_world;
    Platform *m_platform = nullptr;
    std::unique_ptr<WindowServerEntries> m_server;
    QList<quint64> m_row;
    QList<std::uint32_t> m_open;

private Q_SLOTS:
    void initTestCase()
    {
        m_world = qEnvironmentVariableIsSet("TOVEL_TEST_MANAGER") ? makeX11World()
                                                                  : makeSimulatedWorld();
        QVERIFY2(m_world, "the session does not start");
        m_platform = &m_world->platform();
        m_server = std::make_unique<WindowServerEntries>(m_platform->loader());
        QVERIFY(m_server->isComplete());
        QVERIFY(m_world->eventually([this] { return m_server->shown() != 0; }));
        m_row = m_server->row();
    }

    void cleanup()
    {
        for (const std::uint32_t window : std::exchange(m_open, {}))
            m_world->close(window);
        m_world->showDesktop(0);
        QVERIFY(m_world->eventually(
            [this] { return m_server->shown() == m_row[0] && frontToBack().isEmpty(); }));
    }

    void cleanupTestCase()
    {
        m_server.reset();
        m_world.reset();
    }

    void theLoaderFindsWhatThereIs()
    {
        DynamicLoader &loader = m_platform->loader();
        QCOMPARE(loader.dlsym(nullptr, "SLSMainConnectionID"), nullptr);
        QCOMPARE(loader.dlsym(m_server->handle, "SLSNoSuchEntry"), nullptr);
        QCOMPARE(loader.dlsym(DynamicLoader::rtldDefault(), "SLSNoSuchEntry"), nullptr);
        QCOMPARE(loader.dlopen("/nowhere/Nothing", DynamicLoader::RtldLazy), nullptr);
        QVERIFY(!loader.NSClassFromString("NoSuchClass"));
        const std::uint32_t beyond = loader._dyld_image_count();
        QCOMPARE(loader._dyld_get_image_name(beyond), nullptr);
        QCOMPARE(loader._dyld_get_image_header(beyond), nullptr);
        QVERIFY(loader.imageMemory(beyond).empty());
        QVERIFY(!m_server->copyDisplays(m_server->connection + 1));
        QVERIFY(m_server->setTag(m_server->connection + 1, m_row[0], Tag) != 0);
    }

    void displaysListTheirSpaces()
    {
        QCOMPARE(m_server->copyDisplays(m_server->connection)->size(), 1);
        const QVariantMap display = m_server->firstDisplay();
        QVERIFY(!text(display[u"Display Identifier"_s]).value_or(QString()).isEmpty());
        QCOMPARE(m_row.size(), 4);
        QCOMPARE(QSet<quint64>(m_row.begin(), m_row.end()).size(), 4);
        QVERIFY(!m_row.contains(0));
        for (const QVariant &space : array(display[u"Spaces"_s]).value_or(QVariantList()))
            QCOMPARE(signedNumber(dictionary(space).value()[u"type"_s]), 0);
        QCOMPARE(m_server->shown(), m_row[0]);
        m_world->showDesktop(2);
        QVERIFY(m_world->eventually([&] { return m_server->shown() == m_row[2]; }));
        QCOMPARE(m_server->row(), m_row);
    }

    void windowsHaveTheirSpaces()
    {
        const auto one = open({.application = u"alpha"_s, .desktop = 2});
        const auto all = open({.application = u"alpha"_s});
        m_world->putOnAllDesktops(all);
        QVERIFY(m_world->eventually([&] { return m_server->spacesOf(all) == m_row; }));
        QCOMPARE(m_server->spacesOf(one), QList<quint64>{m_row[2]});
        QCOMPARE(m_server->spacesOf(NoWindow), QList<quint64>());
        QVERIFY(!m_server->copySpaces(m_server->connection + 1, 7, {one}));

        QCOMPARE(m_server->windowsOn(m_row[2], 7).count(one), 1);
        QCOMPARE(m_server->windowsOn(m_row[2], 7).count(all), 1);
        QCOMPARE(m_server->windowsOn(m_row[1], 7), QList<quint64>{all});
        std::uint8_t orderedIn = 7;
        QVERIFY(m_server->isOrderedIn(m_server->connection, NoWindow, &orderedIn) != 0);
        QCOMPARE(orderedIn, 7);
        QCOMPARE(m_server->isOrderedIn(m_server->connection, one, &orderedIn), 0);
        QCOMPARE(orderedIn, 1);
    }

    void informationDescribesWindows()
    {
        const auto plain = open({.application = u"alpha"_s, .size = QSize(320, 240)});
        const auto other = open({.application = u"alpha"_s});
        const auto list = m_platform->quartz().CGWindowListCopyWindowInfo(
            kCGWindowListOptionIncludingWindow, plain);
        QCOMPARE(list.value().size(), 1);
        const QVariantMap facts = dictionary(list->first()).value();
        QCOMPARE(unsignedNumber(facts[QString::fromUtf16(kCGWindowNumber)]), plain);
        QCOMPARE(signedNumber(facts[QString::fromUtf16(kCGWindowLayer)]), 0);
        const QVariantMap bounds = dictionary(facts[QString::fromUtf16(kCGWindowBounds)]).value();
        QCOMPARE(realNumber(bounds[u"Width"_s]), 320.0);
        QCOMPARE(realNumber(bounds[u"Height"_s]), 240.0);
        QVERIFY(realNumber(bounds[u"X"_s]) && realNumber(bounds[u"Y"_s]));
        QCOMPARE(m_platform->quartz()
                     .CGWindowListCopyWindowInfo(kCGWindowListOptionIncludingWindow, NoWindow)
                     .value(),
                 QVariantList());

        for (const auto &[front, back] : {std::pair(plain, other), std::pair(other, plain)}) {
            Accessibility &accessibility = m_platform->accessibility();
            const auto chosen = element(front);
            QCOMPARE(accessibility.AXUIElementSetAttributeValue(chosen, u"AXMain"_s, true),
                     kAXErrorSuccess);
            // Not every manager takes the request to raise a window without activating it.
            if (accessibility.AXUIElementPerformAction(chosen, u"AXRaise"_s) != kAXErrorSuccess)
                QVERIFY(owner(front)->activateWithOptions(0));
            QVERIFY(m_world->eventually([&, f = front, b = back] { return isInFrontOf(f, b); }));
        }
    }

    void elementsTellKindAndTitle_data()
    {
        using Kind = ContractWindowKind;
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<QVariant>("title");
        QTest::addColumn<QString>("subrole");
        QTest::newRow("standard") << Kind::Standard << QVariant(u"Tïtle ✓"_s)
                                  << u"AXStandardWindow"_s;
        QTest::newRow("dialog") << Kind::Dialog << QVariant(u"Question"_s) << u"AXDialog"_s;
        QTest::newRow("dock") << Kind::Dock << QVariant(u"Bar"_s) << u"AXUnknown"_s;
        QTest::newRow("no title") << Kind::Standard << QVariant() << u"AXStandardWindow"_s;
    }

    void elementsTellKindAndTitle()
    {
        QFETCH(const ContractWindowKind, kind);
        QFETCH(const QVariant, title);
        QFETCH(const QString, subrole);
        const bool isDock = kind == ContractWindowKind::Dock;
        const std::uint32_t window
            = m_world->open({.application = u"alpha"_s, .title = text(title), .kind = kind});
        m_open.append(window);
        QVERIFY(m_world->eventually([&] { return element(window) != nullptr; }));
        QCOMPARE(attribute(window, u"AXSubrole"_s), QVariant(subrole));
        QCOMPARE(attribute(window, u"AXTitle"_s), title);
        QCOMPARE(attribute(window, u"AXMinimized"_s), QVariant(false));
        QCOMPARE(attribute(window, u"AXFullScreen"_s), QVariant(false));
        QCOMPARE(attribute(window, u"AXNoSuchAttribute"_s), QVariant());
        const QVariantMap facts
            = m_platform->quartz()
                  .CGWindowListCopyWindowInfo(kCGWindowListOptionIncludingWindow, window)
                  ->first()
                  .toMap();
        QCOMPARE(signedNumber(facts[QString::fromUtf16(kCGWindowLayer)]) == 0, !isDock);
    }

    void elementsTellStates()
    {
        const auto minimized = open({.application = u"alpha"_s});
        const auto fullScreen = open({.application = u"alpha"_s});
        m_world->minimize(minimized);
        m_world->makeFullScreen(fullScreen);
        QVERIFY(m_world->eventually(
            [&] { return attribute(minimized, u"AXMinimized"_s) == QVariant(true); }));
        QVERIFY(m_world->eventually(
            [&] { return attribute(fullScreen, u"AXFullScreen"_s) == QVariant(true); }));
        QCOMPARE(attribute(minimized, u"AXFullScreen"_s), QVariant(false));
        QCOMPARE(attribute(fullScreen, u"AXMinimized"_s), QVariant(false));
        QVERIFY(m_server->windowsOn(m_row[0], 7).contains(minimized));
        QVERIFY(!m_server->windowsOn(m_row[0], 2).contains(minimized));
        QVERIFY(m_server->windowsOn(m_row[0], 2).contains(fullScreen));
        QCOMPARE(m_server->spacesOf(minimized), QList<quint64>{m_row[0]});
    }

    void elementsFailWithoutTheirWindow()
    {
        Accessibility &accessibility = m_platform->accessibility();
        const auto kept = open({.application = u"alpha"_s});
        const auto window = open({.application = u"alpha"_s, .title = u"Gone"_s});
        const AXUIElementRef gone = element(window);
        const AXUIElementRef nobody = accessibility.AXUIElementCreateApplication(NoProcess);
        QVERIFY(nobody);
        close(window);
        QVERIFY(m_world->eventually([&] { return m_server->spacesOf(window).isEmpty(); }));
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
            QVERIFY(m_server->getWindow(broken, &number) != kAXErrorSuccess);
            QCOMPARE(number, 7u);
        }
        QCOMPARE(accessibility.AXUIElementSetMessagingTimeout(nullptr, 1), kAXErrorIllegalArgument);
        QCOMPARE(accessibility.AXUIElementSetMessagingTimeout(element(kept), 1), kAXErrorSuccess);
        QVERIFY(accessibility.AXUIElementPerformAction(element(kept), u"AXPress"_s)
                != kAXErrorSuccess);
        QVERIFY(accessibility.AXUIElementSetAttributeValue(element(kept), u"AXTitle"_s, u"x"_s)
                != kAXErrorSuccess);
    }

    void aTaggedSpaceReceivesWindows()
    {
        const std::int32_t connection = m_server->connection;
        const auto window = open({.application = u"alpha"_s});
        const auto minimized = open({.application = u"alpha"_s});
        const auto other = open({.application = u"alpha"_s});
        m_world->minimize(minimized);
        QVERIFY(m_world->eventually(
            [&] { return attribute(minimized, u"AXMinimized"_s) == QVariant(true); }));
        for (const auto moving : {window, minimized}) {
            QCOMPARE(ask(moving, m_row[3]), 0);
            QVERIFY(m_world->eventually(
                [&] { return m_server->spacesOf(moving) == QList<quint64>{m_row[3]}; }));
        }
        QCOMPARE(attribute(minimized, u"AXMinimized"_s), QVariant(true));
        QCOMPARE(m_server->shown(), m_row[0]);

        // A cleared tag, one never given, a space and a connection that do not exist.
        QVERIFY(m_server->setWorkspace(connection, &window, 1, Tag) != 0);
        QVERIFY(m_server->setWorkspace(connection, &window, 1, Tag + 1) != 0);
        QVERIFY(m_server->setTag(connection, 999999, Tag) != 0);
        QVERIFY(m_server->setWorkspace(connection + 1, &window, 1, Tag) != 0);
        // Clearing another space leaves the tag where it is.
        QCOMPARE(m_server->setTag(connection, m_row[1], Tag), 0);
        m_server->setTag(connection, m_row[2], 0);
        QCOMPARE(m_server->setWorkspace(connection, &window, 1, Tag), 0);
        QVERIFY(m_world->eventually(
            [&] { return m_server->spacesOf(window) == QList<quint64>{m_row[1]}; }));
        QCOMPARE(m_server->setTag(connection, m_row[1], 0), 0);
        QCOMPARE(m_server->spacesOf(other), QList<quint64>{m_row[0]});
    }

    void stepsShowTheNeighbourAndNotifyOnce()
    {
        int notifications = 0;
        auto subscription
            = m_platform->workspace().observeActiveSpaceDidChange([&] { ++notifications; });
        const auto arrives = [&](std::uint16_t key, int desktop) {
            notifications = 0;
            step(key);
            const bool arrived = m_world->eventually(
                [&] { return notifications > 0 && m_server->shown() == m_row[desktop]; });
            m_world->pass(0.3);
            return arrived && notifications == 1;
        };
        m_platform->quartz().CGWarpMouseCursorPosition({100, 100});
        QVERIFY(arrives(kVK_RightArrow, 1));
        QVERIFY(arrives(kVK_RightArrow, 2));
        QVERIFY(arrives(kVK_LeftArrow, 1));
        QVERIFY(arrives(kVK_LeftArrow, 0));
        notifications = 0;
        step(kVK_LeftArrow);
        m_world->pass(0.3);
        QCOMPARE(m_server->shown(), m_row[0]);
        QCOMPARE(notifications, 0);
        m_world->showDesktop(3);
        QVERIFY(m_world->eventually([&] { return notifications == 1; }));
        subscription.reset();
        m_world->showDesktop(1);
        QVERIFY(m_world->eventually([&] { return m_server->shown() == m_row[1]; }));
        m_world->pass(0.2);
        QCOMPARE(notifications, 1);
    }

    void activationKeepsToTheDockPreference()
    {
        const UserDefaults *dock
            = m_platform->userDefaults().initWithSuiteName(u"com.apple.dock"_s);
        const bool switches
            = !dock || dock->boolean(u"workspaces-auto-swoosh"_s) != std::optional(false);
        const auto stays = open({.application = u"alpha"_s});
        const auto away = open({.application = u"beta"_s, .desktop = 2});
        QVERIFY(owner(away)->activateWithOptions(0));
        if (switches) {
            QVERIFY(m_world->eventually([&] { return m_server->shown() == m_row[2]; }));
            QCOMPARE(m_server->spacesOf(away), QList<quint64>{m_row[2]});
        } else {
            m_world->pass(0.5);
            QCOMPARE(m_server->shown(), m_row[0]);
        }
        QCOMPARE(m_server->spacesOf(stays), QList<quint64>{m_row[0]});
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
        close(first);
        QVERIFY(m_world->eventually([&] { return m_server->spacesOf(first).isEmpty(); }));
        QVERIFY(!alpha->isTerminated());
        close(second);
        QVERIFY(m_world->eventually([&] { return workspace.runningApplications().isEmpty(); }));
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
        QVERIFY(m_world->eventually([&] { return elements(alpha).isEmpty(); }));
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
        QCOMPARE(quartz.CGDisplayBounds(number), QRectF(0, 0, 1280, 800));
        QVERIFY(!quartz.CGDisplayCreateUUIDFromDisplayID(number).value_or(QString()).isEmpty());
        QVERIFY(quartz.CGDisplayBounds(NoWindow).isEmpty());
        QVERIFY(!quartz.CGDisplayIsBuiltin(NoWindow));
        QVERIFY(!quartz.CGDisplayCreateUUIDFromDisplayID(NoWindow));
        for (const QPointF place : {QPointF(640, 400), QPointF(12, 34)}) {
            quartz.CGWarpMouseCursorPosition(place);
            const auto event = quartz.CGEventCreate();
            QVERIFY(event);
            QCOMPARE(event->location, place);
        }
    }

    void trustIsGiven()
    {
        Accessibility &accessibility = m_platform->accessibility();
        QVERIFY(accessibility.AXIsProcessTrusted());
        for (const bool prompt : {false, true}) {
            QVERIFY(accessibility.AXIsProcessTrustedWithOptions(
                {{QString::fromUtf16(kAXTrustedCheckOptionPrompt), prompt}}));
        }
        QVERIFY(!m_platform->application().hasVisibleWindow());
        QCOMPARE(m_platform->workspace().mainBundleIdentifier(), u"org.tovel.Tovel"_s);
    }

    void userDefaultsKeepKinds()
    {
        UserDefaults &defaults = m_platform->userDefaults().standardUserDefaults();
        const QVariantMap kinds{
            {u"boolean"_s, true},
            {u"integer"_s, 42},
            {u"real"_s, 0.25},
            {u"text"_s, u"1"_s},
            {u"bytes"_s, QByteArray("\0\xff", 2)},
            {u"array"_s, QVariantList{1, u"two"_s, false}},
            {u"dictionary"_s, QVariantMap{{u"key"_s, QByteArray("x")}, {u"on"_s, true}}}};
        for (const auto &[key, value] : kinds.asKeyValueRange()) {
            QVERIFY(defaults.setObject(key, value));
            const QVariant read = defaults.object(key).value();
            QCOMPARE(isNumber(read), isNumber(value));
            if (!isNumber(value))
                QCOMPARE(read, value);
        }
        QCOMPARE(signedNumber(*defaults.object(u"integer"_s)), 42);
        QCOMPARE(realNumber(*defaults.object(u"real"_s)), 0.25);
        QVERIFY(!defaults.boolean(u"integer"_s));
        QVERIFY(!defaults.text(u"boolean"_s));
        QVERIFY(!defaults.setObject(u"text"_s, QPointF(1, 2)));
        QCOMPARE(defaults.text(u"text"_s), u"1"_s);
        QVERIFY(defaults.removeObject(u"text"_s));
        QVERIFY(!defaults.object(u"text"_s));
        QVERIFY(!m_platform->userDefaults().initWithSuiteName(u"org.example.None"_s));
    }

    void timersKeepTheirOrder()
    {
        Clock &clock = m_platform->clock();
        const double start = clock.monotonicTime();
        QStringList fired;
        std::unique_ptr<Timer> fromWithin;
        const auto note = [&](const QString &name) { return [&fired, name] { fired += name; }; };
        const auto late = clock.startTimer(0.08, false, note(u"late"_s));
        const auto soon = clock.startTimer(0.02, false, note(u"soon"_s));
        const auto now = clock.startTimer(0, false, note(u"now"_s));
        const auto then = clock.startTimer(0, false, note(u"then"_s));
        auto dropped = clock.startTimer(0.01, false, note(u"dropped"_s));
        dropped.reset();
        fromWithin = clock.startTimer(0.04, false, [&] {
            fired += u"own"_s;
            fromWithin.reset();
        });
        QVERIFY(fired.isEmpty());
        QVERIFY(m_world->eventually([&] { return fired.size() == 5; }));
        QCOMPARE(fired, (QStringList{u"now"_s, u"then"_s, u"soon"_s, u"own"_s, u"late"_s}));
        QVERIFY(clock.monotonicTime() - start > 0.0799);
        m_world->pass(0.1);
        QCOMPARE(fired.size(), 5);

        fired.clear();
        auto repeating = clock.startTimer(0.02, true, note(u"beat"_s));
        QVERIFY(m_world->eventually([&] { return fired.size() == 3; }));
        repeating.reset();
        m_world->pass(0.1);
        QCOMPARE(fired.size(), 3);
    }

    void hotKeyHandlesAreHeldToOnce()
    {
        HotKeys &hotKeys = m_platform->hotKeys();
        QVERIFY(hotKeys.UnregisterEventHotKey(EventHotKeyRef{12345}) != noErr);
        const auto target = hotKeys.GetApplicationEventTarget();
        const auto first = hotKeys.RegisterEventHotKey(17, 0x1900, {1, 1}, target, 0);
        if (first.status != noErr)
            return;
        QVERIFY(hotKeys.RegisterEventHotKey(17, 0x1900, {1, 2}, target, 0).status != noErr);
        QCOMPARE(hotKeys.UnregisterEventHotKey(first.hotKey), noErr);
        QVERIFY(hotKeys.UnregisterEventHotKey(first.hotKey) != noErr);
    }

    void launchingAnswersLater()
    {
        Workspace &workspace = m_platform->workspace();
        QVERIFY(!workspace.URLForApplicationWithBundleIdentifier(u"org.example.None"_s));
        const QUrl nowhere(u"file:///nowhere/org.example.None.desktop"_s);
        QVERIFY(!workspace.localizedNameOfApplicationAtURL(nowhere));
        int calls = 0;
        std::optional<QString> answer;
        workspace.openApplicationAtURL(nowhere, [&](const std::optional<QString> &reason) {
            ++calls;
            answer = reason;
        });
        QCOMPARE(calls, 0);
        QVERIFY(m_world->eventually([&] { return calls > 0; }));
        QVERIFY(answer && !answer->isEmpty());
        QCOMPARE(calls, 1);
    }
};

QTEST_GUILESS_MAIN(ContractSuite)
#include "tst_contract.moc"
