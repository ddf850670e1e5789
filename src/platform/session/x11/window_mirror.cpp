#include "platform/session/x11/window_mirror.h"

#include "texts/one_line.h"

#include <QSysInfo>

#include <algorithm>
#include <array>

namespace tovel::x11 {

namespace {

// Limits of what is read of a property, in 32-bit units.
constexpr std::uint32_t SingleValue = 1;
constexpr std::uint32_t ShortList = 32;
constexpr auto LongText = static_cast<std::uint32_t>(2 * MaximumTitleLength);
constexpr std::uint32_t ManagerList = 1024;

// A manager that changes faster than it can be read must not hold the caller up.
constexpr int MaximumRounds = 8;

struct Reading
{
    Name name;
    std::uint32_t maximumLength;
};

constexpr std::array ClientReadings{
    Reading{Name::NetWmDesktop, SingleValue},
    Reading{Name::NetWmState, ShortList},
    Reading{Name::NetWmWindowType, ShortList},
    Reading{Name::WmTransientFor, SingleValue},
    // The title of WM_NAME must be applied before that of _NET_WM_NAME, which wins.
    Reading{Name::WmName, LongText},
    Reading{Name::NetWmName, LongText},
    Reading{Name::WmClass, LongText},
    Reading{Name::NetWmPid, SingleValue},
    Reading{Name::WmClientMachine, LongText},
    Reading{Name::GtkApplicationId, LongText},
    Reading{Name::KdeDesktopFile, LongText},
};

constexpr std::array RootReadings{
    Reading{Name::NetSupportingWmCheck, SingleValue},
    Reading{Name::NetSupported, ManagerList},
    Reading{Name::NetNumberOfDesktops, SingleValue},
    Reading{Name::NetCurrentDesktop, SingleValue},
    Reading{Name::NetActiveWindow, SingleValue},
    Reading{Name::NetClientList, MaximumClients},
    Reading{Name::NetClientListStacking, MaximumClients},
    Reading{Name::NetDesktopNames, ManagerList},
};

WindowKind kindFrom(const Connection &connection, const std::vector<std::uint32_t> &types,
                    bool isTransient)
{
    using enum Name;
    struct Row
    {
        Name type;
        WindowKind kind;
    };
    // Palettes and tool bars take part in their application's work like its dialogs do.
    static constexpr Row rows[] = {
        {TypeNormal, WindowKind::Standard},      {TypeDialog, WindowKind::Dialog},
        {TypeUtility, WindowKind::Dialog},       {TypeToolbar, WindowKind::Dialog},
        {TypeDesktop, WindowKind::Desktop},      {TypeDock, WindowKind::Dock},
        {TypeMenu, WindowKind::Overlay},         {TypeSplash, WindowKind::Overlay},
        {TypeDropdownMenu, WindowKind::Overlay}, {TypePopupMenu, WindowKind::Overlay},
        {TypeTooltip, WindowKind::Overlay},      {TypeNotification, WindowKind::Overlay},
        {TypeCombo, WindowKind::Overlay},        {TypeDnd, WindowKind::Overlay},
    };
    for (const std::uint32_t type : types) {
        for (const Row &row : rows) {
            if (connection.atom(row.type) == type)
                return row.kind;
        }
    }
    return isTransient ? WindowKind::Dialog : WindowKind::Standard;
}

} // namespace

bool wereDesktopsRemoved(std::uint32_t before, std::uint32_t now, int changes)
{
    if (now < before)
        return true;
    // One change that leaves the count is no removal; several have undone each other, unless each
    // one added desktops.
    return changes > 1 && now < before + static_cast<std::uint32_t>(changes);
}

bool wereDesktopsReordered(const QStringList &before, const QStringList &now)
{
    return before != now && std::ranges::is_permutation(before, now);
}

WindowMirror::WindowMirror(Connection &connection)
    : m_connection(connection)
    , m_hostName(QSysInfo::machineHostName())
{ }

void WindowMirror::update()
{
    m_connection.synchronize();
    collectEvents();
    for (int round = 0; round < MaximumRounds && isDirty(); ++round) {
        ++m_revision;
        if (std::exchange(m_monitorsDirty, false))
            m_monitors = m_connection.readMonitors();
        if (std::exchange(m_rootDirty, false))
            refreshRoot();
        refreshClients();
        collectEvents();
    }
    // Events of the last look may have taken windows away.
    listWindows();
    if (!m_connection.isAlive() && std::exchange(m_isKept, false)) {
        ++m_revision;
        m_rootState = {.desktopGeneration = m_rootState.desktopGeneration};
        m_windows.clear();
        m_clients.clear();
        m_stacking.clear();
        m_monitors.clear();
    }
}

const MirroredWindow *WindowMirror::window(Window id) const
{
    const auto found = m_windows.constFind(id);
    return found == m_windows.cend() || !found->exists ? nullptr : &*found;
}

bool WindowMirror::isDirty() const
{
    return m_connection.isAlive()
        && (m_rootDirty || m_clientsDirty || m_monitorsDirty || !m_dirtyProperties.isEmpty()
            || !m_dirtyFacts.isEmpty());
}

bool WindowMirror::collectEvents()
{
    const auto isRead = [this](const auto &readings, Atom atom) {
        return std::any_of(readings.begin(), readings.end(), [this, atom](const Reading &reading) {
            return m_connection.atom(reading.name) == atom;
        });
    };
    for (const Event &event : m_connection.takeEvents()) {
        const bool isClient = m_windows.contains(event.window);
        switch (event.kind) {
        case Event::Kind::PropertyChanged:
            if (event.window == m_connection.root()) {
                m_rootDirty = m_rootDirty || isRead(RootReadings, event.atom);
                if (event.atom == m_connection.atom(Name::NetNumberOfDesktops))
                    ++m_countChanges;
            }
            if (event.window == m_checkWindow)
                m_rootDirty = true;
            if (isClient && isRead(ClientReadings, event.atom))
                m_dirtyProperties[event.window].insert(event.atom);
            break;
        case Event::Kind::FrameChanged:
            if (event.window == m_connection.root())
                m_monitorsDirty = true;
            else if (isClient)
                m_dirtyFacts.insert(event.window);
            break;
        case Event::Kind::Destroyed:
            // The server gives the ids of what is gone to whoever comes next.
            if (event.window == m_checkWindow) {
                m_checkWindow = 0;
                m_rootDirty = true;
            }
            if (m_windows.remove(event.window))
                m_clientsDirty = true;
            break;
        case Event::Kind::MonitorsChanged:
            m_monitorsDirty = true;
            break;
        }
    }
    return m_rootDirty;
}

void WindowMirror::refreshRoot()
{
    std::vector<PropertyRequest> requests;
    for (const Reading &reading : RootReadings) {
        requests.push_back(
            {m_connection.root(), m_connection.atom(reading.name), reading.maximumLength});
    }
    const auto properties = m_connection.readProperties(requests);

    RootState state;
    const Window check = readValue(properties[0], WindowType).value_or(0);
    for (const std::uint32_t atom : readList(properties[1], AtomType))
        state.supported.insert(atom);
    const std::uint32_t desktops = readValue(properties[2], CardinalType).value_or(0);
    state.hasMoreDesktops = desktops > MaximumDesktops;
    state.desktopCount = std::min(desktops, MaximumDesktops);
    state.desktopNames
        = readTextList(properties[7], m_connection.atom(Name::Utf8String), state.desktopCount);
    state.desktopGeneration = m_rootState.desktopGeneration;
    if (wereDesktopsRemoved(m_rootState.desktopCount, state.desktopCount,
                            std::exchange(m_countChanges, 0))
        || wereDesktopsReordered(m_rootState.desktopNames, state.desktopNames))
        ++state.desktopGeneration;
    if (const auto current = readValue(properties[3], CardinalType)) {
        state.hasCurrentDesktop = true;
        state.currentDesktop = *current;
    }
    state.activeWindow = readValue(properties[4], WindowType).value_or(0);
    state.hasMoreClients = properties[5].isCut;
    auto clients = readList(properties[5], WindowType);
    m_clientsChanged = m_clientsChanged || clients != m_listedClients;
    m_listedClients = std::move(clients);
    m_listedStacking = readList(properties[6], WindowType);
    m_clientsDirty = true;

    // The root window's property outlives a manager that was killed; its child window does not.
    if (check != m_connection.root() && check != 0) {
        if (check != std::exchange(m_checkWindow, check) && !m_windows.contains(check))
            m_connection.watch(check);
        const std::array checks{
            PropertyRequest{check, m_connection.atom(Name::NetSupportingWmCheck), SingleValue},
            PropertyRequest{check, m_connection.atom(Name::NetWmName), LongText},
        };
        const auto answers = m_connection.readProperties(checks);
        state.hasManager = readValue(answers[0], WindowType) == check;
        state.managerName
            = readText(answers[1], m_connection.atom(Name::Utf8String)).value_or(QString());
    }
    m_rootState = state;
}

void WindowMirror::followClientList()
{
    QSet<Window> listed;
    m_order.clear();
    for (const Window id : m_listedClients) {
        if (id == 0 || id == m_connection.root() || listed.contains(id))
            continue;
        listed.insert(id);
        m_order.push_back(id);
        // One that was not there when it was looked for is tried again when the list has changed.
        const auto known = m_windows.constFind(id);
        if (known != m_windows.cend() && (known->exists || !m_clientsChanged))
            continue;
        m_connection.watch(id);
        m_windows.insert(id, {});
        for (const Reading &reading : ClientReadings)
            m_dirtyProperties[id].insert(m_connection.atom(reading.name));
        m_dirtyFacts.insert(id);
    }
    m_windows.removeIf([&listed](const auto &entry) { return !listed.contains(entry.key()); });
    m_clientsChanged = false;
}

void WindowMirror::refreshClients()
{
    if (std::exchange(m_clientsDirty, false))
        followClientList();

    std::vector<PropertyRequest> requests;
    for (auto it = m_dirtyProperties.cbegin(); it != m_dirtyProperties.cend(); ++it) {
        if (!m_windows.contains(it.key()))
            continue;
        const bool titleChanged = it.value().contains(m_connection.atom(Name::WmName))
            || it.value().contains(m_connection.atom(Name::NetWmName));
        for (const Reading &reading : ClientReadings) {
            const bool isTitle = reading.name == Name::WmName || reading.name == Name::NetWmName;
            const Atom atom = m_connection.atom(reading.name);
            if (it.value().contains(atom) || (isTitle && titleChanged))
                requests.push_back({it.key(), atom, reading.maximumLength});
        }
    }
    m_dirtyProperties.clear();
    std::vector<Window> changed;
    for (const Window id : std::exchange(m_dirtyFacts, {})) {
        if (m_windows.contains(id))
            changed.push_back(id);
    }
    const auto facts = m_connection.readFacts(changed);
    const auto properties = m_connection.readProperties(requests);
    for (std::size_t i = 0; i < changed.size(); ++i) {
        MirroredWindow &window = m_windows[changed[i]];
        window.window.id = changed[i];
        window.exists = facts[i].exists;
        window.window.frame = facts[i].frame;
        window.serverProcess = facts[i].process;
    }
    for (std::size_t i = 0; i < requests.size(); ++i)
        apply(m_windows[requests[i].window], requests[i].atom, properties[i]);

    for (MirroredWindow &window : m_windows) {
        window.window.process = window.serverProcess;
        if (window.serverProcess == 0 && window.isLocalMachine)
            window.window.process = window.claimedProcess.value_or(0);
    }
}

void WindowMirror::listWindows()
{
    const auto isThere = [this](Window id) { return window(id) != nullptr; };
    m_clients.clear();
    std::copy_if(m_order.begin(), m_order.end(), std::back_inserter(m_clients), isThere);
    m_stacking.clear();
    QSet<Window> stacked;
    for (const Window id : m_listedStacking.empty() ? m_order : m_listedStacking) {
        if (isThere(id) && !stacked.contains(id)) {
            stacked.insert(id);
            m_stacking.push_back(id);
        }
    }
}

void WindowMirror::apply(MirroredWindow &mirrored, Atom atom, const Property &property)
{
    SessionWindow &window = mirrored.window;
    const auto is = [this, atom](Name name) { return m_connection.atom(name) == atom; };
    const Atom utf8 = m_connection.atom(Name::Utf8String);
    if (is(Name::NetWmDesktop)) {
        mirrored.desktop = readValue(property, CardinalType);
    } else if (is(Name::NetWmState)) {
        const auto states = readList(property, AtomType);
        const auto has = [this, &states](Name name) {
            return std::find(states.begin(), states.end(), m_connection.atom(name)) != states.end();
        };
        window.minimized = has(Name::NetWmStateHidden);
        window.fullScreen = has(Name::NetWmStateFullscreen);
        window.skipsTaskBar = has(Name::NetWmStateSkipTaskbar);
    } else if (is(Name::NetWmWindowType)) {
        mirrored.types = readList(property, AtomType);
    } else if (is(Name::WmTransientFor)) {
        window.transientFor = readValue(property, WindowType).value_or(0);
    } else if (is(Name::WmName)) {
        window.title = readText(property, utf8);
    } else if (is(Name::NetWmName)) {
        if (const auto title = readText(property, utf8))
            window.title = title;
    } else if (is(Name::WmClass)) {
        std::tie(window.instanceName, window.className) = readClass(property);
    } else if (is(Name::NetWmPid)) {
        const auto pid = readValue(property, CardinalType);
        mirrored.claimedProcess.reset();
        if (pid && *pid <= std::uint32_t(INT32_MAX))
            mirrored.claimedProcess = static_cast<std::int32_t>(*pid);
    } else if (is(Name::WmClientMachine)) {
        mirrored.isLocalMachine = readText(property, utf8) == m_hostName;
    } else if (is(Name::GtkApplicationId)) {
        window.gtkApplicationId = readText(property, utf8).value_or(QString());
    } else if (is(Name::KdeDesktopFile)) {
        window.kdeDesktopFile = readText(property, utf8).value_or(QString());
    }
    window.kind = kindFrom(m_connection, mirrored.types, window.transientFor != 0);
}

} // namespace tovel::x11
