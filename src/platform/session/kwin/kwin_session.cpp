#include "platform/session/kwin/kwin_session.h"

#include "platform/session/kwin/compositor.h"
#include "platform/session/kwin/kwin_service.h"
#include "platform/session/kwin/shortcuts.h"
#include "platform/session/workspace_names.h"

#include <QAbstractEventDispatcher>
#include <QFile>

#include <algorithm>

namespace tovel::kwin {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// KWin answers nobody while it starts, or reads a new client's program.
constexpr auto OpeningPatience = 5s;
constexpr auto Patience = 2s;
constexpr auto AttemptInterval = 1s;
constexpr auto RefusalInterval = 3s;

// Of Plasma, whose panels, desktop and notifications are windows like any other.
bool isShell(const QString &application)
{
    static const QStringList shells{u"plasmashell"_s, u"org.kde.plasmashell"_s, u"krunner"_s,
                                    u"org.kde.krunner"_s};
    return shells.contains(application);
}

// KWin tells no types.
WindowKind kindOf(const Window &window)
{
    if (window.parent != 0)
        return WindowKind::Dialog;
    if (window.isOnAllDesktops() && (window.skipsTaskBar() || isShell(window.application)))
        return WindowKind::Dock;
    return window.skipsTaskBar() ? WindowKind::Overlay : WindowKind::Standard;
}

// KWin tells windows of the same title apart by a number at its end.
bool isTitled(const Window &window, const QString &title)
{
    return window.title == title || window.title.startsWith(title + u" <"_s);
}

} // namespace

std::unique_ptr<KWinSession> KWinSession::open(const QByteArray &socket, const QDBusConnection &bus)
{
    std::unique_ptr<KWinSession> session(new KWinSession(socket, bus));
    session->m_compositor = Compositor::open(socket, *session->m_identities);
    const bool isKWin = session->m_compositor && session->m_compositor->update(OpeningPatience)
        && session->m_compositor->desktops();
    if (!isKWin)
        return nullptr;
    session->m_nextAttempt.setRemainingTime(RefusalInterval);
    session->askForShown();
    return session;
}

KWinSession::KWinSession(const QByteArray &socket, const QDBusConnection &bus)
    : m_socket(socket)
    , m_identities(std::make_unique<Identities>())
    , m_calls(bus)
    , m_service(std::make_unique<KWinService>(m_calls))
{ }

KWinSession::~KWinSession() = default;

void KWinSession::invalidate() { m_isStale = true; }

bool KWinSession::refresh()
{
    if (std::exchange(m_isStale, false)) {
        const bool isAnswering = update();
        if (std::exchange(m_isAnswering, isAnswering) != isAnswering)
            ++m_identities->changes;
    }
    return m_isAnswering;
}

bool KWinSession::update()
{
    if (!m_compositor && !connect())
        return false;
    if (!m_compositor->update(Patience)) {
        if (!m_compositor->connection().isAlive())
            disconnect();
        return false;
    }
    if (!m_compositor->desktops())
        return false;
    if (!m_compositor->windows())
        askForPermission();
    askForShown();
    // Told from the event loop, never from within a call that reads.
    if (m_shownWorkspaceHandler && m_notified != m_compositor->desktops()->shown()) {
        QMetaObject::invokeMethod(
            &m_context, [this] { notice(); }, Qt::QueuedConnection);
    }
    return true;
}

// It has not answered yet when this returns: a compositor that is starting takes its time.
bool KWinSession::connect()
{
    if (!m_nextAttempt.hasExpired())
        return false;
    m_nextAttempt.setRemainingTime(AttemptInterval);
    m_compositor = Compositor::open(m_socket, *m_identities);
    if (!m_compositor)
        return false;
    m_service->forgetInformation();
    m_calls.expectAnswers();
    m_compositor->connection().settle(0ms);
    watch();
    return true;
}

void KWinSession::disconnect()
{
    m_compositor.reset();
    if (m_isListening)
        m_attempts.start(AttemptInterval);
}

void KWinSession::attempt()
{
    m_isStale = true;
    notice();
    if (!m_compositor)
        disconnect();
}

// A desktop file that was installed meanwhile counts for new connections alone.
void KWinSession::askForPermission()
{
    if (!m_nextAttempt.hasExpired())
        return;
    m_nextAttempt.setRemainingTime(RefusalInterval);
    auto next = Compositor::open(m_socket, *m_identities);
    if (!next || !next->update(Patience) || !next->desktops() || !next->windows())
        return;
    m_compositor = std::move(next);
    ++m_identities->changes;
    watch();
}

// KWin says of each desktop that it shows next but where it removed the one that it had shown.
void KWinSession::askForShown()
{
    Desktops &desktops = *m_compositor->desktops();
    if (!desktops.contains(desktops.shown()))
        desktops.setShown(m_service->currentDesktop());
}

std::uint64_t KWinSession::revision()
{
    refresh();
    return m_identities->changes;
}

QString KWinSession::name()
{
    return refresh() ? u"KWin %1"_s.arg(m_service->supportInformation().version).trimmed()
                     : QString();
}

bool KWinSession::hasManager() { return refresh(); }

bool KWinSession::isControllable() { return refresh() && m_compositor->windows(); }

SessionCapabilities KWinSession::capabilities()
{
    SessionCapabilities can;
    // A script could read it, at the price of a file and three milliseconds; with one row of
    // desktops nobody needs it.
    can.cursor = CursorAccess::Hidden;
    can.globalKeys = m_calls.bus().isConnected();
    can.activationShowsWorkspace
        = refresh() && m_service->supportInformation().activationShowsDesktop;
    return can;
}

QList<SessionScreen> KWinSession::screens()
{
    return refresh() ? m_compositor->screens().list() : QList<SessionScreen>();
}

QList<SessionOutput> KWinSession::outputs()
{
    if (!refresh())
        return {};
    SessionOutput output;
    QStringList names;
    const auto desktops = m_compositor->desktops()->list();
    for (const Desktop &desktop : desktops)
        names.append(desktop.name);
    names = chosenNames(names);
    for (std::size_t i = 0; i < desktops.size(); ++i) {
        output.workspaces.append({.id = workspaceOf(desktops[i].uuid),
                                  .uuid = desktops[i].uuid,
                                  .name = names[static_cast<qsizetype>(i)]});
        if (desktops[i].uuid == m_compositor->desktops()->shown())
            output.shown = output.workspaces.last().id;
    }
    return {output};
}

std::uint64_t KWinSession::workspaceOf(const QString &uuid)
{
    auto &workspaces = m_identities->workspaces;
    const auto known = workspaces.constFind(uuid);
    if (known != workspaces.cend())
        return *known;
    return *workspaces.insert(uuid, static_cast<std::uint64_t>(workspaces.size()) + 1);
}

// Empty for a workspace that is not there.
QString KWinSession::uuidOf(std::uint64_t workspace)
{
    const QString uuid = m_identities->workspaces.key(workspace);
    return refresh() && m_compositor->desktops()->contains(uuid) ? uuid : QString();
}

const QList<SessionWindow> &KWinSession::windows()
{
    const bool isControllable = this->isControllable();
    if (std::exchange(m_listedRevision, m_identities->changes) == m_identities->changes)
        return m_windows;
    m_windows.clear();
    if (isControllable) {
        for (const Window *window : m_compositor->windows()->list())
            m_windows.append(describe(*window));
    }
    return m_windows;
}

SessionWindow KWinSession::describe(const Window &window)
{
    SessionWindow described{.id = window.id,
                            .kind = kindOf(window),
                            .minimized = window.isMinimized(),
                            .fullScreen = window.isFullScreen(),
                            .skipsTaskBar = window.skipsTaskBar(),
                            .frame = window.frame,
                            .transientFor = window.parent,
                            .process = window.process,
                            .appId = window.application};
    if (!window.title.isEmpty())
        described.title = window.title;
    for (const Desktop &desktop : m_compositor->desktops()->list()) {
        if (window.isOnAllDesktops() || window.desktops.contains(desktop.uuid))
            described.workspaces.append(workspaceOf(desktop.uuid));
    }
    return described;
}

QList<std::uint32_t> KWinSession::stackingOrder()
{
    if (!isControllable())
        return {};
    const auto order = m_compositor->windows()->stackingOrder();
    return QList<std::uint32_t>(order.begin(), order.end());
}

std::uint32_t KWinSession::activeWindow()
{
    if (!isControllable())
        return 0;
    for (const Window *window : m_compositor->windows()->list()) {
        if (window->isActive())
            return window->id;
    }
    return 0;
}

// Null for one that is not there.
const Window *KWinSession::find(std::uint32_t window)
{
    return isControllable() ? m_compositor->windows()->find(window) : nullptr;
}

bool KWinSession::moveWindow(std::uint32_t window, std::uint64_t workspace)
{
    const QString target = uuidOf(workspace);
    const Window *found = find(window);
    // A window on all desktops would go off them.
    if (!found || target.isEmpty() || found->isOnAllDesktops())
        return false;
    // Without a desktop in between it would be on all.
    m_compositor->windows()->enterDesktop(window, target);
    for (const QString &desktop : found->desktops) {
        if (desktop != target)
            m_compositor->windows()->leaveDesktop(window, desktop);
    }
    m_isStale = true;
    return true;
}

bool KWinSession::showWorkspace(std::uint64_t workspace)
{
    const QString uuid = uuidOf(workspace);
    m_isStale = true;
    return !uuid.isEmpty() && m_compositor->desktops()->show(uuid);
}

bool KWinSession::activateWindow(std::uint32_t window)
{
    if (!find(window))
        return false;
    m_compositor->windows()->activate(window);
    m_isStale = true;
    return true;
}

// KWin raises a window by activating it.
bool KWinSession::raiseWindow(std::uint32_t) { return false; }

std::uint32_t KWinSession::ownWindow(const SessionOwnWindow &window)
{
    std::uint32_t last = 0;
    if (!isControllable())
        return last;
    for (const Window *candidate : m_compositor->windows()->list()) {
        // KWin 6 tells of a window before its first picture gives it a frame. What is asked of it
        // then makes it as small as it may be.
        if (candidate->process == window.process && isTitled(*candidate, window.title)
            && !candidate->frame.isEmpty())
            last = candidate->id;
    }
    return last;
}

bool KWinSession::setOnAllWorkspaces(std::uint32_t window, bool on)
{
    const Window *found = find(window);
    if (!found)
        return false;
    if (on) {
        for (const QString &desktop : found->desktops)
            m_compositor->windows()->leaveDesktop(window, desktop);
    } else if (found->isOnAllDesktops()) {
        m_compositor->windows()->enterDesktop(window, m_compositor->desktops()->shown());
    }
    m_isStale = true;
    return true;
}

bool KWinSession::setAbove(std::uint32_t window, bool on)
{
    if (!find(window))
        return false;
    m_compositor->windows()->setAbove(window, on);
    m_isStale = true;
    return true;
}

std::optional<QPointF> KWinSession::cursorPosition() { return std::nullopt; }

void KWinSession::moveCursor(QPointF) { }

KeyGrab KWinSession::grabKey(const SessionKey &key) { return shortcuts().grab(key); }

void KWinSession::releaseKey(const SessionKey &key) { shortcuts().release(key); }

void KWinSession::setKeyHandler(std::function<void(const SessionKey &key)> handler)
{
    m_keyHandler = std::move(handler);
    listen();
}

Shortcuts &KWinSession::shortcuts()
{
    if (!m_shortcuts) {
        m_shortcuts = std::make_unique<Shortcuts>(m_calls);
        m_shortcuts->setHandler([this](const SessionKey &key) {
            if (m_keyHandler)
                m_keyHandler(key);
        });
    }
    if (refresh())
        m_shortcuts->setKeymap(m_compositor->keymap());
    return *m_shortcuts;
}

QStringList KWinSession::limits()
{
    if (!refresh())
        return {m_compositor ? u"KWin does not answer."_s : u"KWin is gone."_s};
    if (!m_compositor->windows()) {
        return {u"KWin lets only those programs see windows that an installed desktop file names: "
                "install Tovel, so that one names %1."_s.arg(
                    QFile::symLinkTarget(u"/proc/self/exe"_s))};
    }
    if (m_compositor->windows()->hasMore()) {
        return {
            u"There are more than %1 windows: Tovel knows the oldest %1."_s.arg(MaximumWindows)};
    }
    return {};
}

void KWinSession::setShownWorkspaceHandler(std::function<void()> handler)
{
    m_shownWorkspaceHandler = std::move(handler);
    if (refresh())
        m_notified = m_compositor->desktops()->shown();
    listen();
}

void KWinSession::listen()
{
    if (std::exchange(m_isListening, true))
        return;
    m_attempts.setSingleShot(true);
    QObject::connect(&m_attempts, &QTimer::timeout, &m_context, [this] { attempt(); });
    watch();
    // Whatever was read before the event loop turned belongs to the past.
    if (auto *dispatcher = QAbstractEventDispatcher::instance()) {
        const auto turn = [this] { m_isStale = true; };
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, &m_context, turn);
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, &m_context, turn);
    }
}

void KWinSession::watch()
{
    if (!m_isListening || !m_compositor)
        return;
    m_compositor->connection().setReadableHandler([this] {
        m_isStale = true;
        // The handler is this connection's own: it may not go before it returns.
        QMetaObject::invokeMethod(
            &m_context, [this] { notice(); }, Qt::QueuedConnection);
    });
}

void KWinSession::notice()
{
    if (!refresh())
        return;
    if (m_shortcuts)
        m_shortcuts->setKeymap(m_compositor->keymap());
    const QString shown = m_compositor->desktops()->shown();
    if (std::exchange(m_notified, shown) == shown)
        return;
    if (m_shownWorkspaceHandler)
        m_shownWorkspaceHandler();
}

} // namespace tovel::kwin
