#include "tray_watch.h"

#include <QtGlobal>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string_view>
#include <thread>

#include <xcb/xcb.h>

namespace {

template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply *reply)
{
    return {reply, &std::free};
}

bool waitFor(const std::function<bool()> &condition)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (Clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    return true;
}

} // namespace

TrayWatch::TrayWatch()
    : m_connection(xcb_connect(nullptr, nullptr))
{
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    const auto comes = [&] { return (m_tray = find(root, "panel")) != 0; }; // its name for itself
    if (!waitFor(comes))
        qFatal("there is no tray");
}

TrayWatch::~TrayWatch() { xcb_disconnect(m_connection); }

bool TrayWatch::waitForIcon(bool there)
{
    return waitFor([&] {
        const std::uint32_t icon = find(m_tray, "tovel");
        return (icon && isViewable(icon)) == there;
    });
}

std::vector<std::uint32_t> TrayWatch::children(std::uint32_t window)
{
    const auto tree
        = owned(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
    if (!tree)
        return {};
    const xcb_window_t *first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

// The first window below the root whose WM_CLASS begins with the instance; 0 when there is none.
std::uint32_t TrayWatch::find(std::uint32_t root, const char *instance)
{
    for (const std::uint32_t window : children(root)) {
        const auto name = owned(xcb_get_property_reply(
            m_connection,
            xcb_get_property(m_connection, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64),
            nullptr));
        const std::string_view text(
            name ? static_cast<const char *>(xcb_get_property_value(name.get())) : "",
            name ? static_cast<std::size_t>(xcb_get_property_value_length(name.get())) : 0);
        if (text.starts_with(instance))
            return window;
        if (const std::uint32_t found = find(window, instance))
            return found;
    }
    return 0;
}

bool TrayWatch::isViewable(std::uint32_t window)
{
    const auto attributes = owned(xcb_get_window_attributes_reply(
        m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}
