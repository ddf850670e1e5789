#include "platform/session/x11/connection.h"

#include <QSocketNotifier>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <future>
#include <thread>
#include <utility>

#include <xcb/randr.h>
#include <xcb/res.h>
#include <xcb/xcb.h>

namespace tovel::x11 {

namespace {

constexpr const char *AtomNames[] = {
    "_NET_SUPPORTED",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_NUMBER_OF_DESKTOPS",
    "_NET_CURRENT_DESKTOP",
    "_NET_DESKTOP_NAMES",
    "_NET_CLIENT_LIST",
    "_NET_CLIENT_LIST_STACKING",
    "_NET_ACTIVE_WINDOW",
    "_NET_RESTACK_WINDOW",
    "_NET_WM_DESKTOP",
    "_NET_WM_STATE",
    "_NET_WM_STATE_ABOVE",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_STATE_FULLSCREEN",
    "_NET_WM_STATE_SKIP_TASKBAR",
    "_NET_WM_NAME",
    "_NET_WM_PID",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_TOOLBAR",
    "_NET_WM_WINDOW_TYPE_MENU",
    "_NET_WM_WINDOW_TYPE_UTILITY",
    "_NET_WM_WINDOW_TYPE_SPLASH",
    "_NET_WM_WINDOW_TYPE_DIALOG",
    "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU",
    "_NET_WM_WINDOW_TYPE_POPUP_MENU",
    "_NET_WM_WINDOW_TYPE_TOOLTIP",
    "_NET_WM_WINDOW_TYPE_NOTIFICATION",
    "_NET_WM_WINDOW_TYPE_COMBO",
    "_NET_WM_WINDOW_TYPE_DND",
    "_NET_WM_WINDOW_TYPE_NORMAL",
    "UTF8_STRING",
    "WM_NAME",
    "WM_CLASS",
    "WM_TRANSIENT_FOR",
    "WM_CLIENT_MACHINE",
    "_GTK_APPLICATION_ID",
    "_KDE_NET_WM_DESKTOP_FILE",
    "_TOVEL_TIMESTAMP",
    "I3_SOCKET_PATH",
};
static_assert(std::size(AtomNames) == static_cast<std::size_t>(Name::Count));

constexpr std::chrono::seconds ConnectDeadline{10};

// Replies are malloc'ed by the library and owned by the caller.
struct FreeReply
{
    void operator()(void *reply) const { std::free(reply); }
};
template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, FreeReply>;

template <typename Reply>
ReplyPointer<Reply> owned(Reply *reply)
{
    return ReplyPointer<Reply>(reply);
}

bool isAtLeast(std::uint32_t major, std::uint32_t minor, std::uint32_t wantedMajor,
               std::uint32_t wantedMinor)
{
    return major > wantedMajor || (major == wantedMajor && minor >= wantedMinor);
}

Property propertyFrom(const xcb_get_property_reply_t *reply)
{
    if (!reply || reply->type == XCB_ATOM_NONE)
        return {};
    return {reply->type, reply->format,
            QByteArray(static_cast<const char *>(xcb_get_property_value(reply)),
                       xcb_get_property_value_length(reply)),
            reply->bytes_after > 0};
}

std::int32_t processFrom(const xcb_res_query_client_ids_reply_t *reply)
{
    if (!reply)
        return 0;
    auto ids = xcb_res_query_client_ids_ids_iterator(reply);
    for (; ids.rem > 0; xcb_res_client_id_value_next(&ids)) {
        const bool isProcess = ids.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID;
        if (isProcess && xcb_res_client_id_value_value_length(ids.data) > 0)
            return static_cast<std::int32_t>(*xcb_res_client_id_value_value(ids.data));
    }
    return 0;
}

} // namespace

std::unique_ptr<Connection> Connection::open(const QByteArray &display)
{
    // A server that accepts and then is silent would hold the caller for ever.
    struct Attempt
    {
        xcb_connection_t *connection = nullptr;
        int screen = 0;
    };
    std::promise<Attempt> promise;
    auto future = promise.get_future();
    std::thread([display, promise = std::move(promise)]() mutable {
        Attempt attempt;
        attempt.connection
            = xcb_connect(display.isEmpty() ? nullptr : display.constData(), &attempt.screen);
        promise.set_value(attempt);
    }).detach();
    if (future.wait_for(ConnectDeadline) != std::future_status::ready)
        return nullptr;
    const auto [raw, screen] = future.get();
    std::unique_ptr<Connection> connection(new Connection(raw));
    if (!connection->isAlive() || !connection->setUp(screen))
        return nullptr;
    return connection;
}

Connection::Connection(xcb_connection_t *connection)
    : m_connection(connection)
{ }

Connection::~Connection()
{
    m_notifier.reset();
    // A socket that is closed before everything was read from it takes along what was written.
    if (m_hasRequests)
        synchronize();
    xcb_disconnect(m_connection);
}

bool Connection::isAlive() const { return xcb_connection_has_error(m_connection) == 0; }

bool Connection::setUp(int screenNumber)
{
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
    for (int i = 0; i < screenNumber && screens.rem > 1; ++i)
        xcb_screen_next(&screens);
    if (screens.rem < 1)
        return false;
    m_root = screens.data->root;
    m_rootBounds = QRectF(0, 0, screens.data->width_in_pixels, screens.data->height_in_pixels);

    std::array<xcb_intern_atom_cookie_t, std::size(AtomNames)> cookies;
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        const auto length = static_cast<std::uint16_t>(std::strlen(AtomNames[i]));
        cookies[i] = xcb_intern_atom(m_connection, 0, length, AtomNames[i]);
    }
    // A request of an extension that the server lacks would end the connection.
    xcb_prefetch_extension_data(m_connection, &xcb_res_id);
    xcb_prefetch_extension_data(m_connection, &xcb_randr_id);
    for (std::size_t i = 0; i < cookies.size(); ++i) {
        const auto reply = owned(xcb_intern_atom_reply(m_connection, cookies[i], nullptr));
        if (!reply)
            return false;
        m_atoms[i] = reply->atom;
    }
    const auto *resources = xcb_get_extension_data(m_connection, &xcb_res_id);
    const auto *randr = xcb_get_extension_data(m_connection, &xcb_randr_id);
    if (!resources || !randr)
        return false;
    // Both are asked before either answer is waited for.
    xcb_res_query_version_cookie_t resourcesVersion{};
    xcb_randr_query_version_cookie_t randrVersion{};
    if (resources->present)
        resourcesVersion = xcb_res_query_version(m_connection, 1, 2);
    if (randr->present)
        randrVersion = xcb_randr_query_version(m_connection, 1, 5);
    if (resources->present) {
        const auto reply
            = owned(xcb_res_query_version_reply(m_connection, resourcesVersion, nullptr));
        m_hasResources = reply && isAtLeast(reply->server_major, reply->server_minor, 1, 2);
    }
    if (randr->present) {
        const auto reply
            = owned(xcb_randr_query_version_reply(m_connection, randrVersion, nullptr));
        m_hasMonitors = reply && isAtLeast(reply->major_version, reply->minor_version, 1, 5);
    }
    if (m_hasMonitors) {
        m_randrEvents = randr->first_event;
        xcb_randr_select_input(m_connection, m_root,
                               XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE
                                   | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE
                                   | XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    }

    m_ownWindow = xcb_generate_id(m_connection);
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection, 0, m_ownWindow, m_root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    watch(m_root);
    return isAlive();
}

void Connection::synchronize()
{
    const auto cookie = xcb_get_input_focus(m_connection);
    owned(xcb_get_input_focus_reply(m_connection, cookie, nullptr));
    m_hasRequests = false;
}

std::vector<Property> Connection::readProperties(std::span<const PropertyRequest> requests)
{
    std::vector<xcb_get_property_cookie_t> cookies;
    cookies.reserve(requests.size());
    for (const PropertyRequest &request : requests) {
        cookies.push_back(xcb_get_property(m_connection, 0, request.window, request.atom,
                                           XCB_GET_PROPERTY_TYPE_ANY, 0, request.maximumLength));
    }
    std::vector<Property> properties;
    properties.reserve(cookies.size());
    for (const auto cookie : cookies) {
        xcb_generic_error_t *error = nullptr;
        const auto reply = owned(xcb_get_property_reply(m_connection, cookie, &error));
        std::free(error);
        properties.push_back(propertyFrom(reply.get()));
    }
    return properties;
}

std::vector<WindowFacts> Connection::readFacts(std::span<const Window> windows)
{
    struct Cookies
    {
        xcb_get_geometry_cookie_t geometry;
        xcb_translate_coordinates_cookie_t position;
        xcb_res_query_client_ids_cookie_t process;
    };
    std::vector<Cookies> cookies;
    cookies.reserve(windows.size());
    for (const Window window : windows) {
        Cookies asked{};
        asked.geometry = xcb_get_geometry(m_connection, window);
        asked.position = xcb_translate_coordinates(m_connection, window, m_root, 0, 0);
        if (m_hasResources) {
            const xcb_res_client_id_spec_t spec{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
            asked.process = xcb_res_query_client_ids(m_connection, 1, &spec);
        }
        cookies.push_back(asked);
    }
    std::vector<WindowFacts> facts;
    facts.reserve(cookies.size());
    for (const Cookies &asked : cookies) {
        xcb_generic_error_t *error = nullptr;
        const auto geometry = owned(xcb_get_geometry_reply(m_connection, asked.geometry, &error));
        std::free(std::exchange(error, nullptr));
        const auto position
            = owned(xcb_translate_coordinates_reply(m_connection, asked.position, &error));
        std::free(std::exchange(error, nullptr));
        WindowFacts window;
        if (m_hasResources) {
            const auto process
                = owned(xcb_res_query_client_ids_reply(m_connection, asked.process, &error));
            std::free(error);
            window.process = processFrom(process.get());
        }
        window.exists = geometry && position;
        if (window.exists) {
            window.frame
                = QRectF(position->dst_x, position->dst_y, geometry->width, geometry->height);
        }
        facts.push_back(window);
    }
    return facts;
}

std::vector<Monitor> Connection::readMonitors()
{
    std::vector<Monitor> monitors;
    if (m_hasMonitors) {
        const auto cookie = xcb_randr_get_monitors(m_connection, m_root, 1);
        const auto reply = owned(xcb_randr_get_monitors_reply(m_connection, cookie, nullptr));
        std::vector<xcb_get_atom_name_cookie_t> names;
        if (reply) {
            auto infos = xcb_randr_get_monitors_monitors_iterator(reply.get());
            for (; infos.rem > 0; xcb_randr_monitor_info_next(&infos)) {
                const auto *info = infos.data;
                const bool hasOutput = xcb_randr_monitor_info_outputs_length(info) > 0;
                const std::uint32_t id = hasOutput ? *xcb_randr_monitor_info_outputs(info) : 0;
                monitors.push_back({id ? id : info->name, QString(),
                                    QRectF(info->x, info->y, info->width, info->height),
                                    info->primary != 0});
                names.push_back(xcb_get_atom_name(m_connection, info->name));
            }
        }
        for (std::size_t i = 0; i < names.size(); ++i) {
            const auto name = owned(xcb_get_atom_name_reply(m_connection, names[i], nullptr));
            if (name) {
                monitors[i].name = QString::fromUtf8(xcb_get_atom_name_name(name.get()),
                                                     xcb_get_atom_name_name_length(name.get()));
            }
        }
    }
    if (monitors.empty() && isAlive())
        monitors.push_back({m_root, QStringLiteral("Screen"), m_rootBounds, true});
    return monitors;
}

void Connection::watch(Window window)
{
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection, window, XCB_CW_EVENT_MASK, &mask);
}

std::vector<Event> Connection::takeEvents()
{
    std::vector<Event> events = std::exchange(m_pending, {});
    // Reads from the socket once: clients that keep changing things must not hold the caller up.
    for (auto generic = owned(xcb_poll_for_event(m_connection)); generic;
         generic = owned(xcb_poll_for_queued_event(m_connection))) {
        const int type = generic->response_type & 0x7F;
        if (type == XCB_PROPERTY_NOTIFY) {
            const auto *event = reinterpret_cast<xcb_property_notify_event_t *>(generic.get());
            events.push_back(
                {Event::Kind::PropertyChanged, event->window, event->atom, event->time});
        } else if (type == XCB_CONFIGURE_NOTIFY) {
            const auto *event = reinterpret_cast<xcb_configure_notify_event_t *>(generic.get());
            if (event->window == m_root)
                m_rootBounds = QRectF(0, 0, event->width, event->height);
            events.push_back({Event::Kind::FrameChanged, event->window});
        } else if (type == XCB_DESTROY_NOTIFY) {
            const auto *event = reinterpret_cast<xcb_destroy_notify_event_t *>(generic.get());
            events.push_back({Event::Kind::Destroyed, event->window});
        } else if (m_randrEvents != 0
                   && (type == m_randrEvents + XCB_RANDR_SCREEN_CHANGE_NOTIFY
                       || type == m_randrEvents + XCB_RANDR_NOTIFY)) {
            events.push_back({Event::Kind::MonitorsChanged, m_root});
        } else if (type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE) {
            // A release is laid out as a press.
            const auto *event = reinterpret_cast<xcb_key_press_event_t *>(generic.get());
            m_keyEvents.push_back(
                {type == XCB_KEY_PRESS ? KeyEvent::Kind::Pressed : KeyEvent::Kind::Released,
                 event->detail, event->state, event->time});
        } else if (type == XCB_MAPPING_NOTIFY) {
            m_keyEvents.push_back({KeyEvent::Kind::KeyboardChanged});
        }
    }
    return events;
}

Keyboard Connection::readKeyboard()
{
    const auto *setup = xcb_get_setup(m_connection);
    if (!isAlive())
        return {};
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto keysymsCookie = xcb_get_keyboard_mapping(m_connection, setup->min_keycode, count);
    const auto modifiersCookie = xcb_get_modifier_mapping(m_connection);
    const auto keysyms
        = owned(xcb_get_keyboard_mapping_reply(m_connection, keysymsCookie, nullptr));
    const auto modifiers
        = owned(xcb_get_modifier_mapping_reply(m_connection, modifiersCookie, nullptr));
    if (!keysyms || !modifiers)
        return {};
    const auto *firstKeysym = xcb_get_keyboard_mapping_keysyms(keysyms.get());
    const auto *firstKey = xcb_get_modifier_mapping_keycodes(modifiers.get());
    return {setup->min_keycode,
            setup->max_keycode,
            {firstKeysym, firstKeysym + xcb_get_keyboard_mapping_keysyms_length(keysyms.get())},
            {firstKey, firstKey + xcb_get_modifier_mapping_keycodes_length(modifiers.get())}};
}

KeyGrab Connection::grabKey(std::uint8_t keycode, std::span<const std::uint16_t> states)
{
    std::vector<xcb_void_cookie_t> cookies;
    for (const std::uint16_t state : states) {
        cookies.push_back(xcb_grab_key_checked(m_connection, 0, m_root, state, keycode,
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }
    KeyGrab result = KeyGrab::Granted;
    for (const auto cookie : cookies) {
        if (const auto error = owned(xcb_request_check(m_connection, cookie)))
            result = error->error_code == XCB_ACCESS ? KeyGrab::Taken : KeyGrab::Impossible;
    }
    if (!isAlive())
        return KeyGrab::Impossible;
    if (result != KeyGrab::Granted)
        ungrabKey(keycode, states);
    return result;
}

void Connection::ungrabKey(std::uint8_t keycode, std::span<const std::uint16_t> states)
{
    for (const std::uint16_t state : states)
        xcb_ungrab_key(m_connection, keycode, m_root, state);
    synchronize();
}

void Connection::setReadableHandler(std::function<void()> handler)
{
    m_readableHandler = std::move(handler);
    m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection),
                                                   QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
        // A closed socket stays readable for ever.
        if (!isAlive())
            m_notifier->setEnabled(false);
        m_readableHandler();
    });
}

bool Connection::sendToManager(Window window, Atom message,
                               const std::array<std::uint32_t, 5> &data)
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = message;
    std::copy(data.begin(), data.end(), event.data.data32);
    xcb_send_event(m_connection, 0, m_root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&event));
    m_hasRequests = true;
    return xcb_flush(m_connection) > 0;
}

std::uint32_t Connection::serverTime()
{
    xcb_change_property(m_connection, XCB_PROP_MODE_APPEND, m_ownWindow, atom(Name::Timestamp),
                        XCB_ATOM_STRING, 8, 0, nullptr);
    synchronize();
    m_pending = takeEvents();
    for (auto it = m_pending.rbegin(); it != m_pending.rend(); ++it) {
        if (it->window == m_ownWindow && it->kind == Event::Kind::PropertyChanged)
            return it->time;
    }
    return 0;
}

std::optional<QPointF> Connection::cursorPosition()
{
    const auto cookie = xcb_query_pointer(m_connection, m_root);
    const auto reply = owned(xcb_query_pointer_reply(m_connection, cookie, nullptr));
    if (!reply)
        return std::nullopt;
    return QPointF(reply->root_x, reply->root_y);
}

void Connection::moveCursor(QPointF position)
{
    xcb_warp_pointer(m_connection, XCB_NONE, m_root, 0, 0, 0, 0,
                     static_cast<std::int16_t>(position.x()),
                     static_cast<std::int16_t>(position.y()));
    m_hasRequests = true;
    xcb_flush(m_connection);
}

} // namespace tovel::x11
