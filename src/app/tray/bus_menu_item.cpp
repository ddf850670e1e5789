#include "app/tray/bus_menu_item.h"

#include <QAction>
#include <QBuffer>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QIcon>
#include <QMenu>
#include <QPixmap>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int iconSize = 16;

// The bus marks the keys of items with underscores.
QString label(const QString &text)
{
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'_')
            result += u"__"_s;
        else if (text[i] != u'&')
            result += text[i];
        else if (text.mid(i + 1, 1) == u"&"_s)
            result += text[i++];
        else
            result += u'_';
    }
    return result;
}

QByteArray png(const QIcon &icon)
{
    QByteArray data;
    QBuffer buffer(&data);
    icon.pixmap(iconSize).save(&buffer, "PNG");
    return data;
}

// The one stroke of the shortcut: the modifiers and the key.
QStringList keys(const QKeySequence &shortcut)
{
    QStringList keys = shortcut.toString(QKeySequence::PortableText).split(u'+');
    keys.replaceInStrings(u"Ctrl"_s, u"Control"_s);
    return keys;
}

QVariantMap propertiesOf(const QAction &action)
{
    if (action.isSeparator())
        return {{u"type"_s, u"separator"_s}};
    QVariantMap properties{{u"label"_s, label(action.text())}};
    if (!action.isEnabled())
        properties[u"enabled"_s] = false;
    if (action.isCheckable()) {
        properties[u"toggle-type"_s] = u"checkmark"_s;
        properties[u"toggle-state"_s] = action.isChecked() ? 1 : 0;
    }
    if (action.menu())
        properties[u"children-display"_s] = u"submenu"_s;
    if (!action.shortcut().isEmpty())
        properties[u"shortcut"_s]
            = QVariant::fromValue(QList<QStringList>{keys(action.shortcut())});
    if (!action.icon().isNull())
        properties[u"icon-data"_s] = png(action.icon());
    return properties;
}

} // namespace

BusMenuItem busMenu(const QMenu &menu, const std::function<int(QAction *)> &identifier)
{
    BusMenuItem top{0, {{u"children-display"_s, u"submenu"_s}}, {}};
    for (QAction *action : menu.actions()) {
        BusMenuItem item{identifier(action), propertiesOf(*action), {}};
        if (action->menu())
            item.children = busMenu(*action->menu(), identifier).children;
        top.children.push_back(item);
    }
    return top;
}

const BusMenuItem *findItem(const BusMenuItem &top, int id)
{
    if (top.id == id)
        return &top;
    for (const BusMenuItem &child : top.children) {
        if (const BusMenuItem *found = findItem(child, id))
            return found;
    }
    return nullptr;
}

BusMenuItem cut(BusMenuItem item, int depth)
{
    if (depth == 0)
        item.children.clear();
    const int left = depth > 0 ? depth - 1 : depth;
    for (BusMenuItem &child : item.children)
        child = cut(std::move(child), left);
    return item;
}

QDBusArgument &operator<<(QDBusArgument &argument, const BusMenuItem &item)
{
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const BusMenuItem &child : item.children)
        argument << QDBusVariant(QVariant::fromValue(child));
    argument.endArray();
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, BusMenuItem &item)
{
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        item.children.push_back(qdbus_cast<BusMenuItem>(child.variant()));
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

} // namespace tovel
