#include "support/wayland_client.h"

#include "support/wayland_connection.h"

#include <QSocketNotifier>

#include <plasma-shell-client.h>
#include <wayland-client.h>
#include <xdg-shell-client.h>

#include <map>

#include <sys/mman.h>
#include <unistd.h>

namespace tovel {

namespace {

struct Toplevel
{
    wl_shm *memory = nullptr;
    wl_surface *surface = nullptr;
    xdg_surface *role = nullptr;
    xdg_toplevel *toplevel = nullptr;
    org_kde_plasma_surface *plasma = nullptr;
    QSize size;
    std::unique_ptr<Toplevel> parent;

    ~Toplevel()
    {
        if (plasma)
            org_kde_plasma_surface_destroy(plasma);
        xdg_toplevel_destroy(toplevel);
        xdg_surface_destroy(role);
        wl_surface_destroy(surface);
    }

    void draw() const
    {
        const int stride = size.width() * 4;
        const int bytes = stride * size.height();
        const int file = memfd_create("window", MFD_CLOEXEC);
        if (ftruncate(file, bytes) != 0)
            qFatal("no memory for a window");
        wl_shm_pool *pool = wl_shm_create_pool(memory, file, bytes);
        wl_buffer *buffer = wl_shm_pool_create_buffer(pool, 0, size.width(), size.height(), stride,
                                                      WL_SHM_FORMAT_XRGB8888);
        wl_surface_attach(surface, buffer, 0, 0);
        wl_surface_damage(surface, 0, 0, size.width(), size.height());
        wl_surface_commit(surface);
        // The compositor keeps what it shows.
        static constexpr wl_buffer_listener released{
            [](void *, wl_buffer *used) { wl_buffer_destroy(used); }};
        wl_buffer_add_listener(buffer, &released, nullptr);
        wl_shm_pool_destroy(pool);
        ::close(file);
    }
};

constexpr xdg_surface_listener SurfaceListener{
    [](void *data, xdg_surface *surface, std::uint32_t serial) {
        xdg_surface_ack_configure(surface, serial);
        static_cast<Toplevel *>(data)->draw();
    }};

constexpr xdg_toplevel_listener ToplevelListener{
    .configure =
        [](void *data, xdg_toplevel *, std::int32_t width, std::int32_t height, wl_array *) {
            if (width > 0 && height > 0)
                static_cast<Toplevel *>(data)->size = {width, height};
        },
    .close = [](void *, xdg_toplevel *) {},
};

} // namespace

struct WaylandClient::Connection
{
    wl_display *display = nullptr;
    wl_compositor *compositor = nullptr;
    wl_shm *memory = nullptr;
    xdg_wm_base *shell = nullptr;
    org_kde_plasma_shell *plasma = nullptr;
    std::unique_ptr<QSocketNotifier> notifier;
    std::map<int, std::unique_ptr<Toplevel>> windows;
    int lastWindow = 0;

    std::unique_ptr<Toplevel> make(const WaylandWindow &window)
    {
        auto made = std::make_unique<Toplevel>();
        made->memory = memory;
        made->size = window.size;
        made->surface = wl_compositor_create_surface(compositor);
        made->role = xdg_wm_base_get_xdg_surface(shell, made->surface);
        xdg_surface_add_listener(made->role, &SurfaceListener, made.get());
        made->toplevel = xdg_surface_get_toplevel(made->role);
        xdg_toplevel_add_listener(made->toplevel, &ToplevelListener, made.get());
        xdg_toplevel_set_app_id(made->toplevel, window.application.toUtf8().constData());
        if (window.title)
            xdg_toplevel_set_title(made->toplevel, window.title->toUtf8().constData());
        if (window.isPanel && plasma) {
            made->plasma = org_kde_plasma_shell_get_surface(plasma, made->surface);
            org_kde_plasma_surface_set_role(made->plasma, ORG_KDE_PLASMA_SURFACE_ROLE_PANEL);
            org_kde_plasma_surface_set_skip_taskbar(made->plasma, 1);
        }
        wl_surface_commit(made->surface);
        if (window.isDialog) {
            // Younger than the dialog, and shown before it is one.
            made->parent = make({.application = window.application});
            for (int i = 0; i < 2; ++i)
                wl_display_roundtrip(display);
            xdg_toplevel_set_parent(made->toplevel, made->parent->toplevel);
        }
        wl_display_flush(display);
        return made;
    }
};

WaylandClient::WaylandClient(const QByteArray &socket)
    : m_connection(std::make_unique<Connection>())
{
    Connection &it = *m_connection;
    it.display = connectToWayland(socket,
                                  {{it.compositor, wl_compositor_interface, 1},
                                   {it.memory, wl_shm_interface, 1},
                                   {it.shell, xdg_wm_base_interface, 1},
                                   {it.plasma, org_kde_plasma_shell_interface, 5}});
    if (!isConnected())
        return;
    static constexpr xdg_wm_base_listener alive{
        [](void *, xdg_wm_base *shell, std::uint32_t serial) { xdg_wm_base_pong(shell, serial); }};
    xdg_wm_base_add_listener(it.shell, &alive, nullptr);
    it.notifier
        = std::make_unique<QSocketNotifier>(wl_display_get_fd(it.display), QSocketNotifier::Read);
    QObject::connect(it.notifier.get(), &QSocketNotifier::activated, it.notifier.get(), [&it] {
        if (wl_display_dispatch(it.display) < 0)
            it.notifier->setEnabled(false); // the compositor is gone
        wl_display_flush(it.display);
    });
}

WaylandClient::~WaylandClient()
{
    m_connection->windows.clear();
    if (m_connection->display)
        wl_display_disconnect(m_connection->display);
}

bool WaylandClient::isConnected() const
{
    return m_connection->compositor && m_connection->memory && m_connection->shell;
}

int WaylandClient::open(const WaylandWindow &window)
{
    m_connection->windows.emplace(++m_connection->lastWindow, m_connection->make(window));
    return m_connection->lastWindow;
}

void WaylandClient::close(int window)
{
    m_connection->windows.erase(window);
    wl_display_flush(m_connection->display);
}

void WaylandClient::minimize(int window)
{
    xdg_toplevel_set_minimized(m_connection->windows.at(window)->toplevel);
    wl_display_flush(m_connection->display);
}

void WaylandClient::makeFullScreen(int window)
{
    xdg_toplevel_set_fullscreen(m_connection->windows.at(window)->toplevel, nullptr);
    wl_display_flush(m_connection->display);
}

} // namespace tovel
