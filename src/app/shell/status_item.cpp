#include "app/shell/status_item.h"

#include "settings/bundle.h"
#include "views/components/symbol.h"
#include "views/theme.h"

#include <QCursor>
#include <QGuiApplication>
#include <QMenu>
#include <QPainter>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr QSizeF imageSize(21.93415061295972, 18); // in the tray's usual square of 22
constexpr int squareSize = 22;

// The image in the session's text colour, at the sizes that trays ask for. Null when the bundle has
// no such image.
QIcon statusImage()
{
    const auto path = mainBundle().pathForResource(u"TovelMenuAlt"_s, u"svg"_s);
    QIcon icon;
    if (!path)
        return icon;
    for (const int scale : {1, 2, 3}) {
        QPixmap pixmap(QSize(squareSize, squareSize) * scale);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.scale(scale, scale);
        QRectF box(QPointF(), imageSize);
        box.moveCenter(QPointF(squareSize, squareSize) / 2);
        paintTemplateImage(painter, *path, box,
                           QGuiApplication::palette().color(QPalette::WindowText));
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace

StatusItem::StatusItem(Actions actions, QObject *parent)
    : QObject(parent)
    , m_actions(std::move(actions))
    , m_icon(statusImage())
{
    connect(&m_icon, &QSystemTrayIcon::activated, this, &StatusItem::clicked);
    if (!m_icon.icon().isNull())
        m_icon.show();
}

StatusItem::~StatusItem() = default;

void StatusItem::clicked(QSystemTrayIcon::ActivationReason reason)
{
    const bool control = QGuiApplication::queryKeyboardModifiers() & Qt::ControlModifier;
    if (reason == QSystemTrayIcon::Context || (reason == QSystemTrayIcon::Trigger && control))
        openMenu();
    else if (reason == QSystemTrayIcon::Trigger)
        m_actions.toggle();
}

void StatusItem::openMenu()
{
    m_menu = m_actions.makeMenu();
    m_menu->popup(QCursor::pos());
}

} // namespace tovel
