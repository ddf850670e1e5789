#include "soaked_screen.h"

#include "support/private_session.h"

#include <QRegularExpression>

#include <cstdlib>
#include <memory>

#include <xcb/res.h>
#include <xcb/xcb.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply *reply)
{
    return {reply, &std::free};
}

} // namespace

SoakedScreen::SoakedScreen(const PrivateSession &session)
    : m_session(session)
    , m_connection(xcb_connect(session.display().constData(), nullptr))
    , m_root(xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root)
{ }

SoakedScreen::~SoakedScreen() { xcb_disconnect(m_connection); }

bool SoakedScreen::isPanelInUse() const
{
    return isPanelShown() && xdotool({u"getactivewindow"_s, u"getwindowname"_s}) == u"Tovel";
}

std::optional<QPoint> SoakedScreen::inPanel(int fromRight, int fromTop) const
{
    const xcb_window_t window = panel();
    const auto size = owned(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
    const auto place = owned(xcb_translate_coordinates_reply(
        m_connection, xcb_translate_coordinates(m_connection, window, m_root, 0, 0), nullptr));
    if (!size || !place)
        return std::nullopt;
    return QPoint(place->dst_x + size->width - fromRight, place->dst_y + fromTop);
}

std::optional<QPoint> SoakedScreen::icon() const
{
    static const QRegularExpression icon(
        u"\\(\"tovel\".*\\) +\\d+x\\d+\\+0\\+0 +\\+(\\d+)\\+(\\d+)"_s);
    const QRegularExpressionMatch match
        = icon.match(m_session.run(u"xwininfo"_s, {u"-name"_s, u"panel"_s, u"-tree"_s}).out);
    if (!match.hasMatch())
        return std::nullopt;
    return QPoint(match.captured(1).toInt() + 4, match.captured(2).toInt() + 4);
}

// It has the pointer. All is asked at once, so that the question is in no one's way.
bool SoakedScreen::isPopupOpen() const
{
    xcb_grab_server(m_connection);
    const auto cookie = xcb_grab_pointer(m_connection, 0, m_root, 0, XCB_GRAB_MODE_ASYNC,
                                         XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
    xcb_ungrab_pointer(m_connection, XCB_CURRENT_TIME);
    xcb_ungrab_server(m_connection);
    const auto reply = owned(xcb_grab_pointer_reply(m_connection, cookie, nullptr));
    return reply && reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED;
}

void SoakedScreen::point(const QPoint &place) const
{
    xdotool({u"mousemove"_s, QString::number(place.x()), QString::number(place.y())});
}

void SoakedScreen::click(const QPoint &place, int button)
{
    m_aside = 10 - m_aside;
    point(place + QPoint(m_aside, 0));
    xdotool({u"click"_s, QString::number(button)});
}

void SoakedScreen::press(const QString &keys) const { xdotool({u"key"_s, keys}); }

SoakedScreen::Share SoakedScreen::share() const
{
    const auto counts = owned(xcb_res_query_client_resources_reply(
        m_connection, xcb_res_query_client_resources(m_connection, m_anyPanel), nullptr));
    const auto pixmaps = owned(xcb_res_query_client_pixmap_bytes_reply(
        m_connection, xcb_res_query_client_pixmap_bytes(m_connection, m_anyPanel), nullptr));
    Share result;
    if (!counts || !pixmaps)
        return result;
    const xcb_res_type_t *types = xcb_res_query_client_resources_types(counts.get());
    for (int i = 0; i < xcb_res_query_client_resources_types_length(counts.get()); ++i)
        result.resources += static_cast<int>(types[i].count);
    result.pixmapKibibytes = static_cast<int>(pixmaps->bytes / 1024);
    return result;
}

// Its window, which is not always the same one; 0 while it is not shown.
std::uint32_t SoakedScreen::panel() const
{
    const std::uint32_t found
        = xdotool({u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^Tovel$"_s}).toUInt();
    if (found)
        m_anyPanel = found;
    return found;
}

QString SoakedScreen::xdotool(const QStringList &arguments) const
{
    return m_session.run(u"xdotool"_s, arguments).out.trimmed();
}

} // namespace tovel
