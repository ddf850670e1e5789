#pragma once

#include <QByteArray>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>

struct xcb_connection_t;

namespace tovel {

struct ClientWindow
{
    std::uint32_t number = 0; // of a window of this client that is gone; 0: a new one
    QString application{}; // both parts of WM_CLASS
    std::optional<QString> title{};
    QByteArray type = "_NET_WM_WINDOW_TYPE_NORMAL";
    std::uint32_t desktop = 0; // that it asks for
    std::uint32_t transientFor = 0;
    QSize size = QSize(300, 200);
};

// A program with windows, of as many applications as wanted, in the test's own process; it knows
// nothing of the code under test. Calls return when the server has carried them out, which says
// nothing of the window manager.
class TestClient final
{
public:
    explicit TestClient(const QByteArray &display);
    ~TestClient();

    TestClient(const TestClient &) = delete;
    TestClient &operator=(const TestClient &) = delete;

    bool isConnected() const;
    std::uint32_t root() const { return m_root; }

    std::uint32_t open(const ClientWindow &window);
    void close(std::uint32_t window);
    // A compositor may miss what was drawn as the window appeared.
    void redraw(std::uint32_t window);

    // Whether the manager has taken it on.
    bool isManaged(std::uint32_t window) const;

    // What the manager is asked for.
    void minimize(std::uint32_t window);
    void addState(std::uint32_t window, const QByteArray &state);
    void askForDesktop(std::uint32_t window, std::uint32_t desktop);
    void showDesktop(std::uint32_t desktop);

    QPoint cursor() const;

    // Of the window, on the screen.
    QRect place(std::uint32_t window) const;

    // Takes a key in one exact state of the modifiers; false when another program has it.
    bool grabKey(std::uint8_t keycode, std::uint16_t state);
    // Gives the keys of two of the eight modifiers to each other.
    void swapModifiers(std::size_t one, std::size_t other);

    // Whatever it takes, however wrong. The type is an atom's name; the value is in units of the
    // format, 8, 16 or 32 bits.
    void setProperty(std::uint32_t window, const QByteArray &name, const QByteArray &type,
                     std::uint8_t format, const QByteArray &value);
    QByteArray property(std::uint32_t window, const QByteArray &name) const;
    // The property as units of 32 bits, and the first of them.
    QList<std::uint32_t> numbers(std::uint32_t window, const QByteArray &name) const;
    std::optional<std::uint32_t> number(std::uint32_t window, const QByteArray &name) const;

    std::uint32_t atom(const QByteArray &name) const;

private:
    void send(std::uint32_t window, const QByteArray &message, const QList<std::uint32_t> &data);
    void synchronize() const;

    xcb_connection_t *m_connection;
    std::uint32_t m_root = 0;
};

// Numbers as the value of a property of format 32.
QByteArray words(const QList<std::uint32_t> &numbers);

inline constexpr std::uint32_t allDesktops = 0xFFFFFFFF;

} // namespace tovel
