#include "platform/session/kwin/keyboard.h"

#include "platform/session/kwin/connection.h"

#include <wayland-client.h>

#include <unistd.h>

namespace tovel::kwin {

namespace {

constexpr std::uint32_t SeatVersion = 1;
constexpr std::uint32_t MaximumKeymapSize = 1 << 20;

constexpr wl_seat_listener SeatListener{
    .capabilities
    = [](void *data, wl_seat *,
         std::uint32_t capabilities) { static_cast<Keyboard *>(data)->becomeAble(capabilities); },
    .name = [](void *, wl_seat *, const char *) {},
};

// Without a surface there is never a focus, and no key is told.
constexpr wl_keyboard_listener KeyboardListener{
    .keymap =
        [](void *data, wl_keyboard *, std::uint32_t format, std::int32_t file, std::uint32_t size) {
            if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1)
                static_cast<Keyboard *>(data)->readKeymap(file, size);
            close(file);
        },
    .enter = [](void *, wl_keyboard *, std::uint32_t, wl_surface *, wl_array *) {},
    .leave = [](void *, wl_keyboard *, std::uint32_t, wl_surface *) {},
    .key = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
    .modifiers = [](void *, wl_keyboard *, std::uint32_t, std::uint32_t, std::uint32_t,
                    std::uint32_t, std::uint32_t) {},
    .repeat_info = [](void *, wl_keyboard *, std::int32_t, std::int32_t) {},
};

} // namespace

Keyboard::Keyboard(Connection &connection, const Global &seat)
    : m_connection(connection)
    , m_seat(static_cast<wl_seat *>(connection.bind(seat, &wl_seat_interface, SeatVersion)))
{
    wl_seat_add_listener(m_seat, &SeatListener, this);
}

Keyboard::~Keyboard()
{
    if (m_keyboard)
        wl_keyboard_destroy(m_keyboard);
    wl_seat_destroy(m_seat);
}

void Keyboard::becomeAble(std::uint32_t capabilities)
{
    if (m_keyboard || !(capabilities & WL_SEAT_CAPABILITY_KEYBOARD))
        return;
    m_keyboard = wl_seat_get_keyboard(m_seat);
    wl_keyboard_add_listener(m_keyboard, &KeyboardListener, this);
    m_connection.expectMore();
}

// Read rather than mapped: the file is another program's, which may cut it short.
void Keyboard::readKeymap(int file, std::uint32_t size)
{
    QByteArray text(static_cast<qsizetype>(std::min(size, MaximumKeymapSize)), '\0');
    const ssize_t length = pread(file, text.data(), static_cast<std::size_t>(text.size()), 0);
    text.truncate(std::max<ssize_t>(length, 0));
    const qsizetype end = text.indexOf('\0');
    m_keymap = end < 0 ? text : text.left(end);
}

} // namespace tovel::kwin
