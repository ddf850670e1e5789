#pragma once

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <memory>

namespace tovel {

// Someone at a session of KWin that permits everything: what the window menu, the pager and the
// keyboard do. Knows nothing of the code under test.
class KWinUser final
{
public:
    explicit KWinUser(const QByteArray &socket);
    ~KWinUser();

    KWinUser(const KWinUser &) = delete;
    KWinUser &operator=(const KWinUser &) = delete;

    bool isConnected() const;

    // KWin's numbers of its windows, oldest first. Waits for its answer.
    QList<std::uint32_t> windows();

    // Desktops are counted from 0. None for a window on all; by the events that windows() took.
    QList<int> desktopsOf(std::uint32_t window) const;
    void putOnDesktop(std::uint32_t window, int desktop);
    void putOnAllDesktops(std::uint32_t window);
    void showDesktop(int desktop);

    // By the kernel's code.
    void holdKey(std::uint32_t key, bool down);

private:
    struct Connection;
    std::unique_ptr<Connection> m_connection;
};

} // namespace tovel
