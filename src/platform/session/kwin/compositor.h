#pragma once

#include "platform/session/kwin/connection.h"
#include "platform/session/kwin/desktops.h"
#include "platform/session/kwin/keyboard.h"
#include "platform/session/kwin/screens.h"
#include "platform/session/kwin/windows.h"

#include <QHash>
#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace tovel::kwin {

// What outlives a connection: KWin may come back and have the same desktops and screens.
struct Identities
{
    std::uint64_t changes = 1; // counted of everything that is kept
    std::uint32_t lastWindow = 0; // the highest number that a window was given
    QHash<QString, std::uint32_t> screens; // by name
    QHash<QString, std::uint64_t> workspaces; // by uuid
};

// A picture of KWin, kept true by one connection's events.
class Compositor final
{
public:
    // Null when there is none to connect to. Does not wait.
    static std::unique_ptr<Compositor> open(const QByteArray &name, Identities &identities);

    Compositor(const Compositor &) = delete;
    Compositor &operator=(const Compositor &) = delete;

    Connection &connection() { return *m_connection; }

    // Makes the picture true as of now; false when the compositor does not answer so long.
    bool update(std::chrono::milliseconds patience);

    // Null where the compositor is not KWin.
    Desktops *desktops() { return m_desktops ? &*m_desktops : nullptr; }
    // Null where KWin does not let this program see windows.
    Windows *windows() { return m_windows ? &*m_windows : nullptr; }
    const Screens &screens() const { return *m_screens; }
    // Of the first seat, in the text format of XKB; empty where it has no keyboard.
    QByteArray keymap() const { return m_keyboard ? m_keyboard->keymap() : QByteArray(); }

private:
    explicit Compositor(Identities &identities)
        : m_identities(identities)
    { }

    void appear(const Global &global);
    void vanish(std::uint32_t name);

    Identities &m_identities;
    std::unique_ptr<Connection> m_connection;
    std::optional<Screens> m_screens;
    std::optional<Desktops> m_desktops;
    std::optional<Windows> m_windows;
    std::optional<Keyboard> m_keyboard;
};

} // namespace tovel::kwin
