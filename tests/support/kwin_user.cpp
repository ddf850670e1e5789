#include "support/kwin_user.h"

#include "support/private_session.h"
#include "support/wayland_connection.h"

#include <QStringList>

#include <fake-input-client.h>
#include <plasma-virtual-desktop-client.h>
#include <plasma-window-management-client.h>
#include <wayland-client.h>

#include <map>

#include <linux/input-event-codes.h>

namespace tovel {

namespace {

struct KeyName
{
    const char *name;
    std::uint32_t code;
};

constexpr KeyName KeyNames[] = {{"Escape", KEY_ESC},    {"Tab", KEY_TAB},
                                {"Return", KEY_ENTER},  {"space", KEY_SPACE},
                                {"Down", KEY_DOWN},     {"Up", KEY_UP},
                                {"ctrl", KEY_LEFTCTRL}, {"alt", KEY_LEFTALT},
                                {"f", KEY_F},           {"super", KEY_LEFTMETA},
                                {"l", KEY_L},           {"o", KEY_O},
                                {"c", KEY_C},           {"k", KEY_K},
                                {"t", KEY_T},           {"q", KEY_Q}};

} // namespace

std::uint32_t keyNamed(const QString &name)
{
    for (const KeyName &key : KeyNames) {
        if (name == QLatin1StringView(key.name))
            return key.code;
    }
    qFatal("no key %s", qPrintable(name));
}

namespace {

void ignore(void *, org_kde_plasma_virtual_desktop_management *) { }

} // namespace

struct KWinUser::Connection
{
    wl_display *display = nullptr;
    org_kde_plasma_window_management *management = nullptr;
    org_kde_plasma_virtual_desktop_management *manager = nullptr;
    org_kde_kwin_fake_input *keyboard = nullptr;
    QList<QByteArray> desktops;
    QList<std::uint32_t> windows;
    std::map<std::uint32_t, org_kde_plasma_window *> proxies;
    std::map<const org_kde_plasma_window *, QList<QByteArray>> places; // the desktops of each
    std::map<const org_kde_plasma_window *, KWinWindow> told;

    void forget(const org_kde_plasma_window *proxy)
    {
        for (auto &[number, known] : proxies) {
            if (known == proxy)
                windows.removeOne(number);
        }
    }

    void point(QPoint place) const
    {
        org_kde_kwin_fake_input_pointer_motion_absolute(keyboard, wl_fixed_from_int(place.x()),
                                                        wl_fixed_from_int(place.y()));
    }

    void holdButton(std::uint32_t button, bool down) const
    {
        org_kde_kwin_fake_input_button(keyboard, button, down ? 1 : 0);
    }

    org_kde_plasma_window *proxy(std::uint32_t window) const { return proxies.at(window); }

    void add(std::uint32_t number, const char *uuid);
};

namespace {

using Window = org_kde_plasma_window;

constexpr auto Text = [](void *, Window *, const char *) {};
constexpr auto Number = [](void *, Window *, std::uint32_t) {};
constexpr auto Nothing = [](void *, Window *) {};

} // namespace

void KWinUser::Connection::add(std::uint32_t number, const char *name)
{
    static constexpr org_kde_plasma_window_listener listener{
        .title_changed =
            [](void *data, Window *window, const char *title) {
                static_cast<Connection *>(data)->told[window].title = QString::fromUtf8(title);
            },
        .app_id_changed =
            [](void *data, Window *window, const char *id) {
                static_cast<Connection *>(data)->told[window].application = QString::fromUtf8(id);
            },
        .state_changed =
            [](void *data, Window *window, std::uint32_t states) {
                static_cast<Connection *>(data)->told[window].states = states;
            },
        .virtual_desktop_changed = [](void *, Window *, std::int32_t) {},
        .themed_icon_name_changed = Text,
        .unmapped
        = [](void *data, Window *window) { static_cast<Connection *>(data)->forget(window); },
        .initial_state = Nothing,
        .parent_window = [](void *, Window *, Window *) {},
        .geometry =
            [](void *data, Window *window, std::int32_t x, std::int32_t y, std::uint32_t width,
               std::uint32_t height) {
                static_cast<Connection *>(data)->told[window].frame
                    = QRect(x, y, static_cast<int>(width), static_cast<int>(height));
            },
        .icon_changed = Nothing,
        .pid_changed = Number,
        .virtual_desktop_entered
        = [](void *data, Window *window,
             const char *uuid) { static_cast<Connection *>(data)->places[window].append(uuid); },
        .virtual_desktop_left
        = [](void *data, Window *window,
             const char *uuid) { static_cast<Connection *>(data)->places[window].removeAll(uuid); },
        .application_menu = [](void *, Window *, const char *, const char *) {},
        .activity_entered = Text,
        .activity_left = Text,
        .resource_name_changed = Text,
    };
    windows.append(number);
    proxies[number] = name ? org_kde_plasma_window_management_get_window_by_uuid(management, name)
                           : org_kde_plasma_window_management_get_window(management, number);
    org_kde_plasma_window_add_listener(proxies[number], &listener, this);
}

KWinUser::KWinUser(const QByteArray &socket)
    : m_connection(std::make_unique<Connection>())
{
    Connection &it = *m_connection;
    // KWin 6 has to be asked for windows by their uuids; of the versions before, the later ones
    // tell the stacking order in a message that many windows do not fit in.
    it.display
        = connectToWayland(socket,
                           {
#ifdef ORG_KDE_PLASMA_WINDOW_MANAGEMENT_GET_STACKING_ORDER_SINCE_VERSION
                               {it.management, org_kde_plasma_window_management_interface, 17, 17},
#endif
                               {it.management, org_kde_plasma_window_management_interface, 11},
                               {it.manager, org_kde_plasma_virtual_desktop_management_interface, 1},
                               {it.keyboard, org_kde_kwin_fake_input_interface, 4}});
    if (!isConnected())
        return;
    static constexpr org_kde_plasma_window_management_listener management{
        .show_desktop_changed = [](void *, org_kde_plasma_window_management *, std::uint32_t) {},
        .window
        = [](void *data, org_kde_plasma_window_management *,
             std::uint32_t number) { static_cast<Connection *>(data)->add(number, nullptr); },
        .stacking_order_changed = [](void *, org_kde_plasma_window_management *, wl_array *) {},
        .window_with_uuid
        = [](void *data, org_kde_plasma_window_management *, std::uint32_t number,
             const char *uuid) { static_cast<Connection *>(data)->add(number, uuid); },
#ifdef ORG_KDE_PLASMA_WINDOW_MANAGEMENT_GET_STACKING_ORDER_SINCE_VERSION
        .stacking_order_changed_2 = [](void *, org_kde_plasma_window_management *) {},
#endif
    };
    org_kde_plasma_window_management_add_listener(it.management, &management, &it);
    static constexpr org_kde_plasma_virtual_desktop_management_listener manager{
        .desktop_created
        = [](void *data, org_kde_plasma_virtual_desktop_management *, const char *uuid,
             std::uint32_t) { static_cast<Connection *>(data)->desktops.append(uuid); },
        .desktop_removed
        = [](void *data, org_kde_plasma_virtual_desktop_management *,
             const char *uuid) { static_cast<Connection *>(data)->desktops.removeOne(uuid); },
        .done = ignore,
    };
    org_kde_plasma_virtual_desktop_management_add_listener(it.manager, &manager, &it);
    org_kde_kwin_fake_input_authenticate(it.keyboard, "test", "types");
    wl_display_roundtrip(it.display);
}

KWinUser::~KWinUser()
{
    for (const auto &[number, proxy] : m_connection->proxies)
        org_kde_plasma_window_destroy(proxy);
    if (m_connection->management)
        org_kde_plasma_window_management_destroy(m_connection->management);
    if (m_connection->manager)
        org_kde_plasma_virtual_desktop_management_destroy(m_connection->manager);
    if (m_connection->keyboard)
        org_kde_kwin_fake_input_destroy(m_connection->keyboard);
    if (m_connection->display)
        wl_display_disconnect(m_connection->display);
}

bool KWinUser::isConnected() const
{
    return m_connection->management && m_connection->manager && m_connection->keyboard;
}

QList<std::uint32_t> KWinUser::windows()
{
    wl_display_roundtrip(m_connection->display);
    return m_connection->windows;
}

std::uint32_t KWinUser::windowTitled(const QString &title)
{
    std::uint32_t found = 0;
    for (const std::uint32_t number : windows()) {
        if (window(number).title == title)
            found = number;
    }
    return found;
}

KWinWindow KWinUser::window(std::uint32_t number) const
{
    return m_connection->told[m_connection->proxy(number)];
}

void KWinUser::activate(std::uint32_t window)
{
    org_kde_plasma_window_set_state(m_connection->proxy(window),
                                    ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE,
                                    ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE);
    wl_display_roundtrip(m_connection->display);
}

QList<int> KWinUser::desktopsOf(std::uint32_t window) const
{
    QList<int> desktops;
    for (const QByteArray &uuid : m_connection->places[m_connection->proxy(window)])
        desktops.append(static_cast<int>(m_connection->desktops.indexOf(uuid)));
    return desktops;
}

void KWinUser::putOnDesktop(std::uint32_t window, int desktop)
{
    Connection &it = *m_connection;
    org_kde_plasma_window_request_enter_virtual_desktop(it.proxy(window), it.desktops[desktop]);
    for (const QByteArray &other : it.desktops) {
        if (other != it.desktops[desktop])
            org_kde_plasma_window_request_leave_virtual_desktop(it.proxy(window), other);
    }
    wl_display_roundtrip(it.display);
}

// Leaving the last one is what does it; leaving one of all would put it on the others.
void KWinUser::putOnAllDesktops(std::uint32_t window)
{
    putOnDesktop(window, 0);
    org_kde_plasma_window_request_leave_virtual_desktop(m_connection->proxy(window),
                                                        m_connection->desktops.first());
    wl_display_roundtrip(m_connection->display);
}

void KWinUser::showDesktop(int desktop)
{
    static constexpr org_kde_plasma_virtual_desktop_listener listener{
        .desktop_id = [](void *, org_kde_plasma_virtual_desktop *, const char *) {},
        .name = [](void *, org_kde_plasma_virtual_desktop *, const char *) {},
        .activated = [](void *, org_kde_plasma_virtual_desktop *) {},
        .deactivated = [](void *, org_kde_plasma_virtual_desktop *) {},
        .done = [](void *, org_kde_plasma_virtual_desktop *) {},
        .removed = [](void *, org_kde_plasma_virtual_desktop *) {},
    };
    Connection &it = *m_connection;
    auto *proxy = org_kde_plasma_virtual_desktop_management_get_virtual_desktop(
        it.manager, it.desktops[desktop]);
    org_kde_plasma_virtual_desktop_add_listener(proxy, &listener, nullptr);
    org_kde_plasma_virtual_desktop_request_activate(proxy);
    wl_display_roundtrip(it.display);
    org_kde_plasma_virtual_desktop_destroy(proxy);
}

void KWinUser::holdKey(std::uint32_t key, bool down)
{
    org_kde_kwin_fake_input_keyboard_key(m_connection->keyboard, key, down ? 1 : 0);
    wl_display_roundtrip(m_connection->display);
}

void KWinUser::press(const QString &keys)
{
    const QStringList names = keys.split(u'+');
    for (const QString &name : names)
        holdKey(keyNamed(name), true);
    for (auto name = names.crbegin(); name != names.crend(); ++name)
        holdKey(keyNamed(*name), false);
}

void KWinUser::click(QPoint place, std::uint32_t button)
{
    m_connection->point(place);
    m_connection->holdButton(button, true);
    m_connection->holdButton(button, false);
    wl_display_roundtrip(m_connection->display);
}

void KWinUser::drag(QPoint from, QPoint way, std::uint32_t button)
{
    m_connection->point(from);
    m_connection->holdButton(button, true);
    // Who answers the first step by a move of the window has to have done so.
    for (int step = 1; step <= 10; ++step) {
        m_connection->point(from + way * step / 10);
        wl_display_roundtrip(m_connection->display);
        eventually([] { return false; }, 20);
    }
    m_connection->holdButton(button, false);
    wl_display_roundtrip(m_connection->display);
}

} // namespace tovel
