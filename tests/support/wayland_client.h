#pragma once

#include <QByteArray>
#include <QSize>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

namespace tovel {

struct WaylandWindow
{
    QString application{}; // its app id
    std::optional<QString> title{};
    bool isDialog = false; // of a window that comes and goes with it
    bool isPanel = false; // where the compositor is KWin
    QSize size = QSize(300, 200);
};

// A native Wayland program with windows, in the test's own process; it knows nothing of the code
// under test. Draws and answers the compositor while the event loop turns.
class WaylandClient final
{
public:
    // The socket's name, as in WAYLAND_DISPLAY.
    explicit WaylandClient(const QByteArray &socket);
    ~WaylandClient();

    WaylandClient(const WaylandClient &) = delete;
    WaylandClient &operator=(const WaylandClient &) = delete;

    bool isConnected() const;

    // A handle of its own for the window; it is shown a little later.
    int open(const WaylandWindow &window);
    void close(int window);
    void minimize(int window);
    void makeFullScreen(int window);

private:
    struct Connection;
    std::unique_ptr<Connection> m_connection;
};

} // namespace tovel
