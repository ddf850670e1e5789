#include "platform/simulated/simulated_desktop.h"

#include "platform/simulated/simulated_platform.h"
#include "platform/simulated/simulated_state.h"
#include "platform/simulated/simulated_window_server.h"

#include <algorithm>
#include <utility>

namespace tovel {

SimulatedDesktop::SimulatedDesktop(SimulatedDesktopOptions options)
{
    if (!options.clock) {
        m_clock = std::make_unique<VirtualClock>();
        options.clock = m_clock.get();
    }
    if (!options.userDefaults) {
        m_userDefaults = std::make_unique<MemoryUserDefaultsDomains>();
        m_userDefaults->suite(QStringLiteral("com.apple.dock"));
        options.userDefaults = m_userDefaults.get();
    }
    m_state = std::make_unique<SimulatedState>(*options.clock, *options.userDefaults);
    m_platform = std::make_unique<SimulatedPlatform>(*m_state);
    m_previous = simulatedwindowserver::setActiveDesktop(m_state.get());
    setFrameworkImage(MachOFault::None);
    m_state->images.insert(
        m_state->images.begin(),
        Image{QByteArrayLiteral("/usr/lib/libother.dylib"), MachOImage("_other", 0x1000)});
}

SimulatedDesktop::~SimulatedDesktop()
{
    const SimulatedState *last = simulatedwindowserver::setActiveDesktop(m_previous);
    Q_ASSERT(last == m_state.get());
    Q_UNUSED(last)
}

Platform &SimulatedDesktop::platform() { return *m_platform; }

VirtualClock &SimulatedDesktop::clock()
{
    Q_ASSERT(m_clock);
    return *m_clock;
}

MemoryUserDefaultsDomains &SimulatedDesktop::userDefaults()
{
    Q_ASSERT(m_userDefaults);
    return *m_userDefaults;
}

MemoryUserDefaults &SimulatedDesktop::dockDefaults()
{
    return userDefaults().suite(QStringLiteral("com.apple.dock"));
}

SimWorld &SimulatedDesktop::world() { return m_state->world; }

SimDisplay &SimulatedDesktop::addDisplay(SimDisplay display)
{
    return m_state->world.displays.emplace_back(std::move(display));
}

SimDisplay &SimulatedDesktop::display(const QString &identifier)
{
    auto &displays = m_state->world.displays;
    const auto found = std::ranges::find(displays, identifier, &SimDisplay::identifier);
    Q_ASSERT(found != displays.end());
    return *found;
}

SimWindow &SimulatedDesktop::addWindow(SimWindow window)
{
    return m_state->addWindow(std::move(window));
}

SimWindow &SimulatedDesktop::window(std::uint32_t number)
{
    SimWindow *found = m_state->findWindow(number);
    Q_ASSERT(found);
    return *found;
}

void SimulatedDesktop::removeWindow(std::uint32_t number)
{
    m_state->world.windows.remove_if(
        [number](const SimWindow &window) { return window.number == number; });
}

SimApplication &SimulatedDesktop::addApplication(SimApplication application)
{
    m_state->addApplication(std::move(application));
    return m_state->applications.last()->record;
}

SimApplication &SimulatedDesktop::application(std::int32_t pid)
{
    const auto found = m_state->findApplication(pid);
    Q_ASSERT(found);
    return found->record;
}

void SimulatedDesktop::quit(std::int32_t pid)
{
    const auto application = m_state->findApplication(pid);
    Q_ASSERT(application);
    application->state = nullptr;
    m_state->applications.removeOne(application);
    m_state->world.windows.remove_if([pid](const SimWindow &window) { return window.pid == pid; });
}

void SimulatedDesktop::showSpace(std::uint64_t space)
{
    Q_ASSERT(m_state->displayOfSpace(space));
    m_state->showSpace(space);
}

void SimulatedDesktop::postActiveSpaceDidChange() { m_state->notifyActiveSpace(); }

void SimulatedDesktop::after(double seconds, std::function<void()> action)
{
    m_state->after(seconds, std::move(action));
}

void SimulatedDesktop::onMoveRequested(
    std::function<void(std::uint32_t window, std::uint64_t space)> hook)
{
    m_state->moveHook = std::move(hook);
}

void SimulatedDesktop::alterReply(const QByteArray &call, std::function<Reply(Reply)> alter)
{
    m_state->alterations.insert(call, std::move(alter));
}

void SimulatedDesktop::replaceReply(const QByteArray &call, Reply reply)
{
    alterReply(call, [reply = std::move(reply)](const Reply &) { return reply; });
}

void SimulatedDesktop::dropSymbol(const QByteArray &name)
{
    m_state->droppedSymbols.insert(name);
    if (name == submitMoveSymbol())
        setFrameworkImage(MachOFault::NoTarget);
}

const char *SimulatedDesktop::submitMoveSymbol()
{
    return "__ZL54SLSPerformAsynchronousBridgedWindowManagementOperation"
           "P47SLSAsynchronousBridgedWindowManagementOperation";
}

std::uint64_t SimulatedDesktop::submitMoveAddress()
{
    return reinterpret_cast<std::uintptr_t>(simulatedwindowserver::submitMoveEntry());
}

QByteArray SimulatedDesktop::frameworkImagePath()
{
    return QByteArrayLiteral(
        "/System/Library/PrivateFrameworks/SkyLight.framework/Versions/A/SkyLight");
}

void SimulatedDesktop::setImages(std::vector<Image> images) { m_state->images = std::move(images); }

void SimulatedDesktop::setFrameworkImage(MachOFault fault)
{
    m_state->images.clear();
    m_state->images.push_back(
        {frameworkImagePath(), MachOImage(submitMoveSymbol(), submitMoveAddress(), fault)});
}

void SimulatedDesktop::takeHotKey(std::uint32_t keyCode, std::uint32_t modifiers)
{
    m_state->takenHotKeys.append({keyCode, modifiers});
}

QList<SimulatedDesktop::HotKey> SimulatedDesktop::registeredHotKeys() const
{
    QList<HotKey> result;
    for (const auto &[handle, hotKey] : m_state->hotKeys)
        result.append(hotKey);
    return result;
}

bool SimulatedDesktop::pressHotKey(std::uint32_t keyCode, std::uint32_t modifiers)
{
    const auto pressed = std::ranges::any_of(m_state->hotKeys, [=](const auto &entry) {
        return entry.second.keyCode == keyCode && entry.second.modifiers == modifiers;
    });
    if (!pressed)
        return false;
    // The handler installed last is asked first. A copy, because handlers may install others.
    auto handlers = m_state->hotKeyHandlers;
    std::ranges::reverse(handlers);
    return std::ranges::any_of(handlers, [](const SimulatedState::Handler &handler) {
        return handler.function(nullptr, nullptr, handler.userData) == noErr;
    });
}

QStringList SimulatedDesktop::takeJournal() { return std::exchange(m_state->journal, {}); }

QStringList SimulatedDesktop::takeLookups() { return std::exchange(m_state->lookups, {}); }

QList<std::uint64_t> SimulatedDesktop::takeProbes(std::int32_t pid)
{
    QList<std::uint64_t> result;
    m_state->probes.removeIf([pid, &result](const auto &probe) {
        if (probe.first == pid)
            result.append(probe.second);
        return probe.first == pid;
    });
    return result;
}

QList<SimulatedDesktop::MessagingTimeout> SimulatedDesktop::takeMessagingTimeouts()
{
    return std::exchange(m_state->timeouts, {});
}

int SimulatedDesktop::calls(const QByteArray &name) const
{
    return m_state->callCounts.value(name);
}

void SimulatedDesktop::setRecording(bool on) { m_state->recording = on; }

} // namespace tovel
