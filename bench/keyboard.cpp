#include "keyboard.h"

#include <cstdlib>
#include <memory>

#include <sys/uio.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

namespace {

// The protocol's extension of one request that is needed here.
xcb_extension_t testExtension = {"XTEST", 0};

struct FakeInput
{
    std::uint8_t majorOpcode = 0; // the library's to fill in, and so is the length
    std::uint8_t minorOpcode = 0;
    std::uint16_t length = 0;
    std::uint8_t event = 0;
    std::uint8_t detail = 0;
    std::uint8_t unused[30] = {}; // for keys, the time among it: at once
};
static_assert(sizeof(FakeInput) == 36);

std::uint8_t keyCode(xcb_connection_t *connection, std::uint32_t key)
{
    const xcb_setup_t *setup = xcb_get_setup(connection);
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const std::unique_ptr<xcb_get_keyboard_mapping_reply_t, decltype(&std::free)> mapping(
        xcb_get_keyboard_mapping_reply(
            connection, xcb_get_keyboard_mapping(connection, setup->min_keycode, count), nullptr),
        &std::free);
    if (!mapping)
        return 0;
    const xcb_keysym_t *keys = xcb_get_keyboard_mapping_keysyms(mapping.get());
    for (int i = 0; i < count; ++i) {
        if (keys[i * mapping->keysyms_per_keycode] == key)
            return static_cast<std::uint8_t>(setup->min_keycode + i);
    }
    return 0;
}

} // namespace

Keyboard::Keyboard()
    : m_connection(xcb_connect(nullptr, nullptr))
{ }

Keyboard::~Keyboard() { xcb_disconnect(m_connection); }

void Keyboard::press(std::uint32_t key) { send(XCB_KEY_PRESS, key); }

void Keyboard::release(std::uint32_t key) { send(XCB_KEY_RELEASE, key); }

void Keyboard::send(std::uint8_t event, std::uint32_t key)
{
    if (xcb_connection_has_error(m_connection))
        return;
    FakeInput input;
    input.event = event;
    input.detail = keyCode(m_connection, key);
    if (input.detail == 0)
        return;
    constexpr xcb_protocol_request_t request{1, &testExtension, 2, 1};
    // The library prepends parts of its own before the first one.
    iovec parts[3] = {};
    parts[2] = {&input, sizeof input};
    xcb_send_request(m_connection, 0, parts + 2, &request);
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}
