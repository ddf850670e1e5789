#pragma once

#include "platform/clock.h"
#include "platform/hot_keys.h"
#include "platform/simulated/simulated_desktop.h"
#include "platform/workspace.h"

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tovel {

struct SimulatedState;

// The handle of an application, which keeps the facts of it.
class SimRunningApplication final : public NSRunningApplication
{
public:
    SimRunningApplication(SimulatedState &desktop, SimApplication facts);

    std::int32_t processIdentifier() const override { return record.pid; }
    std::optional<QString> bundleIdentifier() const override { return record.bundleIdentifier; }
    std::optional<QString> localizedName() const override { return record.name; }
    std::optional<NSImage> icon() const override { return record.icon; }
    NSApplicationActivationPolicy activationPolicy() const override { return record.policy; }
    bool isHidden() const override { return record.hidden; }
    bool isTerminated() const override { return !state; }
    std::optional<QDateTime> launchDate() const override { return record.launchDate; }
    bool activateWithOptions(std::uint32_t options) override;

    SimApplication record;
    SimulatedState *state; // null from its end on
};

// What the parts of the simulated desktop share: the world, what was recorded of it, and the
// changes that more than one part brings about.
struct SimulatedState
{
    SimulatedState(Clock &clock, UserDefaultsDomains &userDefaults);
    ~SimulatedState();

    SimulatedState(const SimulatedState &) = delete;
    SimulatedState &operator=(const SimulatedState &) = delete;

    // Look-ups; null for what is not there.
    SimDisplay *displayOfSpace(std::uint64_t space);
    const SimDisplay *displayNumbered(std::uint32_t number) const;
    SimWindow *findWindow(std::uint32_t number);
    std::shared_ptr<SimRunningApplication> findApplication(std::int32_t pid) const;

    SimWindow &addWindow(SimWindow window);
    void addApplication(SimApplication application);
    void raiseWindow(std::uint32_t number);
    std::int32_t freePid() const;
    std::uint32_t freeWindowNumber() const;

    void requestMove(const QList<std::uint32_t> &windows, std::uint64_t space);
    void step(const QString &display, bool toRight);
    void bringToFront(const SimRunningApplication &application);
    void showSpace(std::uint64_t space);
    void notifyActiveSpace();

    void after(double seconds, std::function<void()> action);

    SimulatedDesktop::Reply altered(const QByteArray &call, SimulatedDesktop::Reply genuine) const;
    void count(const QByteArray &call) { ++callCounts[call]; }
    void note(const QString &line);

    Clock &clock;
    UserDefaultsDomains &userDefaults;
    VirtualClock *virtualClock; // the clock, where it is one
    SimWorld world;
    std::uint64_t identity; // tells the elements of this desktop from those of others
    QList<std::shared_ptr<SimRunningApplication>> applications;
    // Tells windows that have the same number one after the other.
    QHash<std::uint32_t, std::uint64_t> windowSerials;
    std::vector<std::weak_ptr<std::function<void()>>> spaceObservers;
    std::function<void(std::uint32_t, std::uint64_t)> moveHook;

    QHash<QByteArray, std::function<SimulatedDesktop::Reply(SimulatedDesktop::Reply)>> alterations;
    QSet<QByteArray> droppedSymbols;
    std::vector<SimulatedDesktop::Image> images;
    QHash<std::uint32_t, std::uint64_t> spaceTags; // tag to the space that carries it

    struct Handler
    {
        OSStatus (*function)(void *, void *, void *) = nullptr;
        void *userData = nullptr;
    };
    std::vector<Handler> hotKeyHandlers;
    std::map<std::uint64_t, SimulatedDesktop::HotKey> hotKeys;
    QList<std::pair<std::uint32_t, std::uint32_t>> takenHotKeys;

    bool recording = true;
    QStringList journal;
    QStringList lookups;
    QList<std::pair<std::int32_t, std::uint64_t>> probes; // pid, element id
    QList<SimulatedDesktop::MessagingTimeout> timeouts;
    QHash<QByteArray, int> callCounts;

private:
    struct Pending
    {
        std::unique_ptr<Timer> timer;
        std::function<void()> action;
    };
    std::map<std::uint64_t, Pending> m_pending;
    std::uint64_t m_lastPending = 0;
    std::uint64_t m_lastSerial = 0;
};

} // namespace tovel
