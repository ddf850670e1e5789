#pragma once

#include <QByteArray>

#include <cstdint>
#include <memory>

namespace tovel {

// A keyboard at a compositor that lets programs bring their own, such as sway.
class VirtualKeyboard final
{
public:
    // The socket's name, as in WAYLAND_DISPLAY. With the usual layout.
    explicit VirtualKeyboard(const QByteArray &socket);
    ~VirtualKeyboard();

    VirtualKeyboard(const VirtualKeyboard &) = delete;
    VirtualKeyboard &operator=(const VirtualKeyboard &) = delete;

    bool isConnected() const;

    // A variant of the US layout; empty for the usual one.
    void setVariant(const QByteArray &variant);
    // The bits of X11: 1 Shift, 2 Caps Lock, 4 Control, 8 Alt, 16 Num Lock, 64 Super.
    void setModifiers(std::uint32_t held, std::uint32_t locked);
    // By the kernel's code.
    void holdKey(std::uint32_t key, bool down);

private:
    struct Connection;
    std::unique_ptr<Connection> m_connection;
};

} // namespace tovel
