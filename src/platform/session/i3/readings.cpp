#include "platform/session/i3/readings.h"
#include "texts/one_line.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <limits>
#include <vector>

namespace tovel::i3 {

using namespace Qt::StringLiterals;

namespace {

// Containers in containers; deeper ones are somebody's mistake.
constexpr int MaximumDepth = 200;

constexpr int MaximumCoordinate = 1 << 20;

// Both hand on the names of windows and workspaces byte by byte, be they UTF-8 or not.
QJsonDocument documentFrom(const QByteArray &json)
{
    return QJsonDocument::fromJson(json.isValidUtf8() ? json : QString::fromUtf8(json).toUtf8());
}

QJsonObject objectFrom(const QByteArray &json) { return documentFrom(json).object(); }

QString cleanText(const QJsonValue &value) { return oneLine(value.toString()); }

template <typename Number>
Number positive(const QJsonValue &value)
{
    const qint64 number = value.toInteger();
    const bool isInRange
        = number > 0 && static_cast<quint64>(number) <= std::numeric_limits<Number>::max();
    return isInRange ? static_cast<Number>(number) : Number(0);
}

QRectF rectFrom(const QJsonValue &value)
{
    const QJsonObject rect = value.toObject();
    const auto number = [&rect](QLatin1StringView name) {
        return qBound(-MaximumCoordinate, rect.value(name).toInt(), MaximumCoordinate);
    };
    return QRectF(number("x"_L1), number("y"_L1), qMax(0, number("width"_L1)),
                  qMax(0, number("height"_L1)));
}

// Of X11 programs, in the words of the Extended Window Manager Hints.
WindowKind kindFrom(const QString &type)
{
    if (type == u"dialog")
        return WindowKind::Dialog;
    const bool isOverlay = type.endsWith(u"menu") || type == u"splash" || type == u"tooltip"
        || type == u"notification";
    return isOverlay ? WindowKind::Overlay : WindowKind::Standard;
}

struct Child
{
    QJsonObject node;
    bool isFloating;
    qsizetype rank = 0; // among its siblings, by when they had the keyboard
};

// In the tree's own order.
std::vector<Child> childrenOf(const QJsonObject &node)
{
    std::vector<Child> children;
    for (const QJsonValue &child : node.value("nodes"_L1).toArray())
        children.push_back({child.toObject(), false, 0});
    for (const QJsonValue &child : node.value("floating_nodes"_L1).toArray())
        children.push_back({child.toObject(), true, 0});
    return children;
}

// Those that had the keyboard last first.
std::vector<Child> childrenByFocus(const QJsonObject &node)
{
    QHash<qint64, qsizetype> ranks;
    for (const QJsonValue &id : node.value("focus"_L1).toArray())
        ranks.insert(id.toInteger(), ranks.size());
    auto children = childrenOf(node);
    for (Child &child : children)
        child.rank = ranks.value(child.node.value("id"_L1).toInteger(), ranks.size());
    std::ranges::stable_sort(children, {}, &Child::rank);
    return children;
}

bool isWorkspace(const QJsonObject &node) { return node.value("type"_L1) == "workspace"_L1; }

// What only the session itself sees: the scratchpad and where it is.
bool isInternal(const QString &name) { return name.startsWith(u"__"); }

// Empty for none that Tovel could name.
QString workspaceName(const QJsonObject &node)
{
    const QString name = node.value("name"_L1).toString();
    return name.size() > MaximumNameLength || isInternal(name) ? QString() : name;
}

// Directly on their output, or one container further down.
QStringList workspacesOf(const QJsonObject &output, qsizetype room)
{
    QStringList names;
    const auto add = [&names, room](const QJsonObject &node) {
        if (names.size() >= room || !isWorkspace(node))
            return;
        const QString name = workspaceName(node);
        if (!name.isEmpty() && !names.contains(name))
            names.append(name);
    };
    for (const Child &child : childrenOf(output)) {
        add(child.node);
        for (const Child &grandchild : childrenOf(child.node))
            add(grandchild.node);
    }
    return names;
}

QList<TreeOutput> outputsOf(const QJsonObject &root)
{
    QList<TreeOutput> outputs;
    qsizetype room = MaximumWorkspaces;
    for (const Child &child : childrenOf(root)) {
        const QString name = cleanText(child.node.value("name"_L1));
        const bool isKnown = std::ranges::any_of(
            outputs, [&name](const TreeOutput &output) { return output.name == name; });
        if (name.isEmpty() || isInternal(name) || isKnown || outputs.size() == MaximumOutputs)
            continue;
        const QStringList workspaces = workspacesOf(child.node, room);
        room -= workspaces.size();
        outputs.append({name, rectFrom(child.node.value("rect"_L1)), workspaces, {}});
    }
    return outputs;
}

// Where in the tree a container is, and what holds for all that is in it.
struct Place
{
    TreeOutput *output = nullptr; // null: the scratchpad's
    QString workspace;
    bool isDock = false;
    bool isFloating = false;
    bool isSticky = false;
    bool isFullScreen = false;
};

bool isWindow(const QJsonObject &node)
{
    return positive<std::uint32_t>(node.value("window"_L1)) != 0
        || node.value("app_id"_L1).isString() || positive<std::int32_t>(node.value("pid"_L1)) != 0;
}

TreeWindow windowFrom(const QJsonObject &node, const Place &place)
{
    TreeWindow window;
    window.container = positive<std::uint64_t>(node.value("id"_L1));
    window.x11Window = positive<std::uint32_t>(node.value("window"_L1));
    window.output = place.output ? place.output->name : QString();
    window.workspace = place.workspace;
    window.isOnAll = place.output && (place.isDock || (place.isFloating && place.isSticky));
    window.isFocused = node.value("focused"_L1).toBool();

    SessionWindow &facts = window.facts;
    const QJsonObject properties = node.value("window_properties"_L1).toObject();
    // i3 tells it of the container, sway of the window in it.
    const QJsonValue type
        = (node.contains("window_type"_L1) ? node : properties).value("window_type"_L1);
    facts.kind = place.isDock ? WindowKind::Dock : kindFrom(type.toString());
    const QString title = cleanText(node.value("name"_L1));
    if (!title.isEmpty())
        facts.title = title;
    facts.minimized = !place.output;
    facts.fullScreen = place.isFullScreen;
    const QRectF frame = rectFrom(node.value("rect"_L1));
    const QRectF content = rectFrom(node.value("window_rect"_L1));
    facts.frame = content.isEmpty() ? frame : content.translated(frame.topLeft());
    facts.transientFor = positive<std::uint32_t>(properties.value("transient_for"_L1));
    facts.process = positive<std::int32_t>(node.value("pid"_L1));
    facts.appId = cleanText(node.value("app_id"_L1));
    facts.sandboxId = cleanText(node.value("sandbox_app_id"_L1));
    facts.instanceName = cleanText(properties.value("instance"_L1));
    facts.className = cleanText(properties.value("class"_L1));
    return window;
}

void addWindows(Tree &tree, const QJsonObject &node, Place place, int depth)
{
    if (depth > MaximumDepth || tree.windows.size() == MaximumWindows)
        return;
    const QString type = node.value("type"_L1).toString();
    place.isDock = place.isDock || type == u"dockarea";
    place.isSticky = place.isSticky || node.value("sticky"_L1).toBool();
    if (isWorkspace(node) && place.output && place.workspace.isEmpty()) {
        place.workspace = workspaceName(node);
        if (!place.output->workspaces.contains(place.workspace))
            return;
        // The one that had the keyboard last is shown.
        if (place.output->shown.isEmpty())
            place.output->shown = place.workspace;
    } else if (!isWorkspace(node)) {
        // Workspaces say so of themselves all the time.
        place.isFullScreen = place.isFullScreen || node.value("fullscreen_mode"_L1).toInt() > 0;
    }
    if (isWindow(node)) {
        tree.windows.append(windowFrom(node, place));
        return;
    }
    for (const auto &[child, isFloating, rank] : childrenByFocus(node)) {
        Place inside = place;
        inside.isFloating = place.isFloating || isFloating;
        addWindows(tree, child, inside, depth + 1);
    }
}

} // namespace

std::optional<Version> readVersion(const QByteArray &json)
{
    const QJsonObject version = objectFrom(json);
    const QString text = cleanText(version.value("human_readable"_L1));
    if (text.isEmpty())
        return std::nullopt;
    const bool isSway = version.value("variant"_L1) == "sway"_L1;
    return Version{isSway ? Compositor::Sway : Compositor::I3, text.section(u' ', 0, 0)};
}

std::optional<Tree> readTree(const QByteArray &json)
{
    const QJsonObject root = objectFrom(json);
    if (root.value("type"_L1) != "root"_L1)
        return std::nullopt;
    Tree tree{.outputs = outputsOf(root)};
    for (const Child &child : childrenByFocus(root)) {
        const QString name = cleanText(child.node.value("name"_L1));
        const auto output = std::ranges::find(tree.outputs, name, &TreeOutput::name);
        Place place;
        if (output != tree.outputs.end()) {
            place.output = &*output;
            tree.outputsByFocus.append(name);
        }
        if (place.output || isInternal(name))
            addWindows(tree, child.node, place, 1);
    }
    return tree;
}

bool readSuccess(const QByteArray &json)
{
    const QJsonDocument document = documentFrom(json);
    if (document.isObject())
        return document.object().value("success"_L1).toBool();
    const QJsonArray results = document.array();
    return !results.isEmpty() && std::all_of(results.begin(), results.end(), [](const auto &it) {
        return it.toObject().value("success"_L1).toBool();
    });
}

QString readConfiguration(const QByteArray &json)
{
    const QJsonObject answer = objectFrom(json);
    QStringList texts{answer.value("config"_L1).toString()};
    for (const QJsonValue &included : answer.value("included_configs"_L1).toArray())
        texts.append(included.toObject().value("variable_replaced_contents"_L1).toString());
    return texts.join(u'\n');
}

bool readsReload(const QByteArray &json)
{
    return objectFrom(json).value("change"_L1) == "reload"_L1;
}

QString readPressedCommand(const QByteArray &json)
{
    const QJsonObject event = objectFrom(json);
    if (event.value("change"_L1) != "run"_L1)
        return {};
    return event.value("binding"_L1).toObject().value("command"_L1).toString();
}

} // namespace tovel::i3
