#include "app/tray/bus_menu.h"

#include <QAction>
#include <QDBusArgument>
#include <QDBusMetaType>
#include <QMenu>
#include <QScopedValueRollback>

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

const QString BusMenu::path = QStringLiteral("/StatusNotifierItem/Menu");

namespace {

void collect(const BusMenuItem &item, const QList<int> &ids, QList<BusMenuProperties> &into)
{
    if (ids.isEmpty() || ids.contains(item.id))
        into.append({item.id, item.properties});
    for (const BusMenuItem &child : item.children)
        collect(child, ids, into);
}

} // namespace

QDBusArgument &operator<<(QDBusArgument &argument, const BusMenuProperties &item)
{
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, BusMenuProperties &item)
{
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const BusMenuEvent &event)
{
    argument.beginStructure();
    argument << event.id << event.name << event.data << event.timestamp;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, BusMenuEvent &event)
{
    argument.beginStructure();
    argument >> event.id >> event.name >> event.data >> event.timestamp;
    argument.endStructure();
    return argument;
}

BusMenu::BusMenu(const QDBusConnection &bus, std::function<std::unique_ptr<QMenu>()> makeMenu)
    : m_bus(bus)
    , m_makeMenu(std::move(makeMenu))
{
    qDBusRegisterMetaType<QList<QStringList>>();
    qDBusRegisterMetaType<BusMenuItem>();
    qDBusRegisterMetaType<BusMenuProperties>();
    qDBusRegisterMetaType<QList<BusMenuProperties>>();
    qDBusRegisterMetaType<BusMenuEvent>();
    qDBusRegisterMetaType<QList<BusMenuEvent>>();
    m_change.setSingleShot(true);
    m_change.setInterval(0);
    connect(&m_change, &QTimer::timeout, this, [this] {
        if (m_revision != 0 && update())
            Q_EMIT LayoutUpdated(m_revision, 0);
    });
    m_bus.registerObject(path, this, QDBusConnection::ExportScriptableContents);
}

BusMenu::~BusMenu()
{
    m_bus.unregisterObject(path);
    delete m_menu.release(); // there may be no later
}

void BusMenu::noteChange()
{
    if (m_updating) // making the menu looks at everything afresh
        return;
    if (m_isOpen)
        m_hasChanged = true;
    else
        m_change.start();
}

QString BusMenu::status() const { return u"normal"_s; }

QString BusMenu::textDirection() const { return u"ltr"_s; }

// Identifiers are never given again for another item: a tray may speak of the menu before this one.
bool BusMenu::update()
{
    const QScopedValueRollback updating(m_updating, true);
    std::unique_ptr<QMenu> menu = m_makeMenu();
    int id = m_actions.empty() ? m_lastId : m_actions.cbegin()->first - 1;
    if (m_revision != 0 && busMenu(*menu, [&id](QAction *) { return ++id; }) == m_top)
        return false;
    m_actions.clear();
    m_top = busMenu(*menu, [this](QAction *action) {
        m_actions[++m_lastId] = action;
        return m_lastId;
    });
    m_menu.reset(menu.release());
    ++m_revision;
    return true;
}

const BusMenuItem &BusMenu::top()
{
    if (m_revision == 0)
        update();
    return m_top;
}

uint BusMenu::GetLayout(int parentId, int recursionDepth, const QStringList &, BusMenuItem &layout)
{
    const BusMenuItem *parent = findItem(top(), parentId);
    layout = parent ? cut(*parent, recursionDepth) : BusMenuItem{parentId, {}, {}};
    return m_revision;
}

QList<BusMenuProperties> BusMenu::GetGroupProperties(const QList<int> &ids, const QStringList &)
{
    QList<BusMenuProperties> result;
    collect(top(), ids, result);
    return result;
}

QDBusVariant BusMenu::GetProperty(int id, const QString &name)
{
    const BusMenuItem *item = findItem(top(), id);
    return QDBusVariant(item ? item->properties.value(name, QString()) : QString());
}

void BusMenu::Event(int id, const QString &eventId, const QDBusVariant &, uint)
{
    if (id == 0 && eventId == u"opened"_s)
        m_isOpen = true;
    if (id == 0 && eventId == u"closed"_s) {
        m_isOpen = false;
        if (std::exchange(m_hasChanged, false))
            noteChange();
    }
    const auto action = m_actions.find(id);
    if (eventId != u"clicked"_s || action == m_actions.end() || !action->second)
        return;
    // Some commands end only when the user is done; the tray is not to wait.
    QMetaObject::invokeMethod(action->second, &QAction::trigger, Qt::QueuedConnection);
}

QList<int> BusMenu::EventGroup(const QList<BusMenuEvent> &events)
{
    for (const BusMenuEvent &event : events)
        Event(event.id, event.name, event.data, event.timestamp);
    return {};
}

bool BusMenu::AboutToShow(int id) { return id == 0 && update(); }

QList<int> BusMenu::AboutToShowGroup(const QList<int> &ids, QList<int> &)
{
    return ids.contains(0) && update() ? QList<int>{0} : QList<int>();
}

} // namespace tovel
