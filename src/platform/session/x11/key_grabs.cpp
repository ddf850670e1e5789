#include "platform/session/x11/key_grabs.h"

#include <algorithm>
#include <initializer_list>

namespace tovel::x11 {

namespace {

// Between the kernel's codes and X key codes.
constexpr std::uint32_t keycodeOffset = 8;

constexpr std::uint16_t shiftBit = 1 << 0;
constexpr std::uint16_t capsLockBit = 1 << 1;
constexpr std::uint16_t controlBit = 1 << 2;
constexpr std::size_t modifierCount = 8;
constexpr std::size_t firstFreeModifier = 3;

// Keysyms (X11 protocol, appendix A).
constexpr std::uint32_t scrollLock = 0xFF14;
constexpr std::uint32_t numLock = 0xFF7F;
constexpr std::uint32_t metaLeft = 0xFFE7;
constexpr std::uint32_t metaRight = 0xFFE8;
constexpr std::uint32_t altLeft = 0xFFE9;
constexpr std::uint32_t altRight = 0xFFEA;
constexpr std::uint32_t superLeft = 0xFFEB;
constexpr std::uint32_t superRight = 0xFFEC;

// The server writes a repeat as a release and a press in one go, which no finger does; its clock
// may tick in between. Told by this rather than by asking for repeats without releases, because
// that takes another extension, and one lost release would make a key look held for ever.
constexpr std::uint32_t repeatGap = 1;

// The first of the free modifiers that one of the keysyms is on, 0 when none is.
std::uint16_t bitOf(const Keyboard &keyboard, std::initializer_list<std::uint32_t> wanted,
                    std::uint16_t otherThan = 0)
{
    const std::size_t keycodes = keyboard.lastKeycode - keyboard.firstKeycode + 1U;
    const std::size_t perKey = keyboard.keysyms.size() / keycodes;
    const std::size_t perModifier = keyboard.modifierKeys.size() / modifierCount;
    const auto means = [&](std::uint8_t keycode) {
        if (keycode < keyboard.firstKeycode || keycode > keyboard.lastKeycode)
            return false;
        const auto first = keyboard.keysyms.begin()
            + static_cast<std::ptrdiff_t>((keycode - keyboard.firstKeycode) * perKey);
        return std::find_first_of(first, first + static_cast<std::ptrdiff_t>(perKey),
                                  wanted.begin(), wanted.end())
            != first + static_cast<std::ptrdiff_t>(perKey);
    };
    for (std::size_t modifier = firstFreeModifier; modifier < modifierCount; ++modifier) {
        const auto keys
            = std::span(keyboard.modifierKeys).subspan(modifier * perModifier, perModifier);
        const auto bit = static_cast<std::uint16_t>(1 << modifier);
        if (bit != otherThan && std::ranges::any_of(keys, means))
            return bit;
    }
    return 0;
}

} // namespace

ModifierBits modifierBits(const Keyboard &keyboard)
{
    ModifierBits bits;
    bits.locks = capsLockBit;
    if (keyboard.lastKeycode < keyboard.firstKeycode)
        return bits;
    bits.alt = bitOf(keyboard, {altLeft, altRight});
    bits.super = bitOf(keyboard, {superLeft, superRight}, bits.alt);
    if (bits.super == 0)
        bits.super = bitOf(keyboard, {metaLeft, metaRight}, bits.alt);
    bits.locks |= bitOf(keyboard, {numLock}) | bitOf(keyboard, {scrollLock});
    bits.locks &= static_cast<std::uint16_t>(~(bits.alt | bits.super));
    return bits;
}

std::vector<std::uint16_t> statesOf(const SessionKey &key, const ModifierBits &bits)
{
    if ((key.alt && bits.alt == 0) || (key.super && bits.super == 0))
        return {};
    const unsigned own = (key.shift ? shiftBit : 0U) | (key.control ? controlBit : 0U)
        | (key.alt ? bits.alt : 0U) | (key.super ? bits.super : 0U);
    std::vector<std::uint16_t> states;
    unsigned locks = 0;
    do {
        states.push_back(static_cast<std::uint16_t>(own | locks));
        locks = (locks - bits.locks) & bits.locks; // the next subset
    } while (locks != 0);
    return states;
}

KeyGrabs::KeyGrabs(Connection &connection)
    : m_connection(connection)
{ }

KeyGrab KeyGrabs::take(Grab &grab)
{
    grab.states.clear();
    const std::uint32_t keycode = grab.key.position + keycodeOffset;
    auto states = statesOf(grab.key, m_bits);
    if (keycode < m_firstKeycode || keycode > m_lastKeycode || states.empty())
        return KeyGrab::Impossible;
    grab.keycode = static_cast<std::uint8_t>(keycode);
    const KeyGrab result = m_connection.grabKey(grab.keycode, states);
    if (result == KeyGrab::Granted)
        grab.states = std::move(states);
    return result;
}

KeyGrab KeyGrabs::grab(const SessionKey &key)
{
    followModifiers();
    Grab grab{key};
    const KeyGrab result = take(grab);
    if (result == KeyGrab::Granted)
        m_grabs.push_back(std::move(grab));
    return result;
}

void KeyGrabs::release(const SessionKey &key)
{
    std::erase_if(m_grabs, [&](const Grab &grab) {
        if (grab.key != key)
            return false;
        m_connection.ungrabKey(grab.keycode, grab.states);
        return true;
    });
}

void KeyGrabs::followModifiers()
{
    const Keyboard keyboard = m_connection.readKeyboard();
    if (!m_connection.isAlive())
        return;
    m_firstKeycode = keyboard.firstKeycode;
    m_lastKeycode = keyboard.lastKeycode;
    const ModifierBits bits = modifierBits(keyboard);
    if (std::exchange(m_bits, bits) == bits)
        return;
    // All of them before the first is taken anew: one may come where another was.
    for (const Grab &grab : m_grabs)
        m_connection.ungrabKey(grab.keycode, grab.states);
    for (Grab &grab : m_grabs)
        take(grab);
}

std::vector<SessionKey> KeyGrabs::takePresses()
{
    std::vector<SessionKey> presses;
    bool isKeyboardChanged = false;
    for (const KeyEvent &event : m_connection.takeKeyEvents()) {
        switch (event.kind) {
        case KeyEvent::Kind::Pressed: {
            const bool isRepeat = event.keycode == m_lastRelease.keycode
                && event.time - m_lastRelease.time <= repeatGap;
            const int own = shiftBit | controlBit | m_bits.alt | m_bits.super;
            const auto found = std::ranges::find_if(m_grabs, [&](const Grab &grab) {
                return grab.keycode == event.keycode && !grab.states.empty()
                    && grab.states.front() == (event.modifiers & own);
            });
            if (found != m_grabs.end() && !isRepeat)
                presses.push_back(found->key);
            break;
        }
        case KeyEvent::Kind::Released:
            m_lastRelease = event;
            break;
        case KeyEvent::Kind::KeyboardChanged:
            isKeyboardChanged = true;
            break;
        }
    }
    if (isKeyboardChanged && !m_grabs.empty())
        followModifiers();
    return presses;
}

} // namespace tovel::x11
