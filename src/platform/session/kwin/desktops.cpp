#include "platform/session/kwin/desktops.h"

#include "platform/session/kwin/connection.h"
#include "platform/session/kwin/told_texts.h"
#include "texts/one_line.h"

#include <plasma-virtual-desktop-client.h>

#include <algorithm>

namespace tovel::kwin {

namespace {

Desktops::Entry &entryOf(void *data) { return *static_cast<Desktops::Entry *>(data); }

constexpr org_kde_plasma_virtual_desktop_listener DesktopListener{
    .desktop_id = [](void *, org_kde_plasma_virtual_desktop *, const char *) {},
    .name = [](void *data, org_kde_plasma_virtual_desktop *,
               const char *name) { entryOf(data).owner->rename(entryOf(data), name); },
    .activated =
        [](void *data, org_kde_plasma_virtual_desktop *) {
            entryOf(data).owner->setShown(entryOf(data).desktop.uuid);
        },
    .deactivated = [](void *, org_kde_plasma_virtual_desktop *) {},
    .done = [](void *, org_kde_plasma_virtual_desktop *) {},
    .removed = [](void *, org_kde_plasma_virtual_desktop *) {},
};

constexpr org_kde_plasma_virtual_desktop_management_listener ManagementListener{
    .desktop_created
    = [](void *data, org_kde_plasma_virtual_desktop_management *, const char *uuid,
         std::uint32_t position) { static_cast<Desktops *>(data)->add(uuid, position); },
    .desktop_removed = [](void *data, org_kde_plasma_virtual_desktop_management *,
                          const char *uuid) { static_cast<Desktops *>(data)->remove(uuid); },
    .done = [](void *, org_kde_plasma_virtual_desktop_management *) {},
    .rows = [](void *, org_kde_plasma_virtual_desktop_management *, std::uint32_t) {},
};

} // namespace

Desktops::Desktops(Connection &connection, org_kde_plasma_virtual_desktop_management *management,
                   std::uint64_t &changes)
    : m_connection(connection)
    , m_management(management)
    , m_changes(changes)
{
    org_kde_plasma_virtual_desktop_management_add_listener(m_management, &ManagementListener, this);
}

// The protocol has no request to destroy them.
Desktops::~Desktops()
{
    for (const auto &entry : m_entries)
        org_kde_plasma_virtual_desktop_destroy(entry->proxy);
    org_kde_plasma_virtual_desktop_management_destroy(m_management);
}

void Desktops::add(const char *uuid, std::uint32_t position)
{
    const QString id = toldText(uuid);
    if (id.isEmpty() || find(id) || m_entries.size() >= MaximumDesktops)
        return;
    auto entry = std::make_unique<Entry>(Entry{.owner = this, .desktop = {.uuid = id}});
    entry->proxy
        = org_kde_plasma_virtual_desktop_management_get_virtual_desktop(m_management, uuid);
    org_kde_plasma_virtual_desktop_add_listener(entry->proxy, &DesktopListener, entry.get());
    m_connection.expectMore();
    const auto at = std::min<std::size_t>(position, m_entries.size());
    m_entries.insert(m_entries.begin() + static_cast<std::ptrdiff_t>(at), std::move(entry));
    ++m_changes;
}

void Desktops::remove(const char *uuid)
{
    Entry *entry = find(toldText(uuid));
    if (!entry)
        return;
    org_kde_plasma_virtual_desktop_destroy(entry->proxy);
    std::erase_if(m_entries, [entry](const auto &other) { return other.get() == entry; });
    ++m_changes;
}

void Desktops::rename(Entry &entry, const char *name)
{
    const QString told = oneLine(toldText(name));
    if (std::exchange(entry.desktop.name, told) != told)
        ++m_changes;
}

void Desktops::setShown(const QString &uuid)
{
    if (std::exchange(m_shown, uuid) != uuid)
        ++m_changes;
}

std::vector<Desktop> Desktops::list() const
{
    std::vector<Desktop> desktops;
    for (const auto &entry : m_entries)
        desktops.push_back(entry->desktop);
    return desktops;
}

bool Desktops::contains(const QString &uuid) const { return find(uuid) != nullptr; }

bool Desktops::show(const QString &uuid)
{
    const Entry *entry = find(uuid);
    if (!entry)
        return false;
    org_kde_plasma_virtual_desktop_request_activate(entry->proxy);
    return true;
}

Desktops::Entry *Desktops::find(const QString &uuid) const
{
    const auto found = std::ranges::find_if(
        m_entries, [&uuid](const auto &entry) { return entry->desktop.uuid == uuid; });
    return found == m_entries.end() ? nullptr : found->get();
}

} // namespace tovel::kwin
