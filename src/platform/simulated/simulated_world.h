#pragma once

#include "platform/accessibility.h"
#include "platform/workspace.h"

#include <QHash>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <functional>
#include <list>
#include <optional>

namespace tovel {

// The facts of a simulated desktop, as plain data that a test may change at any moment. A change
// of data notifies nobody; SimulatedDesktop has methods for changes that do.

struct SimSpace
{
    std::uint64_t id = 0;
    int type = 0; // 0 is a regular desktop, 4 a full-screen space
    std::optional<QString> uuid{};
};

struct SimDisplay
{
    QString identifier{}; // "Display Identifier"
    QString uuid{}; // what CGDisplayCreateUUIDFromDisplayID answers; the identifier when empty
    std::optional<std::uint32_t> number{}; // NSScreenNumber; without one the display has no bounds
    bool hasScreen = true; // whether screens() lists it
    bool builtIn = false;
    QRectF bounds{};
    QString name{};
    QList<SimSpace> spaces{};
    std::uint64_t currentSpace = 0; // 0 leaves "Current Space" out
};

enum class SimActivation {
    Switches, // comes to the front and shows a desktop with its window
    Stays, // accepted, without effect
    Refused, // activateWithOptions answers false
};

struct SimApplication
{
    std::int32_t pid = 0; // its identity, as long as it runs
    std::optional<QString> bundleIdentifier{};
    std::optional<QString> name{};
    std::optional<NSImage> icon{};
    NSApplicationActivationPolicy policy = NSApplicationActivationPolicy::Regular;
    bool hidden = false;
    std::optional<QDateTime> launchDate{};
    SimActivation activation = SimActivation::Switches;
    double activationDelay = 0; // seconds from the request to its effect

    // Window numbers behind "AXMainWindow" and "AXFocusedWindow", which may be windows that
    // "AXWindows" does not list. Setting "AXMain" of a window changes mainWindow.
    std::optional<std::uint32_t> mainWindow{};
    std::optional<std::uint32_t> focusedWindow{};

    QHash<QString, AXAttributeValue> attributes{}; // answers that replace the true ones
};

enum class SimMove {
    Arrives,
    Never, // the request is accepted and nothing happens
    Elsewhere, // arrives on SimWindow::elsewhere instead
};

struct SimWindow
{
    std::uint32_t number = 0; // its identity, as long as it is there
    std::int32_t pid = 0;
    std::optional<QString> title{};
    std::optional<QString> subrole = QStringLiteral("AXStandardWindow");
    bool minimized = false;
    bool fullScreen = false;
    QList<std::uint64_t> spaces{}; // none, one, or several
    QRectF frame = QRectF(100, 100, 640, 480);
    int layer = 0;
    bool orderedIn = true;
    std::int32_t orderedInStatus = 0; // not 0: SLSWindowIsOrderedIn fails with it

    bool listed = true; // whether "AXWindows" has it
    std::optional<std::uint64_t> remoteElement{}; // element id under which a remote token finds it
    // What _AXUIElementGetWindow says of its element instead of number; 0 makes the call fail.
    std::optional<std::uint32_t> elementNumber{};
    std::optional<AXProcessIdentifier> elementPid{}; // replaces AXUIElementGetPid's answer
    QHash<QString, AXAttributeValue> attributes{}; // answers that replace the true ones

    // What becomes of a request to move it. A full-screen window never moves.
    SimMove move = SimMove::Arrives;
    double moveDelay = 0; // seconds from the request to the arrival; 0 arrives within the call
    std::uint64_t elsewhere = 0;
};

struct SimInstalledApplication
{
    QString bundleIdentifier{};
    QUrl location{};
    double launchDelay = 0; // seconds from the request to the outcome
    std::optional<QString> launchFailure{}; // the reason; without one the application starts
    SimApplication application{}; // what then runs; pid 0 takes a free one
    QList<SimWindow> windows{}; // what it opens; number 0 takes a free one, pid is set
};

enum class SimOperationClass { Present, Absent, WithoutInitialiser, GivesNull };

struct SimWorld
{
    std::list<SimDisplay> displays{}; // in the window server's order, which is also the screens'
    std::list<SimWindow> windows{}; // front to back
    QList<SimInstalledApplication> installed{};
    QString mainBundleIdentifier = QStringLiteral("org.tovel.Tovel");
    bool trusted = true;
    QPointF cursor{};

    // Binding. Symbols are dropped by SimulatedDesktop::dropSymbol.
    bool frameworkPresent = true; // false makes dlopen answer null
    SimOperationClass operationClass = SimOperationClass::Present;
    std::int32_t connection = 71; // entries answer failure for any other connection

    // Statuses that the fallback move calls answer; one that is not 0 has no effect on the world.
    std::int32_t setCompatStatus = 0;
    std::int32_t setWorkspaceStatus = 0;
    std::int32_t clearCompatStatus = 0;

    // Keyboard steps between desktops.
    bool stepsEnabled = true;
    double stepDelay = 0.1; // seconds from the key press to the change
    bool eventSourceFails = false;
    bool keyDownEventFails = false;
    bool keyUpEventFails = false;
    bool emptyEventFails = false;

    double probeCost = 0; // seconds that each use of a remote token takes; virtual clock only
    std::int32_t installHandlerStatus = 0; // not noErr: InstallEventHandler fails with it
    std::int32_t registerStatus = 0; // not noErr: RegisterEventHotKey fails with it
    std::int32_t unregisterStatus = 0; // not noErr: UnregisterEventHotKey fails with it
};

} // namespace tovel
