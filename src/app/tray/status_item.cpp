#include "app/tray/status_item.h"

#include "app/tray/bus_menu.h"
#include "app/tray/shell_indicator.h"
#include "app/tray/status_image.h"
#include "app/tray/status_notifier_item.h"
#include "app/tray/status_notifier_registration.h"
#include "views/components/window_system.h"

#include <QCursor>
#include <QDBusConnection>
#include <QEvent>
#include <QIcon>
#include <QMenu>
#include <QPixmap>
#include <QSystemTrayIcon>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

QIcon statusIcon()
{
    QIcon icon;
    for (const QImage &image : statusImages())
        icon.addPixmap(QPixmap::fromImage(image));
    return icon;
}

// Only an X session tells where the pointer is while it is over windows of others.
QPoint pointer(const QPoint &otherwise) { return isOnWayland() ? otherwise : QCursor::pos(); }

} // namespace

StatusItem::StatusItem(Actions actions, const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_actions(std::move(actions))
{
    qApp->installEventFilter(this);
    if (!bus.isConnected()) {
        if (!isOnWayland())
            makeTrayIcon();
        return;
    }
    m_item = std::make_unique<StatusNotifierItem>(
        bus,
        StatusNotifierItem::Actions{.activate = [this](const QPoint &point) { clicked(point); },
                                    .openMenu = [this](const QPoint &point) { openMenu(point); }});
    m_item->setImages(statusImages());
    m_busMenu = std::make_unique<BusMenu>(bus, m_actions.makeMenu);
    m_registration = std::make_unique<StatusNotifierRegistration>(bus, m_item->service());
    connect(m_registration.get(), &StatusNotifierRegistration::stateChanged, this,
            &StatusItem::choose);
    m_shellIndicator = std::make_unique<ShellIndicator>(bus);
    connect(m_shellIndicator.get(), &ShellIndicator::changed, this, &StatusItem::choose);
}

StatusItem::~StatusItem() { delete m_menu; }

void StatusItem::setToolTip(const QString &text)
{
    m_toolTip = text;
    if (m_item)
        m_item->setToolTip(text);
    if (m_trayIcon)
        m_trayIcon->setToolTip(text);
}

void StatusItem::noteMenuChange()
{
    if (m_busMenu)
        m_busMenu->noteChange();
}

bool StatusItem::isShown() const
{
    return isOnBus()
        || (m_trayIcon && m_trayIcon->isVisible() && QSystemTrayIcon::isSystemTrayAvailable());
}

bool StatusItem::isOnBus() const
{
    using enum StatusNotifierRegistration::State;
    if (!m_registration)
        return false;
    const StatusNotifierRegistration::State state = m_registration->state();
    return state == Registered || (state == NoTray && m_shellIndicator->isThere());
}

void StatusItem::choose()
{
    using enum StatusNotifierRegistration::State;
    const bool needsIcon = !isOnBus();
    if (m_trayIcon)
        m_trayIcon->setVisible(needsIcon && !m_trayIcon->icon().isNull());
    else if (needsIcon && m_registration->state() == NoTray
             && !isOnWayland()) // which has no trays but those of the bus
        makeTrayIcon();
}

// Qt decides at the first of its icons, by what the bus answers then, for which kind of tray all of
// them are, and waits for the answer; hence there is none before the bus is known to have no tray.
void StatusItem::makeTrayIcon()
{
    m_trayIcon = std::make_unique<QSystemTrayIcon>(statusIcon());
    m_trayIcon->setToolTip(m_toolTip);
    connect(m_trayIcon.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Context)
                    openMenu(m_trayIcon->geometry().center());
                // The second of two clicks is one like the first.
                else if (reason != QSystemTrayIcon::MiddleClick)
                    clicked(m_trayIcon->geometry().center());
            });
    m_trayIcon->setVisible(!m_trayIcon->icon().isNull());
}

bool StatusItem::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange)
        updateImages();
    return QObject::eventFilter(watched, event);
}

void StatusItem::updateImages()
{
    if (m_item)
        m_item->setImages(statusImages());
    if (m_trayIcon)
        m_trayIcon->setIcon(statusIcon());
}

void StatusItem::clicked(const QPoint &point)
{
    if (QGuiApplication::queryKeyboardModifiers() & Qt::ControlModifier)
        openMenu(point);
    else
        m_actions.toggle();
}

void StatusItem::openMenu(const QPoint &point)
{
    if (m_menu)
        m_menu->close();
    m_menu = m_actions.makeMenu().release();
    m_menu->setAttribute(Qt::WA_DeleteOnClose);
    m_menu->popup(pointer(point));
}

} // namespace tovel
