#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class QImage;
class QPoint;

namespace tovel {

// A picture on the bus: (iiay), ARGB32 in network byte order, row by row.
struct StatusNotifierImage
{
    int width = 0;
    int height = 0;
    QByteArray data{};

    bool operator==(const StatusNotifierImage &) const = default;
};

using StatusNotifierImages = QList<StatusNotifierImage>;

// On the bus: (sa(iiay)ss).
struct StatusNotifierToolTip
{
    QString iconName{};
    StatusNotifierImages images{};
    QString title{};
    QString text{};
};

// The program's item for trays that ask for it over D-Bus: org.kde.StatusNotifierItem of the
// freedesktop.org StatusNotifierItem specification. The menu on the bus and telling trays of the
// item are others' work.
class StatusNotifierItem final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconName READ iconName CONSTANT)
    Q_PROPERTY(tovel::StatusNotifierImages IconPixmap READ iconPixmap NOTIFY NewIcon)
    Q_PROPERTY(tovel::StatusNotifierToolTip ToolTip READ toolTip NOTIFY NewToolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

public:
    // What clicks do. The points are the tray's, in pixels of the screen.
    struct Actions
    {
        std::function<void(const QPoint &)> activate;
        std::function<void(const QPoint &)> openMenu;
    };

    // Puts the item on the bus until it goes.
    StatusNotifierItem(const QDBusConnection &bus, Actions actions);
    ~StatusNotifierItem() override;

    // The name on the bus that trays find the item under.
    QString service() const { return m_service; }

    // Both tell the trays. No images leave the item without one.
    void setImages(const QList<QImage> &images);
    void setToolTip(const QString &text);

    QString category() const;
    QString id() const;
    QString title() const;
    QString status() const;
    int windowId() const { return 0; }
    QString iconName() const { return {}; }
    StatusNotifierImages iconPixmap() const { return m_images; }
    StatusNotifierToolTip toolTip() const { return {.title = m_toolTip}; }
    bool itemIsMenu() const { return false; }
    QDBusObjectPath menu() const;

public Q_SLOTS:
    // For the click that it comes before.
    Q_SCRIPTABLE void ProvideXdgActivationToken(const QString &token);
    Q_SCRIPTABLE void Activate(int x, int y);
    Q_SCRIPTABLE void SecondaryActivate(int x, int y);
    Q_SCRIPTABLE void ContextMenu(int x, int y);
    Q_SCRIPTABLE void Scroll(int delta, const QString &orientation);

Q_SIGNALS:
    Q_SCRIPTABLE void NewIcon();
    Q_SCRIPTABLE void NewToolTip();

private:
    QDBusConnection m_bus;
    Actions m_actions;
    QString m_service;
    StatusNotifierImages m_images;
    QString m_toolTip;
};

} // namespace tovel
