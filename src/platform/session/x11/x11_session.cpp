#include "platform/session/x11/x11_session.h"

#include "platform/session/built_in_screens.h"
#include "platform/session/workspace_names.h"
#include "platform/session/x11/connection.h"
#include "platform/session/x11/key_grabs.h"
#include "platform/session/x11/manager_traits.h"
#include "platform/session/x11/window_mirror.h"

#include <QAbstractEventDispatcher>

#include <algorithm>
#include <array>

namespace tovel::x11 {

namespace {

// EWMH source indication of a pager, whose requests managers carry out like the user's own.
constexpr std::uint32_t PagerSource = 2;

constexpr std::uint32_t StackAbove = 0;

// Of _NET_WM_STATE messages.
constexpr std::uint32_t RemoveState = 0;
constexpr std::uint32_t AddState = 1;

// Workspace ids start at 1: 0 stands for none everywhere else.
std::uint64_t workspaceOf(const RootState &root, std::uint32_t desktop)
{
    return (std::uint64_t(root.desktopGeneration) << 32) + desktop + 1;
}

// Nothing for a workspace that is not there, or not for sure the one that it was.
std::optional<std::uint32_t> desktopOf(const RootState &root, std::uint64_t workspace)
{
    const std::uint64_t desktop = workspace - workspaceOf(root, 0);
    if (desktop >= root.desktopCount)
        return std::nullopt;
    return static_cast<std::uint32_t>(desktop);
}

} // namespace

std::unique_ptr<X11Session> X11Session::open(const QByteArray &display)
{
    auto connection = Connection::open(display);
    if (!connection)
        return nullptr;
    return std::unique_ptr<X11Session>(new X11Session(std::move(connection)));
}

X11Session::X11Session(std::unique_ptr<Connection> connection)
    : m_connection(std::move(connection))
    , m_mirror(std::make_unique<WindowMirror>(*m_connection))
    , m_keyGrabs(std::make_unique<KeyGrabs>(*m_connection))
{ }

X11Session::~X11Session() = default;

void X11Session::invalidate() { m_isStale = true; }

WindowMirror &X11Session::current()
{
    if (std::exchange(m_isStale, false)) {
        m_mirror->update();
        // Told from the event loop, never from within a call that reads.
        if (m_shownWorkspaceHandler && shownWorkspaceChanged()) {
            QMetaObject::invokeMethod(
                &m_context, [this] { noticeShownWorkspace(); }, Qt::QueuedConnection);
        }
    }
    return *m_mirror;
}

std::uint64_t X11Session::revision() { return current().revision(); }

// EWMH knows no version of a manager.
QString X11Session::name() { return hasManager() ? m_mirror->root().managerName : QString(); }

bool X11Session::hasManager() { return current().root().hasManager && m_connection->isAlive(); }

bool X11Session::isControllable()
{
    using enum Name;
    const RootState &root = current().root();
    if (!hasManager() || renumbersDesktops(root.managerName))
        return false;
    const auto names
        = {NetClientList, NetNumberOfDesktops, NetCurrentDesktop, NetWmDesktop, NetActiveWindow};
    return std::ranges::all_of(names, [this](Name name) { return supports(name); });
}

SessionCapabilities X11Session::capabilities()
{
    SessionCapabilities can;
    can.above = supports(Name::NetWmStateAbove);
    can.activationShowsWorkspace
        = hasManager() && activationShowsDesktop(m_mirror->root().managerName);
    return can;
}

bool X11Session::supports(Name name)
{
    return current().root().supported.contains(m_connection->atom(name));
}

QList<SessionScreen> X11Session::screens()
{
    QList<SessionScreen> screens;
    for (const Monitor &monitor : current().monitors()) {
        const SessionScreen screen{monitor.id, monitor.name, monitor.bounds,
                                   isBuiltInScreen(monitor.name)};
        if (monitor.primary)
            screens.prepend(screen);
        else
            screens.append(screen);
    }
    return screens;
}

QList<SessionOutput> X11Session::outputs()
{
    const RootState &root = current().root();
    // The properties of the root window outlive the manager that set them.
    if (!hasManager() || root.desktopCount == 0)
        return {};
    const QStringList names = chosenNames(root.desktopNames);
    SessionOutput output;
    // All that stays with a desktop from one run to the next is its number.
    for (std::uint32_t desktop = 0; desktop < root.desktopCount; ++desktop) {
        output.workspaces.append({.id = workspaceOf(root, desktop),
                                  .uuid = QString::number(desktop + 1),
                                  .name = names.value(desktop)});
    }
    if (root.hasCurrentDesktop && root.currentDesktop < root.desktopCount)
        output.shown = workspaceOf(root, root.currentDesktop);
    return {output};
}

const QList<SessionWindow> &X11Session::windows()
{
    const WindowMirror &mirror = current();
    if (std::exchange(m_listedRevision, mirror.revision()) == mirror.revision())
        return m_windows;
    m_windows.clear();
    for (const Window id : mirror.clients()) {
        const MirroredWindow &mirrored = *mirror.window(id);
        SessionWindow window = mirrored.window;
        if (mirrored.desktop == AllDesktops) {
            for (std::uint32_t desktop = 0; desktop < mirror.root().desktopCount; ++desktop)
                window.workspaces.append(workspaceOf(mirror.root(), desktop));
        } else if (mirrored.desktop) {
            window.workspaces.append(workspaceOf(mirror.root(), *mirrored.desktop));
        }
        m_windows.append(window);
    }
    return m_windows;
}

QList<std::uint32_t> X11Session::stackingOrder()
{
    const auto &bottomToTop = current().stacking();
    return QList<std::uint32_t>(bottomToTop.rbegin(), bottomToTop.rend());
}

std::uint32_t X11Session::activeWindow() { return current().root().activeWindow; }

bool X11Session::moveWindow(std::uint32_t window, std::uint64_t workspace)
{
    const WindowMirror &mirror = current();
    const MirroredWindow *mirrored = mirror.window(window);
    // A request would take a window off all desktops that its user put there.
    if (!mirrored || mirrored->desktop == AllDesktops)
        return false;
    const auto desktop = desktopOf(mirror.root(), workspace);
    if (!desktop)
        return false;
    m_isStale = true;
    return m_connection->sendToManager(window, m_connection->atom(Name::NetWmDesktop),
                                       {*desktop, PagerSource, 0, 0, 0});
}

bool X11Session::showWorkspace(std::uint64_t workspace)
{
    const auto desktop = desktopOf(current().root(), workspace);
    if (!desktop)
        return false;
    const std::uint32_t time = m_connection->serverTime();
    m_isStale = true;
    return m_connection->sendToManager(m_connection->root(),
                                       m_connection->atom(Name::NetCurrentDesktop),
                                       {*desktop, time, 0, 0, 0});
}

bool X11Session::activateWindow(std::uint32_t window)
{
    if (!current().window(window) && !exists(window))
        return false;
    // Managers that guard against focus stealing only believe a time of the server's own.
    const std::uint32_t time = m_connection->serverTime();
    m_isStale = true;
    return m_connection->sendToManager(window, m_connection->atom(Name::NetActiveWindow),
                                       {PagerSource, time, 0, 0, 0});
}

bool X11Session::raiseWindow(std::uint32_t window)
{
    const WindowMirror &mirror = current();
    if (!mirror.window(window) || !supports(Name::NetRestackWindow))
        return false;
    m_isStale = true;
    return m_connection->sendToManager(window, m_connection->atom(Name::NetRestackWindow),
                                       {PagerSource, 0, StackAbove, 0, 0});
}

// One that was just shown is listed a little later.
std::uint32_t X11Session::ownWindow(const SessionOwnWindow &window)
{
    return window.x11Window != 0 && exists(window.x11Window) ? window.x11Window : 0;
}

bool X11Session::exists(std::uint32_t window)
{
    const std::array windows{window};
    return m_connection->readFacts(windows).front().exists;
}

bool X11Session::setOnAllWorkspaces(std::uint32_t window, bool on)
{
    const RootState &root = current().root();
    if (!exists(window) || (!on && !root.hasCurrentDesktop))
        return false;
    const std::uint32_t desktop = on ? AllDesktops : root.currentDesktop;
    m_isStale = true;
    return m_connection->sendToManager(window, m_connection->atom(Name::NetWmDesktop),
                                       {desktop, PagerSource, 0, 0, 0});
}

bool X11Session::setAbove(std::uint32_t window, bool on)
{
    if (!exists(window))
        return false;
    m_isStale = true;
    return m_connection->sendToManager(window, m_connection->atom(Name::NetWmState),
                                       {on ? AddState : RemoveState,
                                        m_connection->atom(Name::NetWmStateAbove), 0, PagerSource,
                                        0});
}

std::optional<QPointF> X11Session::cursorPosition() { return m_connection->cursorPosition(); }

void X11Session::moveCursor(QPointF position) { m_connection->moveCursor(position); }

KeyGrab X11Session::grabKey(const SessionKey &key) { return m_keyGrabs->grab(key); }

void X11Session::releaseKey(const SessionKey &key) { m_keyGrabs->release(key); }

void X11Session::setKeyHandler(std::function<void(const SessionKey &key)> handler)
{
    m_keyHandler = std::move(handler);
    listen();
}

QStringList X11Session::limits()
{
    QStringList limits;
    const auto &monitors = current().monitors();
    const bool isNested = std::any_of(monitors.begin(), monitors.end(), [](const Monitor &it) {
        return it.name.startsWith(u"XWAYLAND");
    });
    if (isNested || qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) {
        limits.append(QStringLiteral("This is a Wayland session: only windows of X11 programs can "
                                     "be seen and moved, and the keyboard shortcut works only "
                                     "while one of them has the keyboard."));
    }
    const RootState &root = m_mirror->root();
    if (hasManager() && renumbersDesktops(root.managerName)) {
        limits.append(QStringLiteral("%1 gives its workspaces new numbers as they come and go: "
                                     "Tovel works with it by its socket alone, which is not there "
                                     "or does not answer.")
                          .arg(root.managerName));
    } else if (m_connection->isAlive() && !isControllable()) {
        limits.append(QStringLiteral("No window manager that can move windows between desktops is "
                                     "running: start one that follows the Extended Window Manager "
                                     "Hints."));
    }
    if (root.hasMoreClients) {
        limits.append(QStringLiteral("There are more than %1 windows: Tovel knows the oldest %1.")
                          .arg(MaximumClients));
    }
    if (root.hasMoreDesktops) {
        limits.append(QStringLiteral("There are more than %1 desktops: Tovel knows the first %1.")
                          .arg(MaximumDesktops));
    }
    return limits;
}

void X11Session::setShownWorkspaceHandler(std::function<void()> handler)
{
    m_shownWorkspaceHandler = std::move(handler);
    if (current().root().hasCurrentDesktop)
        m_notifiedDesktop = m_mirror->root().currentDesktop;
    listen();
}

void X11Session::listen()
{
    if (std::exchange(m_isListening, true))
        return;
    m_connection->setReadableHandler([this] {
        m_isStale = true;
        const bool isRootChanged = m_mirror->collectEvents();
        awaitKeys();
        if (isRootChanged)
            noticeShownWorkspace();
    });
    // Whatever was read before the event loop turned belongs to the past.
    if (auto *dispatcher = QAbstractEventDispatcher::instance()) {
        const auto turn = [this] {
            m_isStale = true;
            // An event that came along with an answer was read with it: the socket wakes nobody.
            if (m_connection->isAlive() && m_mirror->collectEvents()) {
                QMetaObject::invokeMethod(
                    &m_context, [this] { noticeShownWorkspace(); }, Qt::QueuedConnection);
            }
            awaitKeys();
        };
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, &m_context, turn);
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, &m_context, turn);
    }
}

bool X11Session::shownWorkspaceChanged() const
{
    const RootState &root = m_mirror->root();
    return root.hasCurrentDesktop && m_notifiedDesktop != root.currentDesktop;
}

void X11Session::noticeShownWorkspace()
{
    current();
    if (!shownWorkspaceChanged())
        return;
    m_notifiedDesktop = m_mirror->root().currentDesktop;
    if (m_shownWorkspaceHandler)
        m_shownWorkspaceHandler();
}

void X11Session::awaitKeys()
{
    if (!m_connection->hasKeyEvents() || std::exchange(m_areKeysAwaited, true))
        return;
    QMetaObject::invokeMethod(
        &m_context, [this] { noticeKeys(); }, Qt::QueuedConnection);
}

void X11Session::noticeKeys()
{
    // Before the handler, which may let the event loop turn.
    m_areKeysAwaited = false;
    for (const SessionKey &key : m_keyGrabs->takePresses()) {
        if (m_keyHandler)
            m_keyHandler(key);
    }
}

QByteArray X11Session::managerSocket()
{
    const std::array requests{
        PropertyRequest{m_connection->root(), m_connection->atom(Name::I3SocketPath), 1024}};
    return m_connection->readProperties(requests).front().bytes;
}

} // namespace tovel::x11
