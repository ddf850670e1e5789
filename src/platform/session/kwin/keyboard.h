#pragma once

#include <QByteArray>

#include <cstdint>

struct wl_keyboard;
struct wl_seat;

namespace tovel::kwin {

class Connection;
struct Global;

// What the keys mean to the compositor, by a seat's keyboard (wl_keyboard.keymap).
class Keyboard final
{
public:
    Keyboard(Connection &connection, const Global &seat);
    ~Keyboard();

    Keyboard(const Keyboard &) = delete;
    Keyboard &operator=(const Keyboard &) = delete;

    // In the text format of XKB; empty while there is no keyboard.
    const QByteArray &keymap() const { return m_keymap; }

    // For the library's callbacks.
    void becomeAble(std::uint32_t capabilities);
    void readKeymap(int file, std::uint32_t size);

private:
    Connection &m_connection;
    wl_seat *m_seat;
    wl_keyboard *m_keyboard = nullptr;
    QByteArray m_keymap;
};

} // namespace tovel::kwin
