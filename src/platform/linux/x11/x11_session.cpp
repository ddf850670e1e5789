#include "platform/linux/x11/x11_session.h"

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/key_grabs.h"
#include "platform/linux/x11/manager_traits.h"
#include "platform/linux/x11/window_mirror.h"

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
std::uint64_t workspaceOf(std::uint32_t desktop) { return std::uint64_t(desktop) + 1; }

std::uint32_t desktopOf(std::uint64_t workspace)
{
    return static_cast<std::uint32_t>(workspace - 1);
}

bool isBuiltIn(const QString &output)
{
    for (const auto *prefix : {"eDP", "LVDS", "DSI"}) {
        if (output.startsWith(QLatin1StringView(prefix)))
            return true;
    }
    return false;
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

bool X11Session::hasManager() { return current().root().hasManager && m_connection->isAlive(); }

bool X11Session::isControllable()
{
    using enum Name;
    const RootState &root = current().root();
    if (!hasManager())
        return false;
    const auto supports
        = [&](Name name) { return root.supported.contains(m_connection->atom(name)); };
    return supports(NetClientList) && supports(NetNumberOfDesktops) && supports(NetCurrentDesktop)
        && supports(NetWmDesktop) && supports(NetActiveWindow);
}

QList<SessionScreen> X11Session::screens()
{
    QList<SessionScreen> screens;
    for (const Monitor &monitor : current().monitors()) {
        const SessionScreen screen{monitor.id, monitor.name, monitor.bounds,
                                   isBuiltIn(monitor.name)};
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
    if (!m_connection->isAlive() || root.desktopCount == 0)
        return {};
    SessionOutput output;
    output.identifier = QStringLiteral("Main");
    for (std::uint32_t desktop = 0; desktop < root.desktopCount; ++desktop)
        output.workspaces.append({workspaceOf(desktop), true});
    if (root.hasCurrentDesktop && root.currentDesktop < root.desktopCount)
        output.shown = workspaceOf(root.currentDesktop);
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
                window.workspaces.append(workspaceOf(desktop));
        } else if (mirrored.desktop) {
            window.workspaces.append(workspaceOf(*mirrored.desktop));
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
    if (workspace == 0 || workspace > mirror.root().desktopCount)
        return false;
    m_isStale = true;
    return m_connection->sendToManager(window, m_connection->atom(Name::NetWmDesktop),
                                       {desktopOf(workspace), PagerSource, 0, 0, 0});
}

bool X11Session::showWorkspace(std::uint64_t workspace)
{
    if (workspace == 0 || workspace > current().root().desktopCount)
        return false;
    const std::uint32_t time = m_connection->serverTime();
    m_isStale = true;
    return m_connection->sendToManager(m_connection->root(),
                                       m_connection->atom(Name::NetCurrentDesktop),
                                       {desktopOf(workspace), time, 0, 0, 0});
}

bool X11Session::activateWindow(std::uint32_t window)
{
    // A window that was just shown is listed a little later.
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
    const Atom restack = m_connection->atom(Name::NetRestackWindow);
    if (!mirror.window(window) || !mirror.root().supported.contains(restack))
        return false;
    m_isStale = true;
    return m_connection->sendToManager(window, restack, {PagerSource, 0, StackAbove, 0, 0});
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

bool X11Session::activationShowsWorkspace()
{
    const RootState &root = current().root();
    return root.hasManager && activationShowsDesktop(root.managerName);
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
    if (m_connection->isAlive() && !isControllable()) {
        limits.append(QStringLiteral("No window manager that can move windows between desktops is "
                                     "running."));
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

std::uint64_t X11Session::roundTrips() const { return m_connection->roundTrips(); }

} // namespace tovel::x11
