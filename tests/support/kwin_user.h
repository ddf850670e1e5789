#pragma once

#include <QByteArray>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>

#include <cstdint>
#include <memory>

namespace tovel {

// The kernel's code of a key by its name: "Tab", "ctrl", "q".
std::uint32_t keyNamed(const QString &name);

// A window as KWin tells of it.
struct KWinWindow
{
    QString title{};
    QString application{};
    QRect frame{};
    std::uint32_t states = 0; // org_kde_plasma_window_management.state

    bool isActive() const { return states & 0x1; }
    bool isAbove() const { return states & 0x10; }
    bool isOnAllDesktops() const { return states & 0x40; }
};

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

    // Of several, the newest; 0 for none. Waits for KWin's answer.
    std::uint32_t windowTitled(const QString &title);
    // By the events that were taken.
    KWinWindow window(std::uint32_t number) const;
    void activate(std::uint32_t window);

    // Desktops are counted from 0. None for a window on all; by the events that windows() took.
    QList<int> desktopsOf(std::uint32_t window) const;
    void putOnDesktop(std::uint32_t window, int desktop);
    void putOnAllDesktops(std::uint32_t window);
    void showDesktop(int desktop);

    // By the kernel's code.
    void holdKey(std::uint32_t key, bool down);
    // By names: "Tab", "q" or "ctrl+q".
    void press(const QString &keys);
    // By the kernel's code of the button.
    void click(QPoint place, std::uint32_t button);
    void drag(QPoint from, QPoint way, std::uint32_t button);

private:
    struct Connection;
    std::unique_ptr<Connection> m_connection;
};

} // namespace tovel
