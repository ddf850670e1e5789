#include "platform/session/kwin/compositor.h"

#include <plasma-virtual-desktop-client.h>
#include <plasma-window-management-client.h>
#include <wayland-client.h>

namespace tovel::kwin {

std::unique_ptr<Compositor> Compositor::open(const QByteArray &name, Identities &identities)
{
    std::unique_ptr<Compositor> compositor(new Compositor(identities));
    compositor->m_connection = Connection::open(
        name,
        {.appeared = [it = compositor.get()](const Global &global) { it->appear(global); },
         .vanished = [it = compositor.get()](std::uint32_t global) { it->vanish(global); }});
    if (!compositor->m_connection)
        return nullptr;
    compositor->m_screens.emplace(*compositor->m_connection, identities.changes,
                                  identities.screens);
    return compositor;
}

void Compositor::appear(const Global &global)
{
    m_screens->appear(global);
    if (global.interface == org_kde_plasma_virtual_desktop_management_interface.name
        && !m_desktops) {
        auto *management
            = static_cast<org_kde_plasma_virtual_desktop_management *>(m_connection->bind(
                global, &org_kde_plasma_virtual_desktop_management_interface, Desktops::Version));
        m_desktops.emplace(*m_connection, management, m_identities.changes);
    } else if (global.interface == org_kde_plasma_window_management_interface.name && !m_windows) {
        auto *management = static_cast<org_kde_plasma_window_management *>(
            m_connection->bind(global, &org_kde_plasma_window_management_interface,
                               Windows::versionOf(global.version)));
        m_windows.emplace(*m_connection, management, m_identities.changes, m_identities.lastWindow);
    } else if (global.interface == wl_seat_interface.name && !m_keyboard) {
        m_keyboard.emplace(*m_connection, global);
    }
}

void Compositor::vanish(std::uint32_t name) { m_screens->vanish(name); }

bool Compositor::update(std::chrono::milliseconds patience)
{
    if (!m_connection->settle(patience))
        return false;
    if (m_windows) {
        if (m_windows->askForParents() && !m_connection->settle(patience))
            return false;
        m_windows->forgetCopies();
    }
    return true;
}

} // namespace tovel::kwin
