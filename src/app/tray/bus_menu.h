#pragma once

#include "app/tray/bus_menu_item.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QPointer>
#include <QScopedPointer>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <map>
#include <memory>

class QAction;
class QMenu;

namespace tovel {

// The properties of one item: (ia{sv}).
struct BusMenuProperties
{
    int id = 0;
    QVariantMap properties{};
};

// What happened to one item: (isvu).
struct BusMenuEvent
{
    int id = 0;
    QString name{};
    QDBusVariant data{};
    uint timestamp = 0;
};

// The menu of the status item for trays that show it themselves: com.canonical.dbusmenu, version 3,
// as of the libdbusmenu project. It is made afresh when a tray is about to show it, and after
// changes, because many trays keep a copy and never say so.
class BusMenu final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

public:
    static const QString path; // on the bus

    // Puts the menu on the bus until it goes.
    BusMenu(const QDBusConnection &bus, std::function<std::unique_ptr<QMenu>()> makeMenu);
    ~BusMenu() override;

    // What the menu would show may have changed. Tells the trays in the next turn of the event
    // loop; or when it closes, for an open menu would vanish under the pointer.
    void noteChange();

    uint version() const { return 3; }
    QString status() const;
    QString textDirection() const;
    QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    Q_SCRIPTABLE uint GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                                tovel::BusMenuItem &layout);
    Q_SCRIPTABLE QList<tovel::BusMenuProperties> GetGroupProperties(
        const QList<int> &ids, const QStringList &propertyNames);
    Q_SCRIPTABLE QDBusVariant GetProperty(int id, const QString &name);
    Q_SCRIPTABLE void Event(int id, const QString &eventId, const QDBusVariant &data,
                            uint timestamp);
    Q_SCRIPTABLE QList<int> EventGroup(const QList<tovel::BusMenuEvent> &events);
    Q_SCRIPTABLE bool AboutToShow(int id);
    Q_SCRIPTABLE QList<int> AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors);

Q_SIGNALS:
    Q_SCRIPTABLE void LayoutUpdated(uint revision, int parent);

private:
    // Whether it is another one now.
    bool update();
    const BusMenuItem &top();

    QDBusConnection m_bus;
    std::function<std::unique_ptr<QMenu>()> m_makeMenu;
    // One of its commands may still be running when it is replaced.
    std::unique_ptr<QMenu, QScopedPointerDeleteLater> m_menu;
    std::map<int, QPointer<QAction>> m_actions; // of the menu
    BusMenuItem m_top; // the menu, as the trays know it
    uint m_revision = 0; // 0 before any tray has asked
    int m_lastId = 0;
    bool m_updating = false;
    bool m_isOpen = false; // as a tray says
    bool m_hasChanged = false; // meanwhile
    QTimer m_change;
};

} // namespace tovel
