#pragma once

#include <QByteArray>

#include <algorithm>
#include <functional>
#include <vector>

#include <wayland-client.h>

namespace tovel {

// Fills the proxy of what a compositor offers, in a version from the least to the most.
struct WantedGlobal
{
    template <typename Proxy>
    WantedGlobal(Proxy *&proxy, const wl_interface &type, std::uint32_t most,
                 std::uint32_t least = 1)
        : bind([=, &proxy, &type](auto *registry, auto name, QByteArrayView interface, auto offer) {
            if (!proxy && interface == type.name && offer >= least)
                proxy = static_cast<Proxy *>(
                    wl_registry_bind(registry, name, &type, std::min(offer, most)));
        })
    { }
    std::function<void(wl_registry *, std::uint32_t, const char *, std::uint32_t)> bind;
};

// A test's own connection to the compositor, by a name as in WAYLAND_DISPLAY. Null for none.
inline wl_display *connectToWayland(const QByteArray &name, std::vector<WantedGlobal> wanted)
{
    static constexpr wl_registry_listener listener{
        [](void *data, auto... offer) {
            for (const auto &global : *static_cast<std::vector<WantedGlobal> *>(data))
                global.bind(offer...);
        },
        [](void *, wl_registry *, std::uint32_t) {}};
    wl_display *display = wl_display_connect(name.constData());
    if (!display)
        return nullptr;
    wl_registry *registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &listener, &wanted);
    wl_display_roundtrip(display);
    wl_registry_destroy(registry);
    return display;
}

} // namespace tovel
