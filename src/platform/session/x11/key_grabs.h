#pragma once

#include "platform/session/desktop_session.h"
#include "platform/session/x11/connection.h"

#include <cstdint>
#include <vector>

namespace tovel::x11 {

// Bits of an event's modifiers. The core protocol names those of Shift, Caps Lock and Control; the
// others are whatever the keyboard's owner put them on.
struct ModifierBits
{
    std::uint16_t alt = 0; // 0: the keyboard has none
    std::uint16_t super = 0; // likewise; Meta's, where no key is Super and Meta is not Alt
    std::uint16_t locks = 0; // of Caps Lock, Num Lock and Scroll Lock together

    bool operator==(const ModifierBits &) const = default;
};

ModifierBits modifierBits(const Keyboard &keyboard);

// The states of the modifiers in which the key counts: a grab takes one exact state, so there is
// one for each combination of the locks, that of no lock first. Empty when a modifier is not to be
// had.
std::vector<std::uint16_t> statesOf(const SessionKey &key, const ModifierBits &bits);

// Global keys, by passive grabs on the root window (X11 protocol, GrabKey); they end with the
// connection. When the keyboard's modifiers move to other bits, the grabs follow; a key that
// another program has there is lost until they move again.
class KeyGrabs final
{
public:
    explicit KeyGrabs(Connection &connection);

    KeyGrab grab(const SessionKey &key);
    void release(const SessionKey &key);

    // The grabbed keys that were pressed by the connection's key events taken so far, oldest first;
    // repeats of a key that is held are left out. Asks the server where the keyboard has changed.
    std::vector<SessionKey> takePresses();

private:
    struct Grab
    {
        SessionKey key;
        std::uint8_t keycode = 0;
        std::vector<std::uint16_t> states; // empty: lost
    };

    KeyGrab take(Grab &grab);
    void followModifiers();

    Connection &m_connection;
    ModifierBits m_bits;
    std::uint8_t m_firstKeycode = 0;
    std::uint8_t m_lastKeycode = 0;
    std::vector<Grab> m_grabs;
    KeyEvent m_lastRelease{KeyEvent::Kind::Released};
};

} // namespace tovel::x11
