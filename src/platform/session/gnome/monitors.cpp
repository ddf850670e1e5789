#include "platform/session/gnome/monitors.h"

#include "platform/session/gnome/shell_bus.h"
#include "texts/one_line.h"

#include <QDBusArgument>
#include <QVariantMap>

namespace tovel::gnome {

using namespace Qt::StringLiterals;

namespace {

const QString Name = u"org.gnome.Mutter.DisplayConfig"_s;

// Of a monitor, as of its connector, maker, product and serial number.
QString readConnector(const QDBusArgument &from)
{
    QString connector;
    QString rest;
    from.beginStructure();
    from >> connector >> rest >> rest >> rest;
    from.endStructure();
    return oneLine(connector);
}

void skipModes(const QDBusArgument &from)
{
    from.beginArray();
    while (!from.atEnd())
        (void)from.asVariant();
    from.endArray();
}

// The connectors of those that are built in.
QStringList readBuiltIn(const QDBusArgument &from)
{
    QStringList connectors;
    from.beginArray();
    while (!from.atEnd()) {
        QVariantMap properties;
        from.beginStructure();
        const QString connector = readConnector(from);
        skipModes(from);
        from >> properties;
        from.endStructure();
        if (properties.value(u"is-builtin"_s).toBool())
            connectors.append(connector);
    }
    from.endArray();
    return connectors;
}

// Of those that show the same, the first one names the screen.
NamedMonitor readLogicalMonitor(const QDBusArgument &from)
{
    NamedMonitor monitor;
    int x = 0;
    int y = 0;
    double scale = 1;
    uint transform = 0;
    bool isPrimary = false;
    QVariantMap properties;
    from.beginStructure();
    from >> x >> y >> scale >> transform >> isPrimary;
    from.beginArray();
    while (!from.atEnd()) {
        const QString connector = readConnector(from);
        if (monitor.name.isEmpty())
            monitor.name = connector;
    }
    from.endArray();
    from >> properties;
    from.endStructure();
    monitor.place = QPointF(x, y);
    return monitor;
}

} // namespace

QList<NamedMonitor> askForMonitors(ShellBus &bus)
{
    const QDBusMessage reply
        = bus.call({Name, u"/org/gnome/Mutter/DisplayConfig"_s, Name, u"GetCurrentState"_s});
    if (reply.signature() != u"ua((ssss)a(siiddada{sv})a{sv})a(iiduba(ssss)a{sv})a{sv}")
        return {};
    const auto builtIn = readBuiltIn(reply.arguments()[1].value<QDBusArgument>());
    QList<NamedMonitor> monitors;
    const auto logical = reply.arguments()[2].value<QDBusArgument>();
    logical.beginArray();
    while (!logical.atEnd()) {
        monitors.append(readLogicalMonitor(logical));
        monitors.last().isBuiltIn = builtIn.contains(monitors.last().name);
    }
    logical.endArray();
    return monitors;
}

} // namespace tovel::gnome
