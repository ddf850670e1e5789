#include "views/components/floating_window.h"

#include "views/components/window_system.h"
#include "views/theme.h"

#include <QBitmap>
#include <QPainter>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr char managerSelection[] = "_NET_WM_CM_S0";
constexpr double borderOpacity = 0.4;

template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply *reply)
{
    return {reply, &std::free};
}

bool hasCompositingManager(xcb_connection_t *connection)
{
    const auto atom = owned(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 1, sizeof(managerSelection) - 1, managerSelection),
        nullptr));
    if (!atom || atom->atom == XCB_ATOM_NONE)
        return false;
    const auto owner = owned(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace

bool blendsWindows()
{
    if (QGuiApplication::platformName() != "xcb"_L1)
        return isOnWayland();
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 && hasCompositingManager(x11->connection());
}

QRegion maskOf(const QPainterPath &form, const QSize &size)
{
    QImage coverage(size, QImage::Format_ARGB32_Premultiplied);
    coverage.fill(Qt::transparent);
    QPainter painter(&coverage);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(form, Qt::black);
    painter.end();
    return QBitmap::fromImage(coverage.createAlphaMask(Qt::ThresholdDither));
}

void paintFloating(QPainter &painter, const QPalette &palette, const QPainterPath &form,
                   const QPainterPath &inside)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(form, windowBackground(palette));
    painter.fillPath(form, withOpacity(secondary(palette), borderOpacity));
    painter.fillPath(inside, windowBackground(palette));
    painter.restore();
}

} // namespace tovel
