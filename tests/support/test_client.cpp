#include "support/test_client.h"

#include <algorithm>
#include <cstdlib>

#include <xcb/xcb.h>

namespace tovel {

namespace {

struct FreeReply
{
    void operator()(void *reply) const { std::free(reply); }
};

template <typename Reply>
std::unique_ptr<Reply, FreeReply> owned(Reply *reply)
{
    return std::unique_ptr<Reply, FreeReply>(reply);
}

} // namespace

TestClient::TestClient(const QByteArray &display)
    : m_connection(xcb_connect(display.constData(), nullptr))
{
    if (isConnected())
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
}

TestClient::~TestClient() { xcb_disconnect(m_connection); }

bool TestClient::isConnected() const { return xcb_connection_has_error(m_connection) == 0; }

std::uint32_t TestClient::open(const ClientWindow &window)
{
    const std::uint32_t id = window.number ? window.number : xcb_generate_id(m_connection);
    // Under a compositor a window of which nothing was drawn is not there.
    const std::uint32_t background = 0xFFFFFF;
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, id, m_root, 40, 60,
                      static_cast<std::uint16_t>(window.size.width()),
                      static_cast<std::uint16_t>(window.size.height()), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL,
                      &background);
    const QByteArray name = window.application.toUtf8();
    setProperty(id, "WM_CLASS", "STRING", 8, name + '\0' + name + '\0');
    if (window.title)
        setProperty(id, "_NET_WM_NAME", "UTF8_STRING", 8, window.title->toUtf8());
    setProperty(id, "_NET_WM_WINDOW_TYPE", "ATOM", 32, words({atom(window.type)}));
    setProperty(id, "_NET_WM_DESKTOP", "CARDINAL", 32, words({window.desktop}));
    if (window.transientFor)
        setProperty(id, "WM_TRANSIENT_FOR", "WINDOW", 32, words({window.transientFor}));
    xcb_map_window(m_connection, id);
    synchronize();
    return id;
}

void TestClient::close(std::uint32_t window)
{
    xcb_destroy_window(m_connection, window);
    synchronize();
}

void TestClient::redraw(std::uint32_t window)
{
    xcb_clear_area(m_connection, 1, window, 0, 0, 0, 0);
    synchronize();
}

bool TestClient::isManaged(std::uint32_t window) const
{
    return numbers(m_root, "_NET_CLIENT_LIST").contains(window);
}

void TestClient::minimize(std::uint32_t window)
{
    constexpr std::uint32_t iconic = 3;
    send(window, "WM_CHANGE_STATE", {iconic});
}

void TestClient::addState(std::uint32_t window, const QByteArray &state)
{
    constexpr std::uint32_t add = 1;
    constexpr std::uint32_t application = 1;
    send(window, "_NET_WM_STATE", {add, atom(state), 0, application});
}

void TestClient::askForDesktop(std::uint32_t window, std::uint32_t desktop)
{
    constexpr std::uint32_t pager = 2;
    send(window, "_NET_WM_DESKTOP", {desktop, pager});
}

void TestClient::showDesktop(std::uint32_t desktop)
{
    send(m_root, "_NET_CURRENT_DESKTOP", {desktop});
}

bool TestClient::grabKey(std::uint8_t keycode, std::uint16_t state)
{
    const auto cookie = xcb_grab_key_checked(m_connection, 0, m_root, state, keycode,
                                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    return !owned(xcb_request_check(m_connection, cookie));
}

QPoint TestClient::cursor() const
{
    const auto reply = owned(
        xcb_query_pointer_reply(m_connection, xcb_query_pointer(m_connection, m_root), nullptr));
    return reply ? QPoint(reply->root_x, reply->root_y) : QPoint();
}

QRect TestClient::place(std::uint32_t window) const
{
    const auto geometry = owned(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
    const auto origin = owned(xcb_translate_coordinates_reply(
        m_connection, xcb_translate_coordinates(m_connection, window, m_root, 0, 0), nullptr));
    if (!geometry || !origin)
        return {};
    return QRect(origin->dst_x, origin->dst_y, geometry->width, geometry->height);
}

void TestClient::swapModifiers(std::size_t one, std::size_t other)
{
    const auto mapping = owned(xcb_get_modifier_mapping_reply(
        m_connection, xcb_get_modifier_mapping(m_connection), nullptr));
    if (!mapping)
        return;
    const std::size_t width = mapping->keycodes_per_modifier;
    auto *keys = xcb_get_modifier_mapping_keycodes(mapping.get());
    std::swap_ranges(keys + one * width, keys + (one + 1) * width, keys + other * width);
    const auto cookie
        = xcb_set_modifier_mapping(m_connection, mapping->keycodes_per_modifier, keys);
    owned(xcb_set_modifier_mapping_reply(m_connection, cookie, nullptr));
}

void TestClient::setProperty(std::uint32_t window, const QByteArray &name, const QByteArray &type,
                             std::uint8_t format, const QByteArray &value)
{
    constexpr qsizetype chunk = 128 * 1024; // a request holds no more than 256 KiB
    qsizetype start = 0;
    do {
        const QByteArray part = value.mid(start, chunk);
        xcb_change_property(m_connection, start == 0 ? XCB_PROP_MODE_REPLACE : XCB_PROP_MODE_APPEND,
                            window, atom(name), atom(type), format,
                            static_cast<std::uint32_t>(part.size() * 8 / format), part.constData());
        start += chunk;
    } while (start < value.size());
    synchronize();
}

QByteArray TestClient::property(std::uint32_t window, const QByteArray &name) const
{
    const auto cookie = xcb_get_property(m_connection, 0, window, atom(name),
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, 1 << 20);
    const auto reply = owned(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply)
        return {};
    return QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                      xcb_get_property_value_length(reply.get()));
}

QList<std::uint32_t> TestClient::numbers(std::uint32_t window, const QByteArray &name) const
{
    const QByteArray value = property(window, name);
    QList<std::uint32_t> numbers(value.size() / qsizetype(sizeof(std::uint32_t)));
    std::copy_n(value.constData(), numbers.size() * qsizetype(sizeof(std::uint32_t)),
                reinterpret_cast<char *>(numbers.data()));
    return numbers;
}

std::optional<std::uint32_t> TestClient::number(std::uint32_t window, const QByteArray &name) const
{
    const QList<std::uint32_t> all = numbers(window, name);
    return all.isEmpty() ? std::nullopt : std::optional(all.first());
}

std::uint32_t TestClient::atom(const QByteArray &name) const
{
    const auto cookie = xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()),
                                        name.constData());
    const auto reply = owned(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return reply ? reply->atom : 0;
}

void TestClient::send(std::uint32_t window, const QByteArray &message,
                      const QList<std::uint32_t> &data)
{
    xcb_client_message_event_t event = {};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(message);
    std::copy(data.cbegin(), data.cend(), event.data.data32);
    xcb_send_event(m_connection, 0, m_root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&event));
    synchronize();
}

void TestClient::synchronize() const
{
    owned(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    while (owned(xcb_poll_for_event(m_connection))) { }
}

QByteArray words(const QList<std::uint32_t> &numbers)
{
    return QByteArray(reinterpret_cast<const char *>(numbers.constData()),
                      numbers.size() * qsizetype(sizeof(std::uint32_t)));
}

} // namespace tovel
