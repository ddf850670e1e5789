#include "support/virtual_keyboard.h"

#include "support/wayland_connection.h"

#include <virtual-keyboard-client.h>
#include <wayland-client.h>
#include <xkbcommon/xkbcommon.h>

#include <cstdlib>
#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

namespace tovel {

struct VirtualKeyboard::Connection
{
    wl_display *display = nullptr;
    wl_seat *seat = nullptr;
    zwp_virtual_keyboard_manager_v1 *manager = nullptr;
    zwp_virtual_keyboard_v1 *keyboard = nullptr;
    std::uint32_t time = 0;
};

VirtualKeyboard::VirtualKeyboard(const QByteArray &socket)
    : m_connection(std::make_unique<Connection>())
{
    Connection &it = *m_connection;
    it.display = connectToWayland(socket,
                                  {{it.seat, wl_seat_interface, 1},
                                   {it.manager, zwp_virtual_keyboard_manager_v1_interface, 1}});
    if (!it.seat || !it.manager)
        return;
    it.keyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(it.manager, it.seat);
    setVariant({});
}

VirtualKeyboard::~VirtualKeyboard()
{
    if (m_connection->display)
        wl_display_disconnect(m_connection->display);
}

bool VirtualKeyboard::isConnected() const { return m_connection->keyboard; }

void VirtualKeyboard::setVariant(const QByteArray &variant)
{
    xkb_context *context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    const xkb_rule_names names{"evdev", "pc105", "us", variant.constData(), ""};
    xkb_keymap *keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    char *text = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
    const std::size_t size = std::strlen(text) + 1;
    const int file = memfd_create("keymap", MFD_CLOEXEC);
    if (::write(file, text, size) != static_cast<ssize_t>(size))
        qFatal("no memory for a keymap");
    zwp_virtual_keyboard_v1_keymap(m_connection->keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file,
                                   static_cast<std::uint32_t>(size));
    wl_display_roundtrip(m_connection->display);
    ::close(file);
    std::free(text);
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
}

void VirtualKeyboard::setModifiers(std::uint32_t held, std::uint32_t locked)
{
    zwp_virtual_keyboard_v1_modifiers(m_connection->keyboard, held, 0, locked, 0);
    wl_display_roundtrip(m_connection->display);
}

void VirtualKeyboard::holdKey(std::uint32_t key, bool down)
{
    zwp_virtual_keyboard_v1_key(m_connection->keyboard, ++m_connection->time, key, down ? 1 : 0);
    wl_display_roundtrip(m_connection->display);
}

} // namespace tovel
