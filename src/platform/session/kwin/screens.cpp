#include "platform/session/kwin/screens.h"

#include "platform/session/built_in_screens.h"
#include "platform/session/kwin/connection.h"
#include "platform/session/kwin/told_texts.h"

#include <kde-output-order-v1-client.h>
#include <wayland-client.h>
#include <xdg-output-unstable-v1-client.h>

#include <algorithm>

namespace tovel::kwin {

namespace {

constexpr std::size_t MaximumScreens = 64;
constexpr std::uint32_t OutputVersion = 2;
constexpr std::uint32_t LogicalVersion = 2; // the first with names
constexpr std::uint32_t OrderVersion = 1;

Screens::Entry &entryOf(void *data) { return *static_cast<Screens::Entry *>(data); }

constexpr wl_output_listener OutputListener{
    .geometry = [](void *, wl_output *, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
                   std::int32_t, const char *, const char *, std::int32_t) {},
    .mode = [](void *, wl_output *, std::uint32_t, std::int32_t, std::int32_t, std::int32_t) {},
    .done = [](void *, wl_output *) {},
    .scale = [](void *, wl_output *, std::int32_t) {},
};

constexpr zxdg_output_v1_listener LogicalListener{
    .logical_position =
        [](void *data, zxdg_output_v1 *, std::int32_t x, std::int32_t y) {
            entryOf(data).bounds.moveTo(x, y);
            entryOf(data).owner->changed();
        },
    .logical_size =
        [](void *data, zxdg_output_v1 *, std::int32_t width, std::int32_t height) {
            entryOf(data).bounds.setSize({qreal(width), qreal(height)});
            entryOf(data).owner->changed();
        },
    .done = [](void *, zxdg_output_v1 *) {},
    .name =
        [](void *data, zxdg_output_v1 *, const char *name) {
            entryOf(data).name = toldText(name);
            entryOf(data).owner->changed();
        },
    .description = [](void *, zxdg_output_v1 *, const char *) {},
};

constexpr kde_output_order_v1_listener OrderListener{
    .output = [](void *data, kde_output_order_v1 *,
                 const char *name) { static_cast<Screens *>(data)->order(name); },
    .done = [](void *data, kde_output_order_v1 *) { static_cast<Screens *>(data)->ordered(); },
};

} // namespace

Screens::Screens(Connection &connection, std::uint64_t &changes,
                 QHash<QString, std::uint32_t> &numbers)
    : m_connection(connection)
    , m_changes(changes)
    , m_numbers(numbers)
{ }

Screens::~Screens()
{
    for (const auto &entry : m_entries)
        destroyProxies(*entry);
    if (m_manager)
        zxdg_output_manager_v1_destroy(m_manager);
    if (m_orderProxy)
        kde_output_order_v1_destroy(m_orderProxy);
}

void Screens::appear(const Global &global)
{
    if (global.interface == zxdg_output_manager_v1_interface.name && !m_manager) {
        m_manager = static_cast<zxdg_output_manager_v1 *>(
            m_connection.bind(global, &zxdg_output_manager_v1_interface, LogicalVersion));
        for (const auto &entry : m_entries)
            describe(*entry);
    } else if (global.interface == kde_output_order_v1_interface.name && !m_orderProxy) {
        m_orderProxy = static_cast<kde_output_order_v1 *>(
            m_connection.bind(global, &kde_output_order_v1_interface, OrderVersion));
        kde_output_order_v1_add_listener(m_orderProxy, &OrderListener, this);
    } else if (global.interface == wl_output_interface.name && m_entries.size() < MaximumScreens) {
        auto entry = std::make_unique<Entry>(Entry{.owner = this, .global = global.name});
        entry->output = static_cast<wl_output *>(
            m_connection.bind(global, &wl_output_interface, OutputVersion));
        wl_output_add_listener(entry->output, &OutputListener, entry.get());
        describe(*entry);
        m_entries.push_back(std::move(entry));
    }
}

void Screens::describe(Entry &entry)
{
    if (!m_manager)
        return;
    entry.logical = zxdg_output_manager_v1_get_xdg_output(m_manager, entry.output);
    zxdg_output_v1_add_listener(entry.logical, &LogicalListener, &entry);
    m_connection.expectMore();
}

void Screens::vanish(std::uint32_t name)
{
    const auto gone = std::ranges::find_if(
        m_entries, [name](const auto &entry) { return entry->global == name; });
    if (gone == m_entries.end())
        return;
    destroyProxies(**gone);
    m_entries.erase(gone);
    ++m_changes;
}

void Screens::destroyProxies(Entry &entry)
{
    if (entry.logical)
        zxdg_output_v1_destroy(entry.logical);
    wl_output_destroy(entry.output);
}

void Screens::order(const char *name)
{
    if (m_nextOrder.size() < static_cast<qsizetype>(MaximumScreens))
        m_nextOrder.append(toldText(name));
}

void Screens::ordered()
{
    const QStringList next = std::exchange(m_nextOrder, {});
    if (std::exchange(m_order, next) != next)
        ++m_changes;
}

QList<SessionScreen> Screens::list() const
{
    QList<SessionScreen> screens;
    for (const auto &entry : m_entries) {
        if (entry->name.isEmpty() || entry->bounds.isEmpty())
            continue;
        auto number = m_numbers.find(entry->name);
        if (number == m_numbers.end())
            number
                = m_numbers.insert(entry->name, static_cast<std::uint32_t>(m_numbers.size() + 1));
        screens.append({*number, entry->name, entry->bounds, isBuiltInScreen(entry->name)});
    }
    std::ranges::stable_sort(screens, {}, [this](const SessionScreen &screen) {
        const qsizetype place = m_order.indexOf(screen.name);
        return place < 0 ? m_order.size() : place;
    });
    return screens;
}

} // namespace tovel::kwin
