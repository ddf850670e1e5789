#include "platform/session/kwin/windows.h"

#include "platform/session/kwin/connection.h"
#include "platform/session/kwin/told_texts.h"

#include <plasma-window-management-client.h>

#include <algorithm>

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
    .title_changed
    = [](void *data, Proxy *, const char *title) { put(data, &Window::title, toldText(title)); },
    .app_id_changed
    = [](void *data, Proxy *, const char *id) { put(data, &Window::application, toldText(id)); },
    .state_changed
    = [](void *data, Proxy *, std::uint32_t states) { put(data, &Window::states, states); },
    .virtual_desktop_changed = [](void *, Proxy *, std::int32_t) {},
    .themed_icon_name_changed = [](void *, Proxy *, const char *) {},
    .unmapped = [](void *data, Proxy *) { entryOf(data).owner->remove(entryOf(data)); },
    .initial_state = beKnown,
    .parent_window
    = [](void *data, Proxy *, Proxy *parent) { entryOf(data).owner->adopt(entryOf(data), parent); },
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
};

constexpr org_kde_plasma_window_management_listener ManagementListener{
    .show_desktop_changed = [](void *, Management *, std::uint32_t) {},
    .window = [](void *data, Management *,
                 std::uint32_t counter) { static_cast<Windows *>(data)->add(counter); },
    .stacking_order_changed =
        [](void *data, Management *, wl_array *counters) {
            static_cast<Windows *>(data)->restack(
                {static_cast<const std::uint32_t *>(counters->data),
                 counters->size / sizeof(std::uint32_t)});
        },
};

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

Windows::Windows(Connection &connection, Management *management, std::uint64_t &changes,
                 std::uint32_t &nextId)
    : m_connection(connection)
    , m_management(management)
    , m_changes(changes)
    , m_nextId(nextId)
{
    org_kde_plasma_window_management_add_listener(m_management, &ManagementListener, this);
}

Windows::~Windows()
{
    for (const auto &entry : m_entries)
        destroyProxies(*entry);
    org_kde_plasma_window_management_destroy(m_management);
}

void Windows::add(std::uint32_t counter)
{
    if (m_entries.size() >= MaximumWindows) {
        m_hasMore = true;
        return;
    }
    auto entry = std::make_unique<Entry>(
        Entry{.owner = this, .counter = counter, .window = {.id = m_nextId++}});
    entry->proxy = org_kde_plasma_window_management_get_window(m_management, counter);
    org_kde_plasma_window_add_listener(entry->proxy, &WindowListener, entry.get());
    m_connection.expectMore();
    m_entries.push_back(std::move(entry));
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

void Windows::restack(std::span<const std::uint32_t> counters)
{
    m_stacking.assign(counters.begin(), counters.end());
    ++m_changes;
}

void Windows::adopt(Entry &entry, Proxy *parent)
{
    // Of a window that is gone, the library gives none.
    void *data = parent ? org_kde_plasma_window_get_user_data(parent) : nullptr;
    put(&entry, &Window::parent, data ? entryOf(data).window.id : 0U);
}

bool Windows::askForParents()
{
    bool hasAsked = false;
    for (const auto &entry : m_entries) {
        if (entry->window.parent != 0 || entry->copy)
            continue;
        entry->copy = org_kde_plasma_window_management_get_window(m_management, entry->counter);
        org_kde_plasma_window_add_listener(entry->copy, &WindowListener, entry.get());
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
        if ((*entry)->isKnown && std::ranges::count(m_stacking, (*entry)->counter) == 0)
            order.push_back((*entry)->window.id);
    }
    for (auto counter = m_stacking.rbegin(); counter != m_stacking.rend(); ++counter) {
        const auto found = std::ranges::find(m_entries, *counter,
                                             [](const auto &entry) { return entry->counter; });
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
