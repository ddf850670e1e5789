#include "platform/session/kwin/windows.h"

#include "platform/session/kwin/connection.h"
#include "platform/session/kwin/told_texts.h"
#include "texts/one_line.h"

#include <plasma-window-management-client.h>
#include <wayland-client.h>

#include <algorithm>
#include <span>

namespace tovel::kwin {

namespace {

using Proxy = org_kde_plasma_window;
using Management = org_kde_plasma_window_management;

Windows::Entry &entryOf(void *data) { return *static_cast<Windows::Entry *>(data); }

template <typename Value>
void put(void *data, Value Window::*field, const Value &value)
{
    Windows::Entry &entry = entryOf(data);
    entry.owner->changed(std::exchange(entry.window.*field, value) != value);
}

void leave(void *data, Proxy *, const char *uuid)
{
    Windows::Entry &entry = entryOf(data);
    entry.owner->changed(entry.window.desktops.removeAll(toldText(uuid)) > 0);
}

void enter(void *data, Proxy *, const char *uuid)
{
    Windows::Entry &entry = entryOf(data);
    const QString desktop = toldText(uuid);
    if (desktop.isEmpty() || entry.window.desktops.contains(desktop))
        return;
    entry.window.desktops.append(desktop);
    entry.owner->changed(true);
}

void beKnown(void *data, Proxy *)
{
    Windows::Entry &entry = entryOf(data);
    entry.owner->changed(!std::exchange(entry.isKnown, true));
}

// Those that are left out came later than the version that is asked for.
constexpr org_kde_plasma_window_listener WindowListener{
    .title_changed = [](void *data, Proxy *,
                        const char *title) { put(data, &Window::title, oneLine(toldText(title))); },
    .app_id_changed
    = [](void *data, Proxy *, const char *id) { put(data, &Window::application, toldText(id)); },
    .state_changed
    = [](void *data, Proxy *, std::uint32_t states) { put(data, &Window::states, states); },
    .virtual_desktop_changed = [](void *, Proxy *, std::int32_t) {},
    .themed_icon_name_changed = [](void *, Proxy *, const char *) {},
    .unmapped = [](void *data, Proxy *) { entryOf(data).owner->remove(entryOf(data)); },
    .initial_state = beKnown,
    .parent_window
    = [](void *data, Proxy *proxy,
         Proxy *parent) { entryOf(data).owner->adopt(entryOf(data), proxy, parent); },
    .geometry
    = [](void *data, Proxy *, std::int32_t x, std::int32_t y, std::uint32_t width,
         std::uint32_t height) { put(data, &Window::frame, QRectF(x, y, width, height)); },
    .icon_changed = [](void *, Proxy *) {},
    .pid_changed =
        [](void *data, Proxy *, std::uint32_t process) {
            put(data, &Window::process, static_cast<std::int32_t>(process));
        },
    .virtual_desktop_entered = enter,
    .virtual_desktop_left = leave,
    .application_menu = [](void *, Proxy *, const char *, const char *) {},
    .activity_entered = [](void *, Proxy *, const char *) {},
    .activity_left = [](void *, Proxy *, const char *) {},
    .resource_name_changed = [](void *, Proxy *, const char *) {},
};

constexpr org_kde_plasma_window_management_listener ManagementListener{
    .show_desktop_changed = [](void *, Management *, std::uint32_t) {},
    .window = [](void *data, Management *,
                 std::uint32_t counter) { static_cast<Windows *>(data)->add(counter, ""); },
    .stacking_order_changed =
        [](void *data, Management *, wl_array *counters) {
            std::vector<QByteArray> keys;
            const auto *first = static_cast<const std::uint32_t *>(counters->data);
            for (const std::uint32_t counter :
                 std::span(first, counters->size / sizeof(std::uint32_t)))
                keys.push_back(QByteArray::number(counter));
            static_cast<Windows *>(data)->restack(std::move(keys));
        },
    .stacking_order_uuid_changed =
        [](void *data, Management *, const char *uuids) {
            const auto keys = QByteArray(uuids).split(';');
            static_cast<Windows *>(data)->restack({keys.begin(), keys.end()});
        },
    .window_with_uuid = [](void *data, Management *, std::uint32_t counter,
                           const char *uuid) { static_cast<Windows *>(data)->add(counter, uuid); },
#ifdef ORG_KDE_PLASMA_WINDOW_MANAGEMENT_GET_STACKING_ORDER_SINCE_VERSION
    .stacking_order_changed_2
    = [](void *data, Management *) { static_cast<Windows *>(data)->askForOrder(); },
#endif
};

#ifdef ORG_KDE_PLASMA_WINDOW_MANAGEMENT_GET_STACKING_ORDER_SINCE_VERSION
constexpr org_kde_plasma_stacking_order_listener OrderListener{
    .window = [](void *data, org_kde_plasma_stacking_order *proxy,
                 const char *uuid) { static_cast<Windows *>(data)->nextInOrder(proxy, uuid); },
    .done
    = [](void *data,
         org_kde_plasma_stacking_order *proxy) { static_cast<Windows *>(data)->takeOrder(proxy); },
};

constexpr std::uint32_t OrderVersion
    = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_GET_STACKING_ORDER_SINCE_VERSION;
#else
// The protocol's files on the machine of the build know no later one.
constexpr std::uint32_t OrderVersion = 16;
#endif

} // namespace

bool Window::isActive() const { return states & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE; }

bool Window::isMinimized() const
{
    return states & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MINIMIZED;
}

bool Window::isFullScreen() const
{
    return states & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_FULLSCREEN;
}

bool Window::isOnAllDesktops() const
{
    return states & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ON_ALL_DESKTOPS;
}

bool Window::skipsTaskBar() const
{
    return states & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_SKIPTASKBAR;
}

std::uint32_t Windows::versionOf(std::uint32_t offered)
{
    constexpr std::uint32_t last = 16; // that KWin 5.27 offers
    constexpr std::uint32_t withNumbers = 11;
    return offered > last ? OrderVersion : std::min(offered, withNumbers);
}

Windows::Windows(Connection &connection, Management *management, std::uint64_t &changes,
                 std::uint32_t &lastId)
    : m_connection(connection)
    , m_management(management)
    , m_changes(changes)
    , m_lastId(lastId)
    , m_before(lastId)
{
    org_kde_plasma_window_management_add_listener(m_management, &ManagementListener, this);
    askForOrder();
}

Windows::~Windows()
{
    for (const auto &entry : m_entries)
        destroyProxies(*entry);
    for (const Order &order : m_orders)
        wl_proxy_destroy(reinterpret_cast<wl_proxy *>(order.proxy));
    org_kde_plasma_window_management_destroy(m_management);
}

void Windows::add(std::uint32_t counter, const char *uuid)
{
    if (m_entries.size() >= MaximumWindows) {
        m_hasMore = true;
        return;
    }
    auto entry = std::make_unique<Entry>(Entry{
        .owner = this, .counter = counter, .key = uuid, .window = {.id = m_before + counter}});
    m_lastId = std::max(m_lastId, entry->window.id);
    if (entry->key.isEmpty())
        entry->key = QByteArray::number(counter);
    entry->proxy = ask(*entry);
    m_entries.push_back(std::move(entry));
}

Proxy *Windows::ask(Entry &entry)
{
    const bool hasUuid = org_kde_plasma_window_management_get_version(m_management)
        >= ORG_KDE_PLASMA_WINDOW_MANAGEMENT_WINDOW_WITH_UUID_SINCE_VERSION;
    Proxy *proxy = hasUuid
        ? org_kde_plasma_window_management_get_window_by_uuid(m_management, entry.key)
        : org_kde_plasma_window_management_get_window(m_management, entry.counter);
    org_kde_plasma_window_add_listener(proxy, &WindowListener, &entry);
    m_connection.expectMore();
    return proxy;
}

void Windows::remove(Entry &entry)
{
    destroyProxies(entry);
    const std::uint32_t id = entry.window.id;
    std::erase_if(m_entries, [&entry](const auto &other) { return other.get() == &entry; });
    for (const auto &other : m_entries) {
        if (other->window.parent == id)
            other->window.parent = 0;
    }
    ++m_changes;
}

void Windows::destroyProxies(Entry &entry)
{
    org_kde_plasma_window_destroy(entry.proxy);
    if (entry.copy)
        org_kde_plasma_window_destroy(entry.copy);
}

void Windows::restack(std::vector<QByteArray> keys)
{
    if (m_stacking == keys)
        return;
    m_stacking = std::move(keys);
    ++m_changes;
}

void Windows::askForOrder()
{
#ifdef ORG_KDE_PLASMA_WINDOW_MANAGEMENT_GET_STACKING_ORDER_SINCE_VERSION
    if (org_kde_plasma_window_management_get_version(m_management) < OrderVersion)
        return;
    auto *proxy = org_kde_plasma_window_management_get_stacking_order(m_management);
    org_kde_plasma_stacking_order_add_listener(proxy, &OrderListener, this);
    m_orders.push_back({proxy, {}});
    m_connection.expectMore();
#endif
}

void Windows::nextInOrder(org_kde_plasma_stacking_order *proxy, const char *uuid)
{
    const auto order = std::ranges::find(m_orders, proxy, &Order::proxy);
    if (order->keys.size() < MaximumWindows)
        order->keys.emplace_back(uuid);
}

void Windows::takeOrder(org_kde_plasma_stacking_order *proxy)
{
    const auto order = std::ranges::find(m_orders, proxy, &Order::proxy);
    restack(std::move(order->keys));
    m_orders.erase(order);
    wl_proxy_destroy(reinterpret_cast<wl_proxy *>(proxy));
}

void Windows::adopt(Entry &entry, Proxy *proxy, Proxy *parent)
{
    // Of a window that is gone, the library gives none.
    void *data = parent ? org_kde_plasma_window_get_user_data(parent) : nullptr;
    put(&entry, &Window::parent, data ? entryOf(data).window.id : 0U);
    if (proxy == entry.proxy)
        entry.isParentSure = data != nullptr;
}

bool Windows::askForParents()
{
    bool hasAsked = false;
    for (const auto &entry : m_entries) {
        if (!entry->isKnown || entry->copy || std::exchange(entry->isParentSure, true))
            continue;
        entry->copy = ask(*entry);
        hasAsked = true;
    }
    return hasAsked;
}

void Windows::forgetCopies()
{
    for (const auto &entry : m_entries) {
        if (entry->copy)
            org_kde_plasma_window_destroy(std::exchange(entry->copy, nullptr));
    }
}

std::vector<const Window *> Windows::list() const
{
    std::vector<const Window *> windows;
    for (const auto &entry : m_entries) {
        if (entry->isKnown)
            windows.push_back(&entry->window);
    }
    return windows;
}

const Window *Windows::find(std::uint32_t id) const
{
    const Entry *found = entry(id);
    return found ? &found->window : nullptr;
}

std::vector<std::uint32_t> Windows::stackingOrder() const
{
    std::vector<std::uint32_t> order;
    // Of a window that has just come, the order does not tell yet.
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry) {
        if ((*entry)->isKnown && std::ranges::count(m_stacking, (*entry)->key) == 0)
            order.push_back((*entry)->window.id);
    }
    for (auto key = m_stacking.rbegin(); key != m_stacking.rend(); ++key) {
        const auto found
            = std::ranges::find(m_entries, *key, [](const auto &entry) { return entry->key; });
        if (found != m_entries.end() && (*found)->isKnown)
            order.push_back((*found)->window.id);
    }
    return order;
}

void Windows::enterDesktop(std::uint32_t window, const QString &uuid)
{
    org_kde_plasma_window_request_enter_virtual_desktop(entry(window)->proxy,
                                                        uuid.toUtf8().constData());
}

void Windows::leaveDesktop(std::uint32_t window, const QString &uuid)
{
    org_kde_plasma_window_request_leave_virtual_desktop(entry(window)->proxy,
                                                        uuid.toUtf8().constData());
}

void Windows::activate(std::uint32_t window)
{
    setState(window, ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE, true);
}

void Windows::setAbove(std::uint32_t window, bool on)
{
    setState(window, ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_KEEP_ABOVE, on);
}

void Windows::setState(std::uint32_t window, std::uint32_t state, bool on)
{
    org_kde_plasma_window_set_state(entry(window)->proxy, state, on ? state : 0);
}

Windows::Entry *Windows::entry(std::uint32_t id) const
{
    const auto found = std::ranges::find_if(
        m_entries, [id](const auto &entry) { return entry->window.id == id && entry->isKnown; });
    return found == m_entries.end() ? nullptr : found->get();
}

} // namespace tovel::kwin
