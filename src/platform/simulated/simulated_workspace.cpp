#include "platform/simulated/simulated_workspace.h"

#include "platform/simulated/simulated_state.h"

#include <algorithm>

namespace tovel {

namespace {

std::shared_ptr<SimRunningApplication> runningInstance(const SimulatedState &state,
                                                       const QString &bundleIdentifier)
{
    for (const auto &application : state.applications) {
        if (application->record.bundleIdentifier == bundleIdentifier)
            return application;
    }
    return nullptr;
}

// An application that runs already comes to the front instead.
void start(SimulatedState &state, const SimInstalledApplication &installed)
{
    if (const auto running = runningInstance(state, installed.bundleIdentifier)) {
        state.bringToFront(*running);
        return;
    }
    SimApplication application = installed.application;
    if (application.pid == 0)
        application.pid = state.freePid();
    if (!application.bundleIdentifier)
        application.bundleIdentifier = installed.bundleIdentifier;
    const auto pid = application.pid;
    state.addApplication(std::move(application));
    for (SimWindow window : installed.windows) {
        window.pid = pid;
        if (window.number == 0)
            window.number = state.freeWindowNumber();
        state.addWindow(std::move(window));
    }
}

} // namespace

SimulatedWorkspace::SimulatedWorkspace(SimulatedState &state)
    : m_state(state)
{ }

QList<NSRunningApplicationRef> SimulatedWorkspace::runningApplications() const
{
    return {m_state.applications.begin(), m_state.applications.end()};
}

NSRunningApplicationRef SimulatedWorkspace::runningApplicationWithProcessIdentifier(
    std::int32_t pid) const
{
    return m_state.findApplication(pid);
}

std::optional<QUrl> SimulatedWorkspace::URLForApplicationWithBundleIdentifier(
    const QString &bundleIdentifier) const
{
    const auto &installed = m_state.world.installed;
    const auto found = std::ranges::find(installed, bundleIdentifier,
                                         &SimInstalledApplication::bundleIdentifier);
    return found == installed.end() ? std::nullopt : std::optional(found->location);
}

std::optional<QString> SimulatedWorkspace::localizedNameOfApplicationAtURL(
    const QUrl &location) const
{
    const auto &installed = m_state.world.installed;
    const auto found = std::ranges::find(installed, location, &SimInstalledApplication::location);
    return found == installed.end() ? std::nullopt : found->application.name;
}

void SimulatedWorkspace::openApplicationAtURL(const QUrl &location, LaunchHandler handler)
{
    m_state.note(QStringLiteral("open ") + location.toString());
    const auto &installed = m_state.world.installed;
    const auto found = std::ranges::find(installed, location, &SimInstalledApplication::location);
    if (found == installed.end()) {
        m_state.after(0, [handler = std::move(handler)] {
            handler(QStringLiteral("There is no application at this place."));
        });
        return;
    }
    m_state.after(found->launchDelay,
                  [state = &m_state, application = *found, handler = std::move(handler)] {
                      if (!application.launchFailure)
                          start(*state, application);
                      handler(application.launchFailure);
                  });
}

void SimulatedWorkspace::openAccessibilitySettings() { m_state.note(QStringLiteral("settings")); }

QList<NSScreen> SimulatedWorkspace::screens() const
{
    QList<NSScreen> result;
    for (const SimDisplay &display : m_state.world.displays) {
        if (display.hasScreen)
            result.append({display.number, display.name});
    }
    return result;
}

Subscription SimulatedWorkspace::observeActiveSpaceDidChange(std::function<void()> handler)
{
    auto observer = std::make_shared<std::function<void()>>(std::move(handler));
    m_state.spaceObservers.push_back(observer);
    return observer;
}

QString SimulatedWorkspace::mainBundleIdentifier() const
{
    return m_state.world.mainBundleIdentifier;
}

} // namespace tovel
