#include "platform/linux/applications/session_applications.h"

#include <algorithm>

namespace tovel {

namespace {

// Beyond any process number that the kernel gives out (its limit is 2^22).
constexpr std::int32_t FirstInventedProcess = 1 << 30;

// Longer chains of transient windows are somebody's mistake or a cycle.
constexpr int MaximumTransientDepth = 16;

bool belongsInTaskBar(const SessionWindow &window)
{
    const bool isOrdinary
        = window.kind == WindowKind::Standard || window.kind == WindowKind::Dialog;
    return isOrdinary && !window.skipsTaskBar;
}

// Whether two readings of a window lead to the same application.
bool sameEvidence(const SessionWindow &a, const SessionWindow &b)
{
    return a.process == b.process && a.appId == b.appId && a.sandboxId == b.sandboxId
        && a.instanceName == b.instanceName && a.className == b.className
        && a.gtkApplicationId == b.gtkApplicationId && a.kdeDesktopFile == b.kdeDesktopFile;
}

} // namespace

SessionApplication::SessionApplication(SessionApplications &owner, std::int32_t platformProcess,
                                       ApplicationIdentity identity,
                                       std::optional<QDateTime> launchDate)
    : m_owner(&owner)
    , m_platformProcess(platformProcess)
    , m_identity(std::move(identity))
    , m_launchDate(std::move(launchDate))
{ }

std::optional<QString> SessionApplication::bundleIdentifier() const
{
    return m_identity.bundleIdentifier;
}

std::optional<QString> SessionApplication::localizedName() const { return m_identity.name; }

std::optional<NSImage> SessionApplication::icon() const
{
    if (m_identity.icon.isEmpty())
        return std::nullopt;
    return NSImage{m_identity.icon};
}

bool SessionApplication::isTerminated() const
{
    if (m_owner)
        m_owner->running();
    return m_owner == nullptr;
}

bool SessionApplication::activateWithOptions(std::uint32_t)
{
    if (isTerminated())
        return false;
    std::uint32_t window = std::exchange(m_mainWindow, 0);
    if (window == 0 || !m_windows.contains(window))
        window = m_owner->frontmostWindow(*this);
    return window != 0 && m_owner->session().activateWindow(window);
}

SessionApplications::SessionApplications(DesktopSession &session, InstalledApplications &installed)
    : m_session(session)
    , m_installed(installed)
    , m_nextInventedProcess(FirstInventedProcess)
{ }

SessionApplications::~SessionApplications()
{
    for (const SessionApplicationRef &application : m_running)
        application->m_owner = nullptr;
}

const QList<SessionApplicationRef> &SessionApplications::running()
{
    update();
    return m_running;
}

SessionApplicationRef SessionApplications::withProcess(std::int32_t platformProcess)
{
    update();
    return m_byProcess.value(platformProcess);
}

SessionApplicationRef SessionApplications::ownerOf(std::uint32_t window)
{
    update();
    return m_byWindow.value(window);
}

const SessionWindow *SessionApplications::window(std::uint32_t window)
{
    update();
    const auto found = m_windows.constFind(window);
    return found == m_windows.cend() ? nullptr : &*found;
}

std::uint32_t SessionApplications::frontmostWindow(const SessionApplication &application)
{
    update();
    for (const std::uint32_t window : m_session.stackingOrder()) {
        if (application.m_windows.contains(window) && belongsInTaskBar(m_windows.value(window)))
            return window;
    }
    return 0;
}

template <typename Entries>
auto SessionApplications::find(Entries &entries, const Key &key)
{
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&key](const Entry &entry) { return entry.key == key; });
    return found == entries.end() ? nullptr : &*found;
}

void SessionApplications::update()
{
    if (std::exchange(m_revision, m_session.revision()) == m_session.revision())
        return;
    identifyWindows();

    const auto before = std::exchange(m_applications, {});
    for (const Entry &entry : before)
        entry.application->m_windows.clear();
    // Those that stay keep their process number, whatever else turns up.
    for (const std::uint32_t id : std::as_const(m_order)) {
        const Key &key = rootOwner(id).key;
        if (!find(m_applications, key)) {
            const Entry *old = find(before, key);
            m_applications.push_back({key, old ? old->application : nullptr});
        }
    }
    m_byWindow.clear();
    for (const std::uint32_t id : std::as_const(m_order)) {
        const Owner &owner = rootOwner(id);
        SessionApplicationRef &application = find(m_applications, owner.key)->application;
        if (!application) {
            const auto launchDate
                = owner.launchDate.isValid() ? std::optional(owner.launchDate) : std::nullopt;
            application = std::make_shared<SessionApplication>(*this, platformProcessFor(owner.key),
                                                               owner.identity, launchDate);
        }
        application->m_windows.append(id);
        m_byWindow.insert(id, application);
    }
    for (const Entry &entry : before) {
        if (entry.application->m_windows.isEmpty())
            entry.application->m_owner = nullptr;
    }

    m_running.clear();
    m_byProcess.clear();
    for (const Entry &entry : m_applications) {
        SessionApplication &application = *entry.application;
        const bool isRegular
            = std::any_of(application.m_windows.cbegin(), application.m_windows.cend(),
                          [this](std::uint32_t id) { return belongsInTaskBar(m_windows[id]); });
        application.m_policy = isRegular ? NSApplicationActivationPolicy::Regular
                                         : NSApplicationActivationPolicy::Accessory;
        m_running.append(entry.application);
        m_byProcess.insert(application.processIdentifier(), entry.application);
    }
}

void SessionApplications::identifyWindows()
{
    const QList<SessionWindow> &windows = m_session.windows();
    auto known = std::exchange(m_owners, {});
    const bool hasNew = std::any_of(windows.cbegin(), windows.cend(),
                                    [&](const auto &window) { return !known.contains(window.id); });
    if (hasNew && m_installed.reloadIfChanged())
        known.clear();
    m_windows.clear();
    m_order.clear();
    Processes processes;
    for (const SessionWindow &window : windows) {
        const auto owner = known.constFind(window.id);
        const bool isKnown = owner != known.cend() && sameEvidence(owner->evidence, window);
        m_owners.insert(window.id, isKnown ? *owner : identify(window, processes));
        m_windows.insert(window.id, window);
        m_order.append(window.id);
    }
}

SessionApplications::Owner SessionApplications::identify(const SessionWindow &window,
                                                         Processes &processes)
{
    WindowClues clues;
    clues.appId = window.appId;
    clues.instance = window.instanceName;
    clues.className = window.className;
    clues.gtkApplicationId = window.gtkApplicationId;
    clues.kdeDesktopFile = window.kdeDesktopFile;
    const auto once = [&window](auto &known, auto read) {
        const auto found = known.constFind(window.process);
        return found != known.cend() ? *found : *known.insert(window.process, read(window.process));
    };
    std::optional<ApplicationIdentity> identity = m_installed.index().identifyByTexts(clues);
    if (!identity) {
        clues.process = once(processes.clues, readProcessClues);
        if (!window.sandboxId.isEmpty())
            clues.process.sandboxId = cleanClue(window.sandboxId);
        identity = m_installed.index().identify(clues);
    }
    const ProcessStart start = once(processes.starts, readProcessStart);
    Owner owner;
    owner.evidence = window;
    owner.identity = *identity;
    owner.key = {window.process, start.ticks, identity->bundleIdentifier};
    owner.launchDate = start.time;
    return owner;
}

const SessionApplications::Owner &SessionApplications::rootOwner(std::uint32_t window) const
{
    for (int depth = 0; depth < MaximumTransientDepth; ++depth) {
        const std::uint32_t parent = m_windows.constFind(window)->transientFor;
        if (!m_owners.contains(parent))
            break;
        window = parent;
    }
    return *m_owners.constFind(window);
}

std::int32_t SessionApplications::platformProcessFor(const Key &key)
{
    const bool isTaken
        = std::any_of(m_applications.begin(), m_applications.end(), [&key](const Entry &entry) {
              return entry.application && entry.application->processIdentifier() == key.process;
          });
    return key.process > 0 && !isTaken ? key.process : m_nextInventedProcess++;
}

} // namespace tovel
