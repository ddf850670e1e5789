#pragma once

#include <cstdint>

struct xcb_connection_t;

// Presses keys of the X session as its user does: by FakeInput of the X Test Extension Protocol.
class Keyboard
{
public:
    Keyboard();
    ~Keyboard();

    Keyboard(const Keyboard &) = delete;
    Keyboard &operator=(const Keyboard &) = delete;

    // By keysym. They return when the server has taken it; nothing for a key that there is not.
    void press(std::uint32_t key);
    void release(std::uint32_t key);

private:
    void send(std::uint8_t event, std::uint32_t key);

    xcb_connection_t *m_connection;
};
