#include "app/tray/status_notifier_item.h"

#include "app/service/activation_token.h"
#include "app/tray/bus_menu.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMetaType>
#include <QImage>
#include <QPoint>
#include <QtEndian>

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

const QString itemPath = QStringLiteral("/StatusNotifierItem");

StatusNotifierImage onTheBus(const QImage &image)
{
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    StatusNotifierImage result{argb.width(), argb.height(), {}};
    result.data.resize(argb.sizeInBytes()); // 32 bits a pixel leave no gap between the rows
    qToBigEndian<quint32>(argb.constBits(), argb.sizeInBytes() / 4, result.data.data());
    return result;
}

} // namespace

QDBusArgument &operator<<(QDBusArgument &argument, const StatusNotifierImage &image)
{
    argument.beginStructure();
    argument << image.width << image.height << image.data;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, StatusNotifierImage &image)
{
    argument.beginStructure();
    argument >> image.width >> image.height >> image.data;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const StatusNotifierToolTip &toolTip)
{
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.images << toolTip.title << toolTip.text;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, StatusNotifierToolTip &toolTip)
{
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.images >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument;
}

StatusNotifierItem::StatusNotifierItem(const QDBusConnection &bus, Actions actions)
    : m_bus(bus)
    , m_actions(std::move(actions))
    , m_service(u"org.kde.StatusNotifierItem-%1-1"_s.arg(QCoreApplication::applicationPid()))
{
    qDBusRegisterMetaType<StatusNotifierImage>();
    qDBusRegisterMetaType<StatusNotifierImages>();
    qDBusRegisterMetaType<StatusNotifierToolTip>();
    m_bus.registerObject(itemPath, this, QDBusConnection::ExportScriptableContents);
    if (!m_bus.registerService(m_service))
        m_service = m_bus.baseService(); // a process of another namespace has the number, too
}

// The name goes with the connection: giving it back would wait for a bus that may not answer.
StatusNotifierItem::~StatusNotifierItem() { m_bus.unregisterObject(itemPath); }

void StatusNotifierItem::setImages(const QList<QImage> &images)
{
    StatusNotifierImages converted;
    for (const QImage &image : images)
        converted.append(onTheBus(image));
    if (std::exchange(m_images, converted) != converted)
        Q_EMIT NewIcon();
}

void StatusNotifierItem::setToolTip(const QString &text)
{
    if (std::exchange(m_toolTip, text) != text)
        Q_EMIT NewToolTip();
}

QString StatusNotifierItem::category() const { return u"ApplicationStatus"_s; }

QString StatusNotifierItem::id() const { return u"org.tovel.Tovel"_s; }

QString StatusNotifierItem::title() const { return u"Tovel"_s; }

QString StatusNotifierItem::status() const { return u"Active"_s; }

QDBusObjectPath StatusNotifierItem::menu() const { return QDBusObjectPath(BusMenu::path); }

void StatusNotifierItem::ProvideXdgActivationToken(const QString &token)
{
    takeUpPlatformData({{u"activation-token"_s, token}});
}

void StatusNotifierItem::Activate(int x, int y) { m_actions.activate({x, y}); }

void StatusNotifierItem::SecondaryActivate(int, int) { }

void StatusNotifierItem::ContextMenu(int x, int y) { m_actions.openMenu({x, y}); }

void StatusNotifierItem::Scroll(int, const QString &) { }

} // namespace tovel
