#pragma once

#include <cstddef>
#include <cstdint>

struct xcb_connection_t;

// The least that a program without a memory must ask an X server to know all client windows: the
// root window's lists and, in one pipelined batch, each window's properties, geometry and process.
class BareReader
{
public:
    // A null connection when the display cannot be reached.
    BareReader();
    ~BareReader();

    BareReader(const BareReader &) = delete;
    BareReader &operator=(const BareReader &) = delete;

    // Reads everything once. Gives the count of windows; 0 without a display.
    std::size_t read();

private:
    static constexpr std::size_t PropertyCount = 11;

    xcb_connection_t *m_connection;
    std::uint32_t m_root = 0;
    std::uint32_t m_clientList = 0;
    std::uint32_t m_properties[PropertyCount] = {};
};
