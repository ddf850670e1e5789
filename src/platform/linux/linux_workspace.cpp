#include "platform/linux/linux_workspace.h"

#include "platform/linux/displays.h"

#include <QFileInfo>

#include <algorithm>
#include <map>

namespace tovel {

namespace {

constexpr double WindowPollInterval = 0.1;

} // namespace

struct LinuxWorkspace::Launch
{
    QUrl location;
    LaunchHandler handler;
    double deadline = 0;
    std::unique_ptr<Timer> poll;
};

struct LinuxWorkspace::Observers
{
    std::map<std::uint64_t, std::function<void()>> handlers;
    std::uint64_t nextNumber = 0;

    void notify()
    {
        // A handler may subscribe or unsubscribe.
        const auto copy = handlers;
        for (const auto &[number, handler] : copy) {
            if (handlers.contains(number))
                handler();
        }
    }
};

LinuxWorkspace::LinuxWorkspace(SessionApplications *applications, InstalledApplications &installed,
                               Clock &clock)
    : m_applications(applications)
    , m_installed(installed)
    , m_clock(clock)
    , m_observers(std::make_shared<Observers>())
{
    if (m_applications) {
        m_applications->session().setShownWorkspaceHandler(
            [observers = m_observers] { observers->notify(); });
    }
}

LinuxWorkspace::~LinuxWorkspace() = default;

QList<NSRunningApplicationRef> LinuxWorkspace::runningApplications() const
{
    QList<NSRunningApplicationRef> applications;
    if (m_applications) {
        for (const SessionApplicationRef &application : m_applications->running())
            applications.append(application);
    }
    return applications;
}

NSRunningApplicationRef LinuxWorkspace::runningApplicationWithProcessIdentifier(
    std::int32_t pid) const
{
    return m_applications ? m_applications->withProcess(pid) : nullptr;
}

std::optional<QUrl> LinuxWorkspace::URLForApplicationWithBundleIdentifier(
    const QString &bundleIdentifier) const
{
    const QUrl location = m_launcher.locate(bundleIdentifier);
    if (location.isEmpty())
        return std::nullopt;
    return location;
}

std::optional<QString> LinuxWorkspace::localizedNameOfApplicationAtURL(const QUrl &location) const
{
    const ApplicationEntry *entry = entryAt(location);
    return entry ? std::optional(entry->name) : std::nullopt;
}

const ApplicationEntry *LinuxWorkspace::entryAt(const QUrl &location) const
{
    const auto &entries = m_installed.index().entries();
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [path = location.toLocalFile()](const ApplicationEntry &entry) {
                                        return entry.path == path;
                                    });
    return found == entries.end() ? nullptr : &*found;
}

void LinuxWorkspace::openApplicationAtURL(const QUrl &location, LaunchHandler handler)
{
    m_launches.push_back({location, std::move(handler), 0, nullptr});
    const auto launch = std::prev(m_launches.end());
    m_launcher.launch(location, [this, launch](const std::optional<QString> &reason) {
        if (!reason && m_applications) {
            awaitWindow(launch);
            return;
        }
        const LaunchHandler finished = std::move(launch->handler);
        m_launches.erase(launch);
        finished(reason);
    });
}

void LinuxWorkspace::awaitWindow(std::list<Launch>::iterator launch)
{
    // An entry in a subfolder has the folder's name in its identifier.
    const ApplicationEntry *entry = entryAt(launch->location);
    const QString bundleIdentifier = entry
        ? entry->bundleIdentifier
        : QFileInfo(launch->location.toLocalFile()).completeBaseName();
    launch->deadline = m_clock.monotonicTime() + WindowDeadline;
    launch->poll = m_clock.startTimer(WindowPollInterval, true, [this, launch, bundleIdentifier] {
        const bool isDue = m_clock.monotonicTime() >= launch->deadline;
        if (!isDue && !isRunning(bundleIdentifier))
            return;
        const LaunchHandler finished = std::move(launch->handler);
        m_launches.erase(launch);
        finished(std::nullopt);
    });
}

bool LinuxWorkspace::isRunning(const QString &bundleIdentifier) const
{
    const auto &running = m_applications->running();
    return std::any_of(running.cbegin(), running.cend(), [&](const SessionApplicationRef &it) {
        return it->bundleIdentifier() == bundleIdentifier;
    });
}

QList<NSScreen> LinuxWorkspace::screens() const
{
    QList<NSScreen> screens;
    if (m_applications) {
        for (const SessionScreen &display : displaysOf(m_applications->session()))
            screens.append({display.number, display.name});
    }
    return screens;
}

Subscription LinuxWorkspace::observeActiveSpaceDidChange(std::function<void()> handler)
{
    const std::uint64_t number = m_observers->nextNumber++;
    m_observers->handlers.emplace(number, std::move(handler));
    return Subscription(nullptr, [number, observers = std::weak_ptr(m_observers)](std::nullptr_t) {
        if (const auto left = observers.lock())
            left->handlers.erase(number);
    });
}

QString LinuxWorkspace::mainBundleIdentifier() const { return QStringLiteral("org.tovel.Tovel"); }

} // namespace tovel
