#include "platform/session/gnome/gnome_session.h"

#include "platform/session/gnome/access.h"
#include "platform/session/gnome/monitors.h"

#include <QAbstractEventDispatcher>

#include <algorithm>

namespace tovel::gnome {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// The Shell is asked at most so often because something may have changed: a terminal's title can
// do so all the time.
constexpr auto Pause = 200ms;

} // namespace

std::unique_ptr<GnomeSession> GnomeSession::open(const QDBusConnection &bus)
{
    std::unique_ptr<GnomeSession> session(new GnomeSession(bus));
    return session->m_bus.isShellThere() ? std::move(session) : nullptr;
}

GnomeSession::GnomeSession(const QDBusConnection &bus)
    : m_bus(bus)
    , m_extension(m_bus)
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(Pause);
}

GnomeSession::~GnomeSession() = default;

void GnomeSession::invalidate() { m_isStale = true; }

Picture &GnomeSession::current()
{
    if (std::exchange(m_isStale, false)) {
        lookAgain();
        // Told from the event loop, never from within a call that reads.
        const auto shown = shownWorkspace();
        if (m_shownWorkspaceHandler && shown && shown != m_notifiedWorkspace) {
            QMetaObject::invokeMethod(
                &m_context, [this] { notice(); }, Qt::QueuedConnection);
        }
    }
    return m_picture;
}

void GnomeSession::lookAgain()
{
    const auto reading = m_extension.read();
    if (reading && reading->isNumberedAnew)
        m_picture.expectOtherNumbers(reading->isSameShell);
    if (reading && reading->isSame)
        return;
    auto snapshot = reading ? readSnapshot(reading->text.toUtf8()) : std::nullopt;
    if (!snapshot) {
        m_extension.forget();
        m_snapshot = {};
        m_picture.clear();
        return;
    }
    // Some may have had no name as yet.
    if (snapshot->monitors != m_snapshot.monitors || m_monitors.size() != snapshot->monitors.size())
        m_monitors = askForMonitors(m_bus);
    m_snapshot = std::move(*snapshot);
    m_picture.draw(m_snapshot, m_monitors);
    keepOnAllWorkspaces();
}

// A window is taken off them when one that belongs to it, a popover for one, asks for the keyboard.
void GnomeSession::keepOnAllWorkspaces()
{
    for (const std::uint32_t id : QSet<std::uint32_t>(m_onAllWorkspaces)) {
        const ShellWindow *window = m_picture.window(id);
        if (!window)
            m_onAllWorkspaces.remove(id);
        else if (!window->isOnAll)
            request(u"SetOnAllWorkspaces"_s, {id, true});
    }
}

std::uint64_t GnomeSession::revision() { return current().revision(); }

QString GnomeSession::name()
{
    if (m_shellVersion.isEmpty()) {
        m_shellVersion
            = m_bus.property({ShellService, ShellPath, ShellService, {}}, u"ShellVersion"_s)
                  .toString()
                  .left(32);
    }
    return u"GNOME Shell %1"_s.arg(m_shellVersion).trimmed();
}

bool GnomeSession::hasManager() { return isControllable() || m_bus.isShellThere(); }

bool GnomeSession::isControllable() { return !current().outputs().isEmpty(); }

SessionCapabilities GnomeSession::capabilities()
{
    SessionCapabilities can;
    can.placesWindows = true;
    can.activationShowsWorkspace = true;
    return can;
}

QList<SessionScreen> GnomeSession::screens() { return current().screens(); }

QList<SessionOutput> GnomeSession::outputs() { return current().outputs(); }

const QList<SessionWindow> &GnomeSession::windows() { return current().windows(); }

QList<std::uint32_t> GnomeSession::stackingOrder() { return current().frontToBack(); }

std::uint32_t GnomeSession::activeWindow() { return current().activeWindow(); }

bool GnomeSession::request(const QString &method, const QVariantList &arguments)
{
    m_isStale = true;
    return m_extension.request(method, arguments);
}

bool GnomeSession::moveWindow(std::uint32_t window, std::uint64_t workspace)
{
    const ShellWindow *known = current().window(window);
    const std::uint32_t target = m_picture.workspace(workspace);
    return known && !known->isOnAll && target != 0 && request(u"MoveWindow"_s, {window, target});
}

bool GnomeSession::showWorkspace(std::uint64_t workspace)
{
    const std::uint32_t target = current().workspace(workspace);
    return target != 0 && request(u"ShowWorkspace"_s, {target});
}

bool GnomeSession::activateWindow(std::uint32_t window)
{
    return current().window(window) && request(u"ActivateWindow"_s, {window});
}

bool GnomeSession::raiseWindow(std::uint32_t window)
{
    return current().window(window) && request(u"RaiseWindow"_s, {window});
}

std::uint32_t GnomeSession::ownWindow(const SessionOwnWindow &window)
{
    const QList<SessionWindow> &windows = current().windows();
    const auto found = std::find_if(windows.crbegin(), windows.crend(), [&](const auto &it) {
        if (window.x11Window != 0)
            return m_picture.window(it.id)->x11Window == window.x11Window;
        return it.process == window.process && it.title.value_or(QString()) == window.title;
    });
    return found == windows.crend() ? 0 : found->id;
}

bool GnomeSession::setOnAllWorkspaces(std::uint32_t window, bool on)
{
    const bool isDone = current().window(window) && request(u"SetOnAllWorkspaces"_s, {window, on});
    if (isDone && on)
        m_onAllWorkspaces.insert(window);
    else
        m_onAllWorkspaces.remove(window);
    return isDone;
}

bool GnomeSession::setAbove(std::uint32_t window, bool on)
{
    return current().window(window) && request(u"SetAbove"_s, {window, on});
}

bool GnomeSession::placeWindow(std::uint32_t window, QPoint corner)
{
    return current().window(window) && request(u"PlaceWindow"_s, {window, corner.x(), corner.y()});
}

std::optional<QPointF> GnomeSession::cursorPosition()
{
    current();
    return m_extension.cursorPosition();
}

void GnomeSession::moveCursor(QPointF position)
{
    current();
    m_extension.request(u"MoveCursor"_s, {position.x(), position.y()});
}

KeyGrab GnomeSession::grabKey(const SessionKey &key)
{
    current();
    return m_extension.grabKey(key);
}

void GnomeSession::releaseKey(const SessionKey &key) { m_extension.releaseKey(key); }

void GnomeSession::setKeyHandler(std::function<void(const SessionKey &key)> handler)
{
    m_extension.setKeyHandler(std::move(handler));
    listen();
}

QStringList GnomeSession::limits()
{
    if (isControllable()) {
        if (!m_picture.hasFixedScreens())
            return {};
        return {
            u"Windows on other screens than the primary one are on all desktops and stay there, "
            "as GNOME’s settings for multitasking say."_s};
    }
    switch (m_extension.presence()) {
    case ShellExtension::Presence::OtherVersion:
        return {u"Tovel’s extension in GNOME Shell is that of another Tovel (its interface is "
                "version %1, not %2): log out and in again, and install Tovel again if that does "
                "not help."_s.arg(m_extension.version())
                    .arg(KnownVersion)};
    case ShellExtension::Presence::Refusing:
        return {u"Tovel’s extension serves only the Tovel that it was installed with, and outside "
                "of any sandbox."_s};
    case ShellExtension::Presence::There:
        return {u"Tovel’s extension tells of no session."_s};
    case ShellExtension::Presence::Absent:
    case ShellExtension::Presence::Silent:
        break;
    }
    return {sentenceFor(findHindrance(m_bus))};
}

bool GnomeSession::requestAccess(std::chrono::milliseconds patience)
{
    if (isControllable())
        return false;
    const bool isUnderWay = enableExtension(m_bus, patience);
    m_isStale = true;
    return isUnderWay;
}

void GnomeSession::setShownWorkspaceHandler(std::function<void()> handler)
{
    m_shownWorkspaceHandler = std::move(handler);
    current();
    m_notifiedWorkspace = shownWorkspace();
    listen();
}

void GnomeSession::listen()
{
    if (std::exchange(m_isListening, true))
        return;
    m_extension.setChangeHandler([this] { hear(); });
    m_bus.setReturnHandler([this] { hear(); });
    QObject::connect(&m_pause, &QTimer::timeout, &m_context, [this] {
        if (std::exchange(m_hasHeard, false))
            hear();
    });
    m_extension.listen();
    // Whatever was read before the event loop turned belongs to the past.
    if (auto *dispatcher = QAbstractEventDispatcher::instance()) {
        const auto turn = [this] { m_isStale = true; };
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, &m_context, turn);
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, &m_context, turn);
    }
}

void GnomeSession::hear()
{
    m_isStale = true;
    if (m_pause.isActive()) {
        m_hasHeard = true;
        return;
    }
    m_pause.start();
    notice();
}

void GnomeSession::notice()
{
    current();
    const auto shown = shownWorkspace();
    if (!shown || std::exchange(m_notifiedWorkspace, shown) == shown)
        return;
    if (m_shownWorkspaceHandler)
        m_shownWorkspaceHandler();
}

std::optional<std::uint64_t> GnomeSession::shownWorkspace() const
{
    return m_picture.outputs().isEmpty() ? std::nullopt : m_picture.outputs().first().shown;
}

} // namespace tovel::gnome
