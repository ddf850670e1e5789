#include "screen_watch.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

#include <xcb/xcb.h>

ScreenWatch::ScreenWatch()
    : m_connection(xcb_connect(nullptr, nullptr))
{
    if (!xcb_connection_has_error(m_connection))
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
}

ScreenWatch::~ScreenWatch() { xcb_disconnect(m_connection); }

ScreenWatch::Colors ScreenWatch::colors(std::span<const ScreenPoint> points)
{
    std::vector<xcb_get_image_cookie_t> cookies;
    for (const ScreenPoint &point : points) {
        cookies.push_back(xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, point.x,
                                        point.y, 1, 1, ~0U));
    }
    Colors result;
    for (const auto cookie : cookies) {
        const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> reply(
            xcb_get_image_reply(m_connection, cookie, nullptr), &std::free);
        std::uint32_t pixel = 0;
        if (reply && xcb_get_image_data_length(reply.get()) >= 4)
            std::memcpy(&pixel, xcb_get_image_data(reply.get()), sizeof pixel);
        result.push_back(pixel & 0xffffffU);
    }
    return result;
}

bool ScreenWatch::waitFor(std::span<const ScreenPoint> points,
                          const std::function<bool(const Colors &)> &accepted)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::seconds(10);
    while (!accepted(colors(points))) {
        if (Clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}
