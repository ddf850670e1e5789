#include "platform/session/gnome/snapshot.h"

#include "texts/one_line.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>
#include <limits>

namespace tovel::gnome {

using namespace Qt::StringLiterals;

namespace {

constexpr int MaximumCoordinate = 1 << 20;

QString textFrom(const QJsonValue &value) { return oneLine(value.toString()); }

template <typename Number>
Number positive(const QJsonValue &value)
{
    const qint64 number = value.toInteger();
    const bool isInRange
        = number > 0 && static_cast<quint64>(number) <= std::numeric_limits<Number>::max();
    return isInRange ? static_cast<Number>(number) : Number(0);
}

std::uint32_t idFrom(const QJsonValue &value) { return positive<std::uint32_t>(value); }

QRectF rectFrom(const QJsonValue &value)
{
    const QJsonArray numbers = value.toArray();
    const auto number = [&numbers](qsizetype place, int least) {
        const double told = numbers.at(place).toDouble();
        return std::clamp(told, double(least), double(MaximumCoordinate));
    };
    return QRectF(number(0, -MaximumCoordinate), number(1, -MaximumCoordinate), number(2, 0),
                  number(3, 0));
}

WindowKind kindFrom(const QString &type, bool hasParent)
{
    if (type == u"desktop")
        return WindowKind::Desktop;
    if (type == u"dock")
        return WindowKind::Dock;
    if (type == u"other")
        return WindowKind::Overlay;
    return type == u"dialog" || hasParent ? WindowKind::Dialog : WindowKind::Standard;
}

// The Shell names applications by their desktop files, and those without one by a window of theirs.
QString applicationFrom(const QJsonObject &window)
{
    QString name = textFrom(window.value("appId"_L1));
    if (name.endsWith(u".desktop"))
        name.chop(8);
    const bool isWindowOnly = name.isEmpty() || name.startsWith(u"window:");
    if (!isWindowOnly)
        return name;
    // Which is the application id of a Wayland window.
    return idFrom(window.value("x11"_L1)) == 0 ? textFrom(window.value("className"_L1)) : QString();
}

ShellWindow windowFrom(const QJsonObject &object)
{
    ShellWindow window;
    window.x11Window = idFrom(object.value("x11"_L1));
    const QJsonValue workspace = object.value("workspace"_L1);
    window.workspace = idFrom(workspace);
    window.isOnAll = workspace.isDouble() && workspace.toDouble() == 0;
    SessionWindow &facts = window.facts;
    facts.id = idFrom(object.value("id"_L1));
    facts.transientFor = idFrom(object.value("parent"_L1));
    facts.kind = kindFrom(object.value("type"_L1).toString(), facts.transientFor != 0);
    if (const QString title = textFrom(object.value("title"_L1)); !title.isEmpty())
        facts.title = title;
    facts.minimized = object.value("minimized"_L1).toBool();
    facts.fullScreen = object.value("fullScreen"_L1).toBool();
    facts.skipsTaskBar = object.value("skipsTaskBar"_L1).toBool();
    facts.frame = rectFrom(object.value("frame"_L1));
    facts.process = positive<std::int32_t>(object.value("process"_L1));
    facts.appId = applicationFrom(object);
    facts.sandboxId = textFrom(object.value("sandboxId"_L1));
    facts.instanceName = textFrom(object.value("instanceName"_L1));
    facts.className = textFrom(object.value("className"_L1));
    facts.gtkApplicationId = textFrom(object.value("gtkApplicationId"_L1));
    return window;
}

// The records of the list, as long as there is room; what has no id, or that of one before, is
// passed over.
template <typename Take>
QSet<std::uint32_t> takeEach(const QJsonValue &list, qsizetype room, const Take &take)
{
    QSet<std::uint32_t> taken;
    for (const QJsonValue &value : list.toArray()) {
        const std::uint32_t id = idFrom(value["id"_L1]);
        if (id == 0 || taken.contains(id) || taken.size() == room)
            continue;
        taken.insert(id);
        take(id, value.toObject());
    }
    return taken;
}

QList<ShellMonitor> monitorsFrom(const QJsonValue &list)
{
    QList<ShellMonitor> monitors;
    for (const QJsonValue &value : list.toArray()) {
        const QRectF bounds = rectFrom(value["bounds"_L1]);
        if (!bounds.isEmpty() && monitors.size() < MaximumMonitors)
            monitors.append({bounds, value["primary"_L1].toBool()});
    }
    return monitors;
}

} // namespace

std::optional<Snapshot> readSnapshot(const QByteArray &json)
{
    if (json.size() > MaximumSnapshotLength)
        return std::nullopt;
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    Snapshot snapshot;
    const auto workspaces
        = takeEach(object.value("workspaces"_L1), MaximumWorkspaces,
                   [&](std::uint32_t id, const QJsonObject &workspace) {
                       snapshot.workspaces.append({id, textFrom(workspace.value("name"_L1))});
                   });
    if (workspaces.isEmpty())
        return std::nullopt;
    const auto known = [](const QSet<std::uint32_t> &all, std::uint32_t id) {
        return all.contains(id) ? id : 0;
    };
    const auto windows = takeEach(object.value("windows"_L1), MaximumWindows,
                                  [&](std::uint32_t, const QJsonObject &window) {
                                      snapshot.windows.append(windowFrom(window));
                                  });
    for (ShellWindow &window : snapshot.windows) {
        window.workspace = known(workspaces, window.workspace);
        window.facts.transientFor = known(windows, window.facts.transientFor);
    }
    auto unordered = windows;
    for (const QJsonValue &value : object.value("stacking"_L1).toArray()) {
        if (unordered.remove(idFrom(value)))
            snapshot.stacking.append(idFrom(value));
    }
    snapshot.active = known(windows, idFrom(object.value("active"_L1)));
    snapshot.shown = known(workspaces, idFrom(object.value("shown"_L1)));
    snapshot.onlyOnPrimary = object.value("onlyOnPrimary"_L1).toBool();
    snapshot.monitors = monitorsFrom(object.value("monitors"_L1));
    return snapshot;
}

} // namespace tovel::gnome
