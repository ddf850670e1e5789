#include "bridge/bridge.h"
#include "model/migration_rules.h"
#include "model/readings.h"
#include "model/texts.h"
#include "model/tovel_model.h"
#include "platform/accessibility.h"
#include "platform/variants.h"

#include <algorithm>

namespace tovel {

namespace {

// Parts of the lower-case names of applications that a first flock is made of.
constexpr const char16_t *defaultFlock[] = {
    u"slack", u"granola", u"chatgpt", u"toggl", u"toggle", u"roam", u"hey", u"messages", u"signal",
};

bool isDefaultFlockName(const QString &name)
{
    const QString lower = name.toLower();
    return std::any_of(std::begin(defaultFlock), std::end(defaultFlock),
                       [&](const char16_t *part) { return lower.contains(QStringView(part)); });
}

// Lists windows, each number at most once.
class WindowLister
{
public:
    explicit WindowLister(const QList<Desktop> &desktops)
        : m_inventory(readInventory())
    {
        for (const Desktop &desktop : desktops)
            m_regular.insert(desktop.id);
    }

    void addWindowsOf(const NSRunningApplication &application, const QString &bundleIdentifier)
    {
        TravelWindow prototype;
        prototype.appID = bundleIdentifier;
        prototype.appName = application.localizedName().value_or(bundleIdentifier);
        prototype.title = ModelTexts::untitledWindow();
        const std::int32_t pid = application.processIdentifier();

        for (const AXUIElementRef &element : TApplicationWindows(pid)) {
            prototype.element = element;
            addElement(prototype, application);
        }
        prototype.element.reset();
        prototype.ownerPID = pid;
        for (const InventoryWindow &entry : m_inventory) {
            if (entry.pid != pid || !listFirst(entry.id))
                continue;
            TravelWindow window = prototype;
            window.id = entry.id;
            window.spaces = readWindowSpaces(entry.id);
            window.skipReason = MigrationRules::skipReason(entry.minimized.value_or(false), false,
                                                           window.spaces, m_regular);
            m_windows.append(window);
        }
    }

    const QList<TravelWindow> &windows() const { return m_windows; }

private:
    void addElement(TravelWindow window, const NSRunningApplication &application)
    {
        const auto subrole = text(read(window, QStringLiteral("AXSubrole")));
        if (subrole != QStringLiteral("AXStandardWindow") && subrole != QStringLiteral("AXDialog"))
            return;
        window.id = TWindowID(window.element);
        if (window.id == 0 || !listFirst(window.id))
            return;
        window.spaces = readWindowSpaces(window.id);
        const bool minimized = boolean(read(window, QStringLiteral("AXMinimized"))).value_or(false);
        const bool fullscreen
            = boolean(read(window, QStringLiteral("AXFullScreen"))).value_or(false);
        if (window.spaces.isEmpty() && !application.isHidden() && !minimized && !fullscreen
            && TWindowIsOrderedOut(window.id))
            return;
        window.title = text(read(window, QStringLiteral("AXTitle"))).value_or(window.title);
        window.skipReason
            = MigrationRules::skipReason(minimized, fullscreen, window.spaces, m_regular);
        m_windows.append(window);
    }

    static QVariant read(const TravelWindow &window, const QString &name)
    {
        return attribute(window.element, name).value_or(QVariant());
    }

    bool listFirst(std::uint32_t id)
    {
        const auto before = m_listed.size();
        m_listed.insert(id);
        return m_listed.size() != before;
    }

    QList<InventoryWindow> m_inventory;
    QSet<std::uint64_t> m_regular;
    QSet<std::uint32_t> m_listed;
    QList<TravelWindow> m_windows;
};

} // namespace

void TovelModel::refresh()
{
    if (m_busy)
        return;
    publish(m_trusted, m_platform.accessibility().AXIsProcessTrusted(), Property::trusted);
    publish(m_desktops, readDesktops(), Property::desktops);

    const QList<RunningApp> running = runningApps();
    m_choices.read();
    // Without windows to move, as where there is no session or it lets nobody see its windows, this
    // is not the first run yet.
    if (m_choices.lacksFlock() && available() && (m_trusted || !running.isEmpty())) {
        publish(m_apps, running, Property::apps);
        preselect(running);
    }
    showChoices();
    publish(m_apps, sortedApps(running + rememberedApps(running), m_selected, m_collator),
            Property::apps);
    publish(m_windows, m_trusted ? readWindows() : QList<TravelWindow>(), Property::windows);
}

QList<RunningApp> TovelModel::runningApps() const
{
    const QString own = m_platform.workspace().mainBundleIdentifier();
    QSet<QString> seen;
    QList<RunningApp> apps;
    for (const auto &application : m_platform.workspace().runningApplications()) {
        if (application->activationPolicy() != NSApplicationActivationPolicy::Regular)
            continue;
        const auto id = application->bundleIdentifier();
        if (!id || *id == own || seen.contains(*id))
            continue;
        seen.insert(*id);
        RunningApp app;
        app.id = *id;
        app.name = application->localizedName().value_or(*id);
        app.icon = application->icon();
        app.running = application;
        apps.append(app);
    }
    return apps;
}

void TovelModel::preselect(const QList<RunningApp> &running)
{
    QMap<QString, QString> flock;
    for (const RunningApp &app : running) {
        if (isDefaultFlockName(app.name))
            flock.insert(app.id, app.name);
    }
    m_choices.preselect(flock);
}

QList<RunningApp> TovelModel::rememberedApps(const QList<RunningApp> &running) const
{
    auto missing = m_selected;
    for (const RunningApp &app : running)
        missing.remove(app.id);
    QStringList ids(missing.cbegin(), missing.cend());
    ids.sort();
    QList<RunningApp> apps;
    for (const QString &id : ids) {
        RunningApp app;
        app.id = id;
        app.name = m_choices.current().appNames.value(id, id);
        apps.append(app);
    }
    return apps;
}

QList<TravelWindow> TovelModel::readWindows() const
{
    WindowLister lister(m_desktops);
    for (const auto &application : m_platform.workspace().runningApplications()) {
        const auto id = application->bundleIdentifier();
        if (id && m_selected.contains(*id))
            lister.addWindowsOf(*application, *id);
    }
    return lister.windows();
}

bool TovelModel::windowIsMovable(const TravelWindow &window) const
{
    if (window.element) {
        if (TWindowID(window.element) != window.id)
            return false;
        const auto value = attribute(window.element, QStringLiteral("AXFullScreen"));
        return boolean(value.value_or(QVariant())) != true;
    }
    if (!window.ownerPID)
        return false;
    const auto owner
        = m_platform.workspace().runningApplicationWithProcessIdentifier(*window.ownerPID);
    if (!owner || owner->bundleIdentifier() != window.appID)
        return false;
    const QList<InventoryWindow> inventory = readInventory();
    return std::any_of(inventory.cbegin(), inventory.cend(), [&](const InventoryWindow &entry) {
        return entry.id == window.id && entry.pid == *window.ownerPID;
    });
}

QList<RunningApp> TovelModel::chosenApps() const
{
    QList<RunningApp> result;
    std::ranges::copy_if(m_apps, std::back_inserter(result),
                         [this](const RunningApp &app) { return m_selected.contains(app.id); });
    return result;
}

QList<TravelWindow> TovelModel::traveling() const
{
    QList<TravelWindow> result;
    std::copy_if(m_windows.cbegin(), m_windows.cend(), std::back_inserter(result),
                 [](const TravelWindow &window) { return !window.skipReason; });
    return result;
}

QMap<std::uint64_t, int> TovelModel::distribution() const
{
    return MigrationRules::distribution(traveling());
}

std::optional<std::uint64_t> TovelModel::flockDesktopID() const
{
    return MigrationRules::flockDesktop(traveling());
}

bool TovelModel::available() const { return TAvailable(); }

} // namespace tovel
