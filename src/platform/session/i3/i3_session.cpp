#include "platform/session/i3/i3_session.h"

#include "platform/session/i3/commands.h"
#include "platform/session/i3/ipc_connection.h"
#include "platform/session/i3/new_names.h"
#include "platform/session/i3/picture.h"
#include "platform/session/i3/readings.h"
#include "platform/session/x11/x11_session.h"
#include "texts/one_line.h"

#include <QAbstractEventDispatcher>

#include <algorithm>

#include <unistd.h>

namespace tovel::i3 {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto Patience = 3s;

// One that has gone is looked for again and again: each of its answers is awaited for so long,
// and the next look is due so much later.
constexpr auto ShortPatience = 200ms;
constexpr auto AttemptInterval = 2s;

} // namespace

std::unique_ptr<I3Session> I3Session::open(const QByteArray &path) { return open(path, nullptr); }

std::unique_ptr<I3Session> I3Session::open(const QByteArray &path,
                                           std::unique_ptr<x11::X11Session> &&x11)
{
    auto session = std::unique_ptr<I3Session>(new I3Session(path));
    if (!session->connect())
        return nullptr;
    session->m_x11 = std::move(x11);
    return session;
}

I3Session::I3Session(const QByteArray &path)
    : m_path(path)
    , m_version(std::make_unique<Version>())
    , m_picture(std::make_unique<Picture>())
    , m_patience(Patience)
{ }

I3Session::~I3Session()
{
    for (const Binding &binding : m_bindings)
        command(unbindCommand(binding.key));
}

bool I3Session::isConnected() const { return m_connection && m_connection->isAlive(); }

bool I3Session::isSway() const { return m_version->compositor == Compositor::Sway; }

bool I3Session::connect()
{
    m_connection = IpcConnection::open(m_path);
    if (!m_connection)
        return false;
    const auto answer = m_connection->ask(MessageType::GetVersion, {}, m_patience);
    const auto version = answer ? readVersion(*answer) : std::nullopt;
    bool isGood = version.has_value();
    // One at a time: sway 1.7 refuses all of a list when it does not know one of them.
    for (const QByteArray event : {"workspace", "binding"}) {
        isGood = isGood
            && m_connection->ask(MessageType::Subscribe, "[\"" + event + "\"]", m_patience);
    }
    if (!isGood) {
        m_connection.reset();
        return false;
    }
    *m_version = *version;
    readConfiguration();
    if (m_isListening)
        followEvents();
    return isConnected();
}

// And what it has dropped of ours.
void I3Session::readConfiguration()
{
    if (const auto answer = m_connection->ask(MessageType::GetConfig, {}, m_patience))
        m_assigned = assignedWorkspaces(i3::readConfiguration(*answer));
    m_tree.clear();
    for (const Binding &binding : m_bindings)
        command(bindCommand(binding.key, binding.command));
}

void I3Session::invalidate() { m_isStale = true; }

Picture &I3Session::current()
{
    if (std::exchange(m_isStale, false)) {
        lookAgain();
        // Told from the event loop, never from within a call that reads.
        const bool isNews = m_shownWorkspaceHandler && shownWorkspaces() != m_notifiedWorkspaces;
        if (isNews || (m_connection && m_connection->hasEvents()))
            awaitEvents();
    }
    return *m_picture;
}

void I3Session::lookAgain()
{
    if (!isConnected() && std::chrono::steady_clock::now() >= m_nextAttempt) {
        // The next i3 may listen elsewhere.
        const QByteArray path = m_x11 ? m_x11->managerSocket() : QByteArray();
        if (!path.isEmpty())
            m_path = path;
        // Until it has told of its windows.
        m_patience = ShortPatience;
        connect();
        m_nextAttempt = std::chrono::steady_clock::now() + AttemptInterval;
    }
    const auto answer
        = isConnected() ? m_connection->ask(MessageType::GetTree, {}, m_patience) : std::nullopt;
    if (!answer) {
        lose();
        return;
    }
    if (m_x11)
        m_x11->invalidate();
    const std::uint64_t x11Revision = m_x11 ? m_x11->revision() : 0;
    if (*answer == m_tree && x11Revision == m_x11Revision)
        return;
    const auto tree = readTree(*answer);
    if (!tree) {
        lose();
        return;
    }
    m_patience = Patience;
    m_tree = *answer;
    m_x11Revision = x11Revision;
    m_made.removeIf([&tree](const AssignedWorkspace &made) {
        return std::ranges::any_of(tree->outputs, [&made](const TreeOutput &output) {
            return output.workspaces.contains(made.name);
        });
    });
    Sources sources{
        .compositor = m_version->compositor, .tree = *tree, .assigned = m_assigned + m_made};
    if (m_x11) {
        sources.x11Windows = m_x11->windows();
        sources.primary = m_x11->screens().value(0).name;
    }
    m_picture->draw(sources);
}

void I3Session::lose()
{
    m_connection.reset();
    m_tree.clear();
    m_made.clear();
    m_picture->clear();
    if (m_isListening)
        m_attempts.start();
}

std::uint64_t I3Session::revision() { return current().revision(); }

QString I3Session::ownName() const { return isSway() ? u"sway"_s : u"i3"_s; }

QString I3Session::silence() const { return ownName() + u" does not answer"_s; }

QString I3Session::name() { return ownName() + u' ' + m_version->text; }

bool I3Session::hasManager()
{
    current();
    return isConnected();
}

bool I3Session::isControllable() { return !current().outputs().isEmpty(); }

SessionCapabilities I3Session::capabilities()
{
    SessionCapabilities can;
    can.cursor = m_x11 ? CursorAccess::Movable : CursorAccess::Hidden;
    can.globalKeys = isSway() || m_x11;
    can.keepsEmptyWorkspaces = false;
    can.makesWorkspaces = true;
    can.activationShowsWorkspace = true;
    return can;
}

QList<SessionScreen> I3Session::screens() { return current().screens(); }

QList<SessionOutput> I3Session::outputs() { return current().outputs(); }

const QList<SessionWindow> &I3Session::windows() { return current().windows(); }

QList<std::uint32_t> I3Session::stackingOrder() { return current().frontToBack(); }

std::uint32_t I3Session::activeWindow() { return current().activeWindow(); }

bool I3Session::command(const QByteArray &text)
{
    if (!isConnected())
        return false;
    m_isStale = true;
    const auto answer = m_connection->ask(MessageType::RunCommand, text, m_patience);
    return answer && readSuccess(*answer);
}

bool I3Session::commandFor(std::uint32_t window, const QByteArray &text)
{
    const TreeWindow *known = current().window(window);
    return known && command(criteria(m_version->compositor, *known) + text);
}

bool I3Session::moveWindow(std::uint32_t window, std::uint64_t workspace)
{
    const TreeWindow *known = current().window(window);
    const auto name = m_picture->workspace(workspace);
    const auto quoted = name ? quotedWorkspace(m_version->compositor, *name) : std::nullopt;
    return known && !known->isOnAll && quoted
        && commandFor(window, "move --no-auto-back-and-forth container to workspace " + *quoted);
}

bool I3Session::showWorkspace(std::uint64_t workspace)
{
    const auto name = current().workspace(workspace);
    const auto quoted = name ? quotedWorkspace(m_version->compositor, *name) : std::nullopt;
    return quoted && command("workspace --no-auto-back-and-forth " + *quoted);
}

MadeWorkspace I3Session::makeWorkspace(const QString &name)
{
    if (!isControllable())
        return {0, silence()};
    QStringList existing;
    for (const SessionOutput &output : m_picture->outputs()) {
        for (const SessionWorkspace &workspace : output.workspaces)
            existing.append(workspace.uuid);
    }
    const QString wanted = name.isEmpty() ? lowestFreeNumber(existing) : name;
    const QString problem = problemOfNewName(m_version->compositor, wanted, existing);
    if (!problem.isEmpty())
        return {0, problem};
    m_made.append({wanted, m_picture->outputsByFocus()});
    m_tree.clear();
    m_isStale = true;
    const std::uint64_t id = current().workspaceNamed(wanted);
    return {id, id != 0 ? QString() : silence()};
}

bool I3Session::activateWindow(std::uint32_t window) { return commandFor(window, "focus"); }

bool I3Session::raiseWindow(std::uint32_t) { return false; }

std::uint32_t I3Session::ownWindow(const SessionOwnWindow &window)
{
    const QList<SessionWindow> &windows = current().windows();
    const auto found = std::find_if(windows.crbegin(), windows.crend(), [&](const auto &it) {
        if (window.x11Window != 0)
            return m_picture->window(it.id)->x11Window == window.x11Window;
        return it.process == window.process && it.title.value_or(QString()) == window.title;
    });
    return found == windows.crend() ? 0 : found->id;
}

// What sway tiles it tells a size at once, and what the program makes of that may come when the
// window floats already: then sway takes it for the wanted one. The rule holds until the
// configuration is read again, and sway keeps equal ones once.
void I3Session::prepareOwnWindow(const SessionOwnWindow &window)
{
    current();
    const QByteArray rule = floatingRule(window);
    if (isSway() && !rule.isEmpty())
        command(rule);
}

// Only what floats can be on all of them.
bool I3Session::setOnAllWorkspaces(std::uint32_t window, bool on)
{
    return commandFor(window, on ? "floating enable, sticky enable" : "sticky disable");
}

// What floats is above all that does not. It goes on floating: a panel that fills half of the
// screen from one moment to the next is not what its user asked for.
bool I3Session::setAbove(std::uint32_t window, bool on)
{
    return on ? commandFor(window, "floating enable") : current().window(window) != nullptr;
}

std::optional<QPointF> I3Session::cursorPosition()
{
    return m_x11 ? m_x11->cursorPosition() : std::nullopt;
}

void I3Session::moveCursor(QPointF position)
{
    if (m_x11)
        m_x11->moveCursor(position);
}

KeyGrab I3Session::grabKey(const SessionKey &key)
{
    if (m_x11)
        return m_x11->grabKey(key);
    // Whoever reads the events of bindings sees those of other processes, too.
    const Binding binding{key, u"nop tovel:%1:%2"_s.arg(::getpid()).arg(++m_lastBinding)};
    current();
    if (!isSway() || !command(bindCommand(key, binding.command)))
        return KeyGrab::Impossible;
    m_bindings.push_back(binding);
    return KeyGrab::Granted;
}

void I3Session::releaseKey(const SessionKey &key)
{
    if (m_x11)
        m_x11->releaseKey(key);
    else if (std::erase_if(m_bindings, [&key](const Binding &it) { return it.key == key; }) > 0)
        command(unbindCommand(key));
}

void I3Session::setKeyHandler(std::function<void(const SessionKey &key)> handler)
{
    if (m_x11) {
        m_x11->setKeyHandler(std::move(handler));
        return;
    }
    m_keyHandler = std::move(handler);
    listen();
}

QStringList I3Session::limits()
{
    if (!isControllable())
        return {silence() + u'.'};
    QStringList limits;
    if (m_picture->hasScratchpad())
        limits.append(u"Windows in the scratchpad are on no desktop and stay there."_s);
    for (const SessionOutput &output : m_picture->outputs()) {
        for (const SessionWorkspace &workspace : output.workspaces) {
            if (!quotedWorkspace(m_version->compositor, workspace.uuid))
                limits.append(u"%1 takes no command with the name of the desktop “%2”."_s.arg(
                    ownName(), oneLine(workspace.uuid)));
        }
    }
    return limits;
}

void I3Session::setShownWorkspaceHandler(std::function<void()> handler)
{
    m_shownWorkspaceHandler = std::move(handler);
    current();
    m_notifiedWorkspaces = shownWorkspaces();
    listen();
}

void I3Session::listen()
{
    if (std::exchange(m_isListening, true))
        return;
    // Until the session is back.
    m_attempts.setInterval(500ms);
    QObject::connect(&m_attempts, &QTimer::timeout, &m_context, [this] {
        m_isStale = true;
        current();
        if (isConnected())
            m_attempts.stop();
    });
    followEvents();
    // Whatever was read before the event loop turned belongs to the past.
    if (auto *dispatcher = QAbstractEventDispatcher::instance()) {
        const auto turn = [this] { m_isStale = true; };
        QObject::connect(dispatcher, &QAbstractEventDispatcher::awake, &m_context, turn);
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, &m_context, turn);
    }
}

void I3Session::followEvents()
{
    if (m_connection)
        m_connection->setReadableHandler([this] { awaitEvents(); });
}

void I3Session::awaitEvents()
{
    if (std::exchange(m_areEventsAwaited, true))
        return;
    QMetaObject::invokeMethod(
        &m_context, [this] { noticeEvents(); }, Qt::QueuedConnection);
}

void I3Session::noticeEvents()
{
    // Before the handlers, which may let the event loop turn.
    m_areEventsAwaited = false;
    m_isStale = true;
    std::vector<SessionKey> pressed;
    bool isReloaded = false;
    for (const Frame &event : m_connection ? m_connection->takeEvents() : std::vector<Frame>()) {
        if (event.type == MessageType::WorkspaceEvent)
            isReloaded = isReloaded || readsReload(event.payload);
        if (event.type != MessageType::BindingEvent)
            continue;
        const QString text = readPressedCommand(event.payload);
        for (const Binding &binding : m_bindings) {
            if (binding.command == text)
                pressed.push_back(binding.key);
        }
    }
    if (isReloaded && isConnected())
        readConfiguration();
    current();
    if (const auto shown = shownWorkspaces();
        m_shownWorkspaceHandler && std::exchange(m_notifiedWorkspaces, shown) != shown)
        m_shownWorkspaceHandler();
    for (const SessionKey &key : pressed) {
        if (m_keyHandler)
            m_keyHandler(key);
    }
}

QList<std::optional<std::uint64_t>> I3Session::shownWorkspaces() const
{
    QList<std::optional<std::uint64_t>> shown;
    for (const SessionOutput &output : m_picture->outputs())
        shown.append(output.shown);
    return shown;
}

} // namespace tovel::i3
