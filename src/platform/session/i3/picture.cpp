#include "platform/session/i3/picture.h"

#include "platform/session/built_in_screens.h"
#include "platform/session/i3/new_names.h"
#include "platform/session/workspace_names.h"
#include "texts/one_line.h"

#include <algorithm>
#include <limits>
#include <tuple>

namespace tovel::i3 {

using namespace Qt::StringLiterals;

namespace {

// Both sort by the numbers; those without come last.
std::uint64_t rank(const QString &name)
{
    return leadingNumber(name).value_or(std::numeric_limits<std::uint64_t>::max());
}

QStringList cleaned(QStringList names)
{
    for (QString &name : names)
        name = oneLine(name);
    return names;
}

std::uint32_t idOf(Compositor compositor, const TreeWindow &window)
{
    if (compositor == Compositor::I3)
        return window.x11Window;
    return window.container <= std::numeric_limits<std::uint32_t>::max()
        ? static_cast<std::uint32_t>(window.container)
        : 0;
}

// Where an assigned workspace would come up.
QString outputOf(const AssignedWorkspace &assigned, const Sources &sources)
{
    for (const QString &wanted : assigned.outputs) {
        const QString &name = wanted == u"primary" ? sources.primary : wanted;
        for (const TreeOutput &output : sources.tree.outputs) {
            if (output.name == name)
                return output.name;
        }
    }
    return {};
}

} // namespace

std::uint64_t Picture::idOf(const QString &workspace)
{
    const auto known = m_workspaceIds.constFind(workspace);
    if (known != m_workspaceIds.cend())
        return *known;
    const auto id = static_cast<std::uint64_t>(m_workspaceIds.size()) + 1;
    return *m_workspaceIds.insert(workspace, id);
}

std::uint32_t Picture::screenNumber(const QString &output)
{
    const auto known = m_screenNumbers.constFind(output);
    if (known != m_screenNumbers.cend())
        return *known;
    const auto number = static_cast<std::uint32_t>(m_screenNumbers.size()) + 1;
    return *m_screenNumbers.insert(output, number);
}

void Picture::clear()
{
    if (!m_screens.isEmpty() || !m_windows.isEmpty())
        ++m_revision;
    m_screens.clear();
    m_outputs.clear();
    m_windows.clear();
    m_frontToBack.clear();
    m_byId.clear();
    m_idsByX11.clear();
    m_active = 0;
    m_hasScratchpad = false;
}

void Picture::draw(const Sources &sources)
{
    ++m_revision;
    QList<TreeOutput> outputs = sources.tree.outputs;
    // The tree's order is that in which they were connected. sway knows no primary one.
    std::ranges::stable_sort(outputs, {}, [&sources](const TreeOutput &output) {
        return std::tuple(output.name != sources.primary, output.bounds.x(), output.bounds.y());
    });
    QStringList existing;
    for (const TreeOutput &output : outputs)
        existing += output.workspaces;

    QList<Row> rows;
    m_screens.clear();
    m_outputs.clear();
    for (const TreeOutput &output : outputs) {
        const std::uint32_t number = screenNumber(output.name);
        m_screens.append({number, output.name, output.bounds, isBuiltInScreen(output.name)});
        QStringList names = output.workspaces;
        for (const AssignedWorkspace &assigned : sources.assigned) {
            if (!existing.contains(assigned.name) && outputOf(assigned, sources) == output.name)
                names.append(assigned.name);
        }
        std::ranges::stable_sort(names, {}, rank);
        rows.append({output.name, names});
        SessionOutput row{.screen = number};
        const QStringList chosen = chosenNames(cleaned(names));
        for (qsizetype i = 0; i < names.size(); ++i) {
            row.workspaces.append({.id = idOf(names[i]), .uuid = names[i], .name = chosen[i]});
        }
        if (!output.shown.isEmpty())
            row.shown = idOf(output.shown);
        m_outputs.append(row);
    }

    QHash<std::uint32_t, SessionWindow> byX11;
    QHash<std::uint32_t, qsizetype> ages;
    for (const SessionWindow &window : sources.x11Windows) {
        ages.insert(window.id, ages.size());
        byX11.insert(window.id, window);
    }
    m_windows.clear();
    m_frontToBack.clear();
    m_byId.clear();
    m_idsByX11.clear();
    m_active = 0;
    m_hasScratchpad = false;
    m_outputsByFocus = sources.tree.outputsByFocus;
    for (const TreeWindow &window : sources.tree.windows) {
        const std::uint32_t id = i3::idOf(sources.compositor, window);
        if (id == 0 || m_byId.contains(id))
            continue;
        m_byId.insert(id, window);
        if (window.x11Window != 0)
            m_idsByX11.insert(window.x11Window, id);
        m_frontToBack.append(id);
        m_hasScratchpad = m_hasScratchpad || window.output.isEmpty();
        if (window.isFocused)
            m_active = id;
    }
    for (const std::uint32_t id : std::as_const(m_frontToBack))
        m_windows.append(sessionWindow(m_byId[id], id, byX11, rows));
    // sway counts its containers.
    std::ranges::sort(m_windows, {}, [&](const SessionWindow &window) {
        return std::pair(ages.value(window.id, ages.size()), window.id);
    });
}

SessionWindow Picture::sessionWindow(const TreeWindow &window, std::uint32_t id,
                                     const QHash<std::uint32_t, SessionWindow> &byX11,
                                     const QList<Row> &rows)
{
    SessionWindow result = byX11.value(window.x11Window, window.facts);
    result.id = id;
    result.minimized = window.facts.minimized;
    result.fullScreen = window.facts.fullScreen;
    result.workspaces.clear();
    if (window.isOnAll) {
        for (const Row &row : rows) {
            if (row.output != window.output)
                continue;
            for (const QString &name : row.workspaces)
                result.workspaces.append(idOf(name));
        }
    } else if (!window.workspace.isEmpty()) {
        result.workspaces.append(idOf(window.workspace));
    }
    if (!m_byId.contains(result.transientFor))
        result.transientFor = m_idsByX11.value(result.transientFor);
    return result;
}

const TreeWindow *Picture::window(std::uint32_t id) const
{
    const auto found = m_byId.constFind(id);
    return found == m_byId.cend() ? nullptr : &*found;
}

std::uint64_t Picture::workspaceNamed(const QString &name) const
{
    const std::uint64_t id = m_workspaceIds.value(name);
    return workspace(id) ? id : 0;
}

std::optional<QString> Picture::workspace(std::uint64_t id) const
{
    for (const SessionOutput &output : m_outputs) {
        for (const SessionWorkspace &workspace : output.workspaces) {
            if (workspace.id == id)
                return m_workspaceIds.key(id);
        }
    }
    return std::nullopt;
}

} // namespace tovel::i3
