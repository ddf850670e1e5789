#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

struct xcb_connection_t;

struct ScreenPoint
{
    std::int16_t x = 0;
    std::int16_t y = 0;
};

// Looks at single pixels of the X screen, as anybody before it sees them.
class ScreenWatch
{
public:
    using Colors = std::vector<std::uint32_t>;

    ScreenWatch();
    ~ScreenWatch();

    ScreenWatch(const ScreenWatch &) = delete;
    ScreenWatch &operator=(const ScreenWatch &) = delete;

    Colors colors(std::span<const ScreenPoint> points);

    // Looks again and again, some thousand times a second, until the colours are accepted; false
    // when that takes more than ten seconds.
    bool waitFor(std::span<const ScreenPoint> points,
                 const std::function<bool(const Colors &)> &accepted);

private:
    xcb_connection_t *m_connection;
    std::uint32_t m_root = 0;
};
