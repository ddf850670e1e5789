#pragma once

#include "platform/platform.h"
#include "platform/simulated/mach_o_image.h"
#include "platform/simulated/memory_user_defaults.h"
#include "platform/simulated/simulated_world.h"
#include "platform/simulated/virtual_clock.h"

#include <QByteArray>
#include <QStringList>
#include <QVariantList>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tovel {

struct SimulatedState;
class SimulatedPlatform;

// What runs the simulation besides itself; null makes the desktop bring its own virtual clock and
// memory user defaults. Borrowed.
struct SimulatedDesktopOptions
{
    Clock *clock = nullptr;
    UserDefaultsDomains *userDefaults = nullptr;
};

// A desktop held in memory. platform() is the face that the program sees; everything else is the
// control face, for tests and the demo. The entry functions of the window server act on the desktop
// that was made last and still lives, so desktops must end in the reverse order of their making.
// An empty world to begin with: everything trusted, every symbol present.
//
//     SimulatedDesktop desktop;
//     desktop.addDisplay({.identifier = u"A"_s, .number = 1, .spaces = {{.id = 10}, {.id = 11}},
//                         .currentSpace = 10});
//     desktop.addApplication({.pid = 500, .bundleIdentifier = u"org.example.Notes"_s});
//     desktop.addWindow({.number = 101, .pid = 500, .spaces = {10}});
//     PlatformInstallation installation(desktop.platform());
class SimulatedDesktop final
{
public:
    // A reply of the window server: a list, or nothing.
    using Reply = std::optional<QVariantList>;

    explicit SimulatedDesktop(SimulatedDesktopOptions options = {});
    ~SimulatedDesktop();

    SimulatedDesktop(const SimulatedDesktop &) = delete;
    SimulatedDesktop &operator=(const SimulatedDesktop &) = delete;

    Platform &platform();

    // The desktop's own clock and user defaults; a programming error when others were given.
    VirtualClock &clock();
    MemoryUserDefaultsDomains &userDefaults();
    // The user defaults of "com.apple.dock", which exist and are empty to begin with.
    MemoryUserDefaults &dockDefaults();

    // The facts. References into it, and those returned below, stay good until what they refer to
    // is removed. A window, display or application that is asked for must exist.
    SimWorld &world();
    SimDisplay &addDisplay(SimDisplay display);
    SimDisplay &display(const QString &identifier);
    SimWindow &addWindow(SimWindow window); // behind those that are there
    SimWindow &window(std::uint32_t number);
    void removeWindow(std::uint32_t number);

    // Running applications, in the order in which they were added. No two have the same pid.
    SimApplication &addApplication(SimApplication application);
    SimApplication &application(std::int32_t pid);
    // The application ends and its windows go; handles of it stay, and are terminated. The pid may
    // be used again.
    void quit(std::int32_t pid);

    // Shows a space on its display and notifies, now.
    void showSpace(std::uint64_t space);
    // A notification without any change here, as when some other display changed.
    void postActiveSpaceDidChange();

    // Runs an action on the desktop's clock; dropped when the desktop ends first.
    void after(double seconds, std::function<void()> action);
    // Called at each request to move a window, before it has any effect.
    void onMoveRequested(std::function<void(std::uint32_t window, std::uint64_t space)> hook);

    // Changes what a call answers: the function gets the true reply. Calls that can be altered:
    // "SLSCopyManagedDisplaySpaces", "SLSCopySpacesForWindows",
    // "SLSCopyWindowsWithOptionsAndTags 7" and "… 2" (the options value), and
    // "CGWindowListCopyWindowInfo".
    void alterReply(const QByteArray &call, std::function<Reply(Reply)> alter);
    void replaceReply(const QByteArray &call, Reply reply);

    // Binding. The name is one that dlsym finds, or submitMoveSymbol() to leave the unexported
    // function out of the image. Images are those the loader lists: to begin with one that is not
    // the framework's and one that is.
    void dropSymbol(const QByteArray &name);
    static const char *submitMoveSymbol();
    static std::uint64_t submitMoveAddress();
    struct Image
    {
        QByteArray path;
        MachOImage image;
    };
    static QByteArray frameworkImagePath(); // contains "/SkyLight.framework/"
    void setImages(std::vector<Image> images);
    // Replaces the images by one framework image with the fault.
    void setFrameworkImage(MachOFault fault);

    // Hot keys. Modifiers are those of HotKeys. pressHotKey tells whether some handler took it.
    struct HotKey
    {
        std::uint32_t keyCode = 0;
        std::uint32_t modifiers = 0;
        std::uint32_t signature = 0;
        std::uint32_t id = 0;

        bool operator==(const HotKey &) const = default;
    };
    void takeHotKey(std::uint32_t keyCode, std::uint32_t modifiers); // another program's
    QList<HotKey> registeredHotKeys() const;
    bool pressHotKey(std::uint32_t keyCode, std::uint32_t modifiers);

    // Record of what was asked for, oldest first; take… empties it. Numbers are decimal, tags and
    // flags hexadecimal without prefix, coordinates rounded. The lines:
    //   "submit 101 12"                        window, space (operation path)
    //   "SLSSpaceSetCompatID 12 746f766c"      space, tag
    //   "SLSSetWindowListWorkspace 101 746f766c"
    //   "AXMain 101"  "AXRaise 101"            successful calls only
    //   "activate 500"                         refused requests too
    //   "post 0 down 124 840000"               tap, direction, key, flags; "up" likewise
    //   "warp 960 540"
    //   "prompt"  "settings"                   trust prompt shown, settings opened
    //   "open file:///apps/notes"
    //   "collectionBehavior 101 101"           window, behaviour; refused requests too
    //   "level 101 3"  "makeKeyAndOrderFront 101"   likewise
    //   "register 17 1900"  "unregister 17 1900"   hot keys, successful calls only
    QStringList takeJournal();
    // "dlopen PATH", "dlsym NAME", "class NAME", oldest first.
    QStringList takeLookups();
    // Element ids that remote tokens of the process asked for, oldest first.
    QList<std::uint64_t> takeProbes(std::int32_t pid);
    struct MessagingTimeout
    {
        std::int32_t pid = 0;
        std::uint32_t window = 0; // 0 for the application's element
        float seconds = 0;

        bool operator==(const MessagingTimeout &) const = default;
    };
    QList<MessagingTimeout> takeMessagingTimeouts();
    // How often an entry function, or CGWindowListCopyWindowInfo, was called.
    int calls(const QByteArray &name) const;
    // Recording is on to begin with; off, the records stay empty. For a desktop that runs for long.
    void setRecording(bool on);

private:
    std::unique_ptr<VirtualClock> m_clock;
    std::unique_ptr<MemoryUserDefaultsDomains> m_userDefaults;
    std::unique_ptr<SimulatedState> m_state;
    std::unique_ptr<SimulatedPlatform> m_platform;
    SimulatedState *m_previous = nullptr; // the active desktop before this one
};

} // namespace tovel
