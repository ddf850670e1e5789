#include "platform/simulated/simulated_state.h"

#include "platform/user_defaults.h"

#include <algorithm>

namespace tovel {

namespace {

std::uint64_t lastIdentity = 0;

} // namespace

SimRunningApplication::SimRunningApplication(SimulatedState &desktop, SimApplication facts)
    : record(std::move(facts))
    , state(&desktop)
{ }

bool SimRunningApplication::activateWithOptions(std::uint32_t)
{
    if (!state)
        return false;
    state->note(QStringLiteral("activate %1").arg(record.pid));
    if (record.activation == SimActivation::Refused)
        return false;
    if (record.activation == SimActivation::Switches) {
        const auto self = state->findApplication(record.pid);
        state->after(record.activationDelay, [self] {
            if (self->state)
                self->state->bringToFront(*self);
        });
    }
    return true;
}

SimulatedState::SimulatedState(Clock &clockOfDesktop, UserDefaultsDomains &defaultsOfDesktop)
    : clock(clockOfDesktop)
    , userDefaults(defaultsOfDesktop)
    , virtualClock(dynamic_cast<VirtualClock *>(&clockOfDesktop))
    , identity(++lastIdentity)
{ }

SimulatedState::~SimulatedState()
{
    for (const auto &application : std::as_const(applications))
        application->state = nullptr;
}

SimDisplay *SimulatedState::displayOfSpace(std::uint64_t space)
{
    const auto found = std::ranges::find_if(world.displays, [space](const SimDisplay &display) {
        return std::ranges::find(display.spaces, space, &SimSpace::id) != display.spaces.end();
    });
    return found == world.displays.end() ? nullptr : &*found;
}

const SimDisplay *SimulatedState::displayNumbered(std::uint32_t number) const
{
    const auto found
        = std::ranges::find(world.displays, std::optional(number), &SimDisplay::number);
    return found == world.displays.end() ? nullptr : &*found;
}

SimWindow *SimulatedState::findWindow(std::uint32_t number)
{
    const auto found = std::ranges::find(world.windows, number, &SimWindow::number);
    return found == world.windows.end() ? nullptr : &*found;
}

std::shared_ptr<SimRunningApplication> SimulatedState::findApplication(std::int32_t pid) const
{
    for (const auto &application : applications) {
        if (application->record.pid == pid)
            return application;
    }
    return nullptr;
}

SimWindow &SimulatedState::addWindow(SimWindow window)
{
    Q_ASSERT(!findWindow(window.number));
    windowSerials.insert(window.number, ++m_lastSerial);
    return world.windows.emplace_back(std::move(window));
}

void SimulatedState::addApplication(SimApplication application)
{
    Q_ASSERT(!findApplication(application.pid));
    applications.append(std::make_shared<SimRunningApplication>(*this, std::move(application)));
}

void SimulatedState::raiseWindow(std::uint32_t number)
{
    const auto found = std::ranges::find(world.windows, number, &SimWindow::number);
    if (found != world.windows.end())
        world.windows.splice(world.windows.begin(), world.windows, found);
}

std::int32_t SimulatedState::freePid() const
{
    std::int32_t pid = 1000;
    while (findApplication(pid))
        ++pid;
    return pid;
}

std::uint32_t SimulatedState::freeWindowNumber() const
{
    std::uint32_t number = 1000;
    for (const SimWindow &window : world.windows)
        number = std::max(number, window.number + 1);
    return number;
}

void SimulatedState::requestMove(const QList<std::uint32_t> &windows, std::uint64_t space)
{
    for (const std::uint32_t number : windows) {
        if (moveHook)
            moveHook(number, space);
        const SimWindow *window = findWindow(number);
        if (!window || window->fullScreen || window->move == SimMove::Never
            || !displayOfSpace(space))
            continue;
        const auto target = window->move == SimMove::Elsewhere ? window->elsewhere : space;
        const auto serial = windowSerials.value(number);
        const auto arrive = [this, number, serial, target] {
            SimWindow *arriving = findWindow(number);
            if (arriving && windowSerials.value(number) == serial)
                arriving->spaces = {target};
        };
        if (window->moveDelay > 0)
            after(window->moveDelay, arrive);
        else
            arrive();
    }
}

void SimulatedState::step(const QString &identifier, bool toRight)
{
    const auto display = std::ranges::find(world.displays, identifier, &SimDisplay::identifier);
    if (display == world.displays.end())
        return;
    const auto &spaces = display->spaces;
    const auto current = std::ranges::find(spaces, display->currentSpace, &SimSpace::id);
    if (current == spaces.end())
        return;
    const auto position = (current - spaces.begin()) + (toRight ? 1 : -1);
    if (position >= 0 && position < spaces.size())
        showSpace(spaces[position].id);
}

void SimulatedState::bringToFront(const SimRunningApplication &application)
{
    const auto pid = application.record.pid;
    const auto mayCome = [pid](const SimWindow *window) {
        return window && window->pid == pid && !window->minimized;
    };
    QList<std::uint32_t> ofApplication; // back to front, the chosen one last
    for (const SimWindow &window : world.windows) {
        if (mayCome(&window))
            ofApplication.prepend(window.number);
    }
    const SimWindow *main = findWindow(application.record.mainWindow.value_or(0));
    if (mayCome(main)) {
        ofApplication.removeOne(main->number);
        ofApplication.append(main->number);
    }
    for (const std::uint32_t number : std::as_const(ofApplication))
        raiseWindow(number);
    if (ofApplication.isEmpty())
        return;

    const UserDefaults *dock = userDefaults.initWithSuiteName(QStringLiteral("com.apple.dock"));
    if (dock
        && dock->dictionaryRepresentation().boolean(QStringLiteral("workspaces-auto-swoosh"))
            == false)
        return;
    const auto spaces = findWindow(ofApplication.last())->spaces;
    const bool isShown = std::ranges::any_of(spaces, [this](std::uint64_t space) {
        const SimDisplay *display = displayOfSpace(space);
        return display && display->currentSpace == space;
    });
    if (!isShown && !spaces.isEmpty())
        showSpace(spaces.first());
}

void SimulatedState::showSpace(std::uint64_t space)
{
    SimDisplay *display = displayOfSpace(space);
    if (!display || display->currentSpace == space)
        return;
    display->currentSpace = space;
    notifyActiveSpace();
}

void SimulatedState::notifyActiveSpace()
{
    std::erase_if(spaceObservers, [](const auto &observer) { return observer.expired(); });
    // A copy, because a handler may subscribe or end a subscription.
    const auto observers = spaceObservers;
    for (const auto &observer : observers) {
        if (const auto handler = observer.lock())
            (*handler)();
    }
}

void SimulatedState::after(double seconds, std::function<void()> action)
{
    const auto id = ++m_lastPending;
    auto timer = clock.startTimer(seconds, false, [this, id] {
        // Taken out first: the action may end the desktop, and the timer goes last.
        const auto pending = m_pending.extract(id);
        pending.mapped().action();
    });
    m_pending.emplace(id, Pending{std::move(timer), std::move(action)});
}

SimulatedDesktop::Reply SimulatedState::altered(const QByteArray &call,
                                                SimulatedDesktop::Reply genuine) const
{
    const auto alteration = alterations.constFind(call);
    return alteration == alterations.constEnd() ? genuine : (*alteration)(std::move(genuine));
}

void SimulatedState::note(const QString &line)
{
    if (recording)
        journal.append(line);
}

} // namespace tovel
