#include "bare_read.h"

#include <cstdlib>
#include <cstring>
#include <vector>

#include <xcb/res.h>
#include <xcb/xcb.h>

namespace {

constexpr const char *Names[] = {
    "_NET_WM_DESKTOP",
    "_NET_WM_STATE",
    "_NET_WM_WINDOW_TYPE",
    "WM_TRANSIENT_FOR",
    "WM_NAME",
    "_NET_WM_NAME",
    "WM_CLASS",
    "_NET_WM_PID",
    "WM_CLIENT_MACHINE",
    "_GTK_APPLICATION_ID",
    "_KDE_NET_WM_DESKTOP_FILE",
};

xcb_atom_t intern(xcb_connection_t *connection, const char *name)
{
    const auto cookie
        = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    xcb_intern_atom_reply_t *reply = xcb_intern_atom_reply(connection, cookie, nullptr);
    const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return atom;
}

} // namespace

BareReader::BareReader()
    : m_connection(xcb_connect(nullptr, nullptr))
{
    static_assert(std::size(Names) == PropertyCount);
    if (xcb_connection_has_error(m_connection))
        return;
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    m_clientList = intern(m_connection, "_NET_CLIENT_LIST");
    for (std::size_t i = 0; i < PropertyCount; ++i)
        m_properties[i] = intern(m_connection, Names[i]);
    std::free(xcb_res_query_version_reply(m_connection, xcb_res_query_version(m_connection, 1, 2),
                                          nullptr));
}

BareReader::~BareReader() { xcb_disconnect(m_connection); }

std::size_t BareReader::read()
{
    if (xcb_connection_has_error(m_connection))
        return 0;
    auto *list = xcb_get_property_reply(
        m_connection,
        xcb_get_property(m_connection, 0, m_root, m_clientList, XCB_ATOM_WINDOW, 0, 16384),
        nullptr);
    if (!list)
        return 0;
    const auto *windows = static_cast<const xcb_window_t *>(xcb_get_property_value(list));
    const auto count = static_cast<std::size_t>(xcb_get_property_value_length(list)) / 4;

    struct Cookies
    {
        xcb_get_property_cookie_t properties[PropertyCount];
        xcb_get_geometry_cookie_t geometry;
        xcb_translate_coordinates_cookie_t position;
        xcb_res_query_client_ids_cookie_t process;
    };
    std::vector<Cookies> asked(count);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t j = 0; j < PropertyCount; ++j) {
            asked[i].properties[j] = xcb_get_property(m_connection, 0, windows[i], m_properties[j],
                                                      XCB_GET_PROPERTY_TYPE_ANY, 0, 1024);
        }
        asked[i].geometry = xcb_get_geometry(m_connection, windows[i]);
        asked[i].position = xcb_translate_coordinates(m_connection, windows[i], m_root, 0, 0);
        const xcb_res_client_id_spec_t who{windows[i], XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
        asked[i].process = xcb_res_query_client_ids(m_connection, 1, &who);
    }
    for (const Cookies &cookies : asked) {
        for (const auto property : cookies.properties)
            std::free(xcb_get_property_reply(m_connection, property, nullptr));
        std::free(xcb_get_geometry_reply(m_connection, cookies.geometry, nullptr));
        std::free(xcb_translate_coordinates_reply(m_connection, cookies.position, nullptr));
        std::free(xcb_res_query_client_ids_reply(m_connection, cookies.process, nullptr));
    }
    std::free(list);
    return count;
}
