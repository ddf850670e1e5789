#pragma once

#include "platform/session/desktop_session.h"
#include "platform/session/x11/properties.h"

#include <QByteArray>
#include <QRectF>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <utility>
#include <vector>

struct xcb_connection_t;
class QSocketNotifier;

namespace tovel::x11 {

// The atoms this driver uses, in the order of their names in connection.cpp.
enum class Name : std::size_t {
    NetSupported,
    NetSupportingWmCheck,
    NetNumberOfDesktops,
    NetCurrentDesktop,
    NetDesktopNames,
    NetClientList,
    NetClientListStacking,
    NetActiveWindow,
    NetRestackWindow,
    NetWmDesktop,
    NetWmState,
    NetWmStateAbove,
    NetWmStateHidden,
    NetWmStateFullscreen,
    NetWmStateSkipTaskbar,
    NetWmName,
    NetWmPid,
    NetWmWindowType,
    TypeDesktop,
    TypeDock,
    TypeToolbar,
    TypeMenu,
    TypeUtility,
    TypeSplash,
    TypeDialog,
    TypeDropdownMenu,
    TypePopupMenu,
    TypeTooltip,
    TypeNotification,
    TypeCombo,
    TypeDnd,
    TypeNormal,
    Utf8String,
    WmName,
    WmClass,
    WmTransientFor,
    WmClientMachine,
    GtkApplicationId,
    KdeDesktopFile,
    Timestamp,
    I3SocketPath,
    Count,
};

struct PropertyRequest
{
    Window window = 0;
    Atom atom = 0;
    std::uint32_t maximumLength = 0; // in 32-bit units
};

// What the core protocol and X-Resource know of a client window.
struct WindowFacts
{
    bool exists = false;
    QRectF frame; // in root coordinates
    std::int32_t process = 0; // of the client, 0 when it is not on this machine
};

struct Monitor
{
    std::uint32_t id = 0; // of its first output; never 0
    QString name;
    QRectF bounds;
    bool primary = false;
};

struct Event
{
    enum class Kind { PropertyChanged, FrameChanged, Destroyed, MonitorsChanged };

    Kind kind;
    Window window = 0;
    Atom atom = 0;
    std::uint32_t time = 0;
};

struct KeyEvent
{
    enum class Kind { Pressed, Released, KeyboardChanged };

    Kind kind;
    std::uint8_t keycode = 0;
    std::uint16_t modifiers = 0;
    std::uint32_t time = 0; // the server's, in milliseconds
};

// What the keys mean now, by the core protocol.
struct Keyboard
{
    std::uint8_t firstKeycode = 0;
    std::uint8_t lastKeycode = 0;
    std::vector<std::uint32_t> keysyms; // for each keycode equally many
    std::vector<std::uint8_t> modifierKeys; // for each of the eight modifiers equally many; 0: none

    bool operator==(const Keyboard &) const = default;
};

// One connection to an X server. Batches are pipelined: however long, each costs one wait. When
// the server goes away, everything answers empty and isAlive() says so; nothing throws or blocks.
class Connection final
{
public:
    // Null when the display cannot be reached, or does not answer within ten seconds. The display
    // name may be empty: the environment's.
    static std::unique_ptr<Connection> open(const QByteArray &display);
    // The server has carried out everything sent.
    ~Connection();

    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    bool isAlive() const;
    Window root() const { return m_root; }
    Atom atom(Name name) const { return m_atoms[static_cast<std::size_t>(name)]; }

    // Waits until the server has handled everything sent; every event that happened before is
    // then in the queue.
    void synchronize();

    std::vector<Property> readProperties(std::span<const PropertyRequest> requests);
    std::vector<WindowFacts> readFacts(std::span<const Window> windows);
    std::vector<Monitor> readMonitors();

    // Asks for events of property changes, geometry changes and destruction. The window may be
    // gone already.
    void watch(Window window);

    // The events that have arrived, oldest first. Does not wait.
    std::vector<Event> takeEvents();

    // Events of the keyboard among those taken so far, oldest first. Only for grabbed keys, but for
    // changes of the keyboard itself.
    std::vector<KeyEvent> takeKeyEvents() { return std::exchange(m_keyEvents, {}); }
    bool hasKeyEvents() const { return !m_keyEvents.empty(); }

    // Empty when the server is gone.
    Keyboard readKeyboard();

    // Takes a key in each of the states of the modifiers, or in none. The key has to exist. Another
    // program can have what is given up by the time a call returns.
    KeyGrab grabKey(std::uint8_t keycode, std::span<const std::uint16_t> states);
    void ungrabKey(std::uint8_t keycode, std::span<const std::uint16_t> states);

    // Called from the event loop when there may be events to take, and when the server is gone.
    void setReadableHandler(std::function<void()> handler);

    // A client message to the root window, as EWMH asks for requests to the manager.
    bool sendToManager(Window window, Atom message, const std::array<std::uint32_t, 5> &data);

    // The server's current time, from a property change of our own; 0 when it is gone.
    std::uint32_t serverTime();

    std::optional<QPointF> cursorPosition();
    void moveCursor(QPointF position);

private:
    explicit Connection(xcb_connection_t *connection);

    bool setUp(int screen);

    xcb_connection_t *m_connection;
    Window m_root = 0;
    QRectF m_rootBounds;
    Window m_ownWindow = 0;
    bool m_hasResources = false;
    bool m_hasMonitors = false;
    std::uint8_t m_randrEvents = 0;
    std::array<Atom, static_cast<std::size_t>(Name::Count)> m_atoms{};
    bool m_hasRequests = false; // that the server has perhaps not read
    std::vector<Event> m_pending;
    std::vector<KeyEvent> m_keyEvents;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::function<void()> m_readableHandler;
};

} // namespace tovel::x11
