#include "bridge/bridge.h"
#include "model/readings.h"
#include "model/tovel_model.h"
#include "platform/accessibility.h"
#include "platform/quartz.h"
#include "platform/sleep.h"
#include "platform/user_defaults.h"
#include "platform/variants.h"

#include <QPointer>

#include <algorithm>

namespace tovel {

namespace {

constexpr double pollInterval = 0.1;
constexpr double settleDelay = 0.35;
constexpr int mostPollsPerStep = 30;
constexpr int mostPollsPerJump = 25;
constexpr int mostSteps = 32;

// Edges at the left and top belong to the display, those at the right and bottom to its neighbours.
bool holds(const QRectF &bounds, QPointF point)
{
    return point.x() >= bounds.left() && point.x() < bounds.left() + bounds.width()
        && point.y() >= bounds.top() && point.y() < bounds.top() + bounds.height();
}

bool isMinimized(const TravelWindow &window)
{
    if (window.element) {
        const auto value = attribute(window.element, QStringLiteral("AXMinimized"));
        return boolean(value.value_or(QVariant())).value_or(true);
    }
    const QList<InventoryWindow> inventory = readInventory();
    return std::none_of(inventory.cbegin(), inventory.cend(), [&](const InventoryWindow &entry) {
        return entry.id == window.id && entry.minimized == false;
    });
}

} // namespace

std::optional<TovelModel::Route> TovelModel::route(const Desktop &desktop) const
{
    const QList<ManagedDisplay> displays = readDisplays();
    const auto display
        = std::find_if(displays.cbegin(), displays.cend(), [&](const ManagedDisplay &candidate) {
              return candidate.identifier == desktop.display;
          });
    if (display == displays.cend() || !display->currentSpace || !display->spaces)
        return std::nullopt;
    QList<std::uint64_t> row;
    for (const QVariantMap &space : *display->spaces) {
        if (const auto id = spaceID(space))
            row.append(*id);
    }
    const Route result{row.indexOf(*display->currentSpace), row.indexOf(desktop.id)};
    if (result.current < 0 || result.target < 0)
        return std::nullopt;
    return result;
}

// Gives the place to put the cursor back to, if it was moved.
std::optional<QPointF> TovelModel::moveCursorTo(const Desktop &desktop)
{
    Quartz &quartz = m_platform.quartz();
    const auto event = quartz.CGEventCreate();
    if (!event)
        return std::nullopt;
    const QRectF bounds = quartz.CGDisplayBounds(desktop.displayID);
    if (holds(bounds, event->location))
        return std::nullopt;
    quartz.CGWarpMouseCursorPosition(bounds.center());
    return event->location;
}

QCoro::Task<bool> TovelModel::switchDesktop(Desktop desktop, std::optional<TravelWindow> window)
{
    if (!m_platform.accessibility().AXIsProcessTrusted() || desktop.displayID == 0)
        co_return false;
    const QPointer<TovelModel> guard(this);
    const std::optional<QPointF> cursor = moveCursorTo(desktop);
    const bool shown = co_await bringUp(desktop, window);
    if (!guard)
        co_return false;
    if (cursor)
        m_platform.quartz().CGWarpMouseCursorPosition(*cursor);
    co_return shown;
}

QCoro::Task<bool> TovelModel::bringUp(Desktop desktop, std::optional<TravelWindow> window)
{
    const QPointer<TovelModel> guard(this);
    const auto start = route(desktop);
    if (start && start->current == start->target)
        co_return true;
    if (window) {
        const bool shown = co_await jumpDirectly(desktop, *window);
        if (shown || !guard || isStopping())
            co_return shown;
    }
    const bool shown = co_await stepTo(desktop);
    co_return shown;
}

QCoro::Task<bool> TovelModel::stepTo(Desktop desktop)
{
    const QPointer<TovelModel> guard(this);
    Clock &clock = m_platform.clock();
    for (int step = 0; step < mostSteps; ++step) {
        const auto before = route(desktop);
        if (!before)
            co_return false;
        if (before->current == before->target)
            co_return true;
        const std::int64_t serial = m_spaceChangeSerial;
        if (!TPostDesktopStep(before->current < before->target))
            co_return false;
        const bool arrived = co_await stepArrived(desktop, before->current, serial);
        if (!arrived || !guard)
            co_return false;
        co_await Sleep(clock, settleDelay);
        if (!guard || isStopping())
            co_return false;
    }
    co_return false;
}

QCoro::Task<bool> TovelModel::stepArrived(Desktop desktop, std::int64_t from, std::int64_t serial)
{
    const QPointer<TovelModel> guard(this);
    Clock &clock = m_platform.clock();
    for (int poll = 0; poll < mostPollsPerStep; ++poll) {
        co_await Sleep(clock, pollInterval);
        if (!guard || isStopping())
            co_return false;
        const auto now = route(desktop);
        if (!now)
            co_return false;
        if (m_spaceChangeSerial > serial && now->current != from)
            co_return true;
    }
    co_return false;
}

bool TovelModel::mayJump(const Desktop &desktop, const TravelWindow &window) const
{
    if (isMinimized(window))
        return false;
    const UserDefaults *dock
        = m_platform.userDefaults().initWithSuiteName(QStringLiteral("com.apple.dock"));
    if (dock
        && dock->dictionaryRepresentation().boolean(QStringLiteral("workspaces-auto-swoosh"))
            == false)
        return false;
    return windowIsMovable(window)
        && readWindowSpaces(window.id) == QList<std::uint64_t>{desktop.id};
}

NSRunningApplicationRef TovelModel::ownerOf(const TravelWindow &window) const
{
    std::int32_t pid = window.ownerPID.value_or(0);
    if (window.element) {
        const auto owner = m_platform.accessibility().AXUIElementGetPid(window.element);
        if (owner.error != kAXErrorSuccess)
            return nullptr;
        pid = owner.pid;
    }
    return m_platform.workspace().runningApplicationWithProcessIdentifier(pid);
}

QCoro::Task<bool> TovelModel::jumpDirectly(Desktop desktop, TravelWindow window)
{
    if (!mayJump(desktop, window))
        co_return false;
    const NSRunningApplicationRef owner = ownerOf(window);
    if (!owner)
        co_return false;
    const QPointer<TovelModel> guard(this);
    Clock &clock = m_platform.clock();
    const std::int64_t serial = m_spaceChangeSerial;
    if (window.element) {
        Accessibility &accessibility = m_platform.accessibility();
        accessibility.AXUIElementSetAttributeValue(window.element, QStringLiteral("AXMain"), true);
        accessibility.AXUIElementPerformAction(window.element, QStringLiteral("AXRaise"));
    }
    if (!owner->activateWithOptions(0))
        co_return false;
    for (int poll = 0; poll < mostPollsPerJump; ++poll) {
        co_await Sleep(clock, pollInterval);
        if (!guard || isStopping())
            co_return false;
        const auto now = route(desktop);
        if (!now)
            co_return false;
        if (m_spaceChangeSerial > serial && now->current == now->target) {
            co_await Sleep(clock, settleDelay);
            co_return !guard.isNull();
        }
    }
    co_return false;
}

} // namespace tovel
