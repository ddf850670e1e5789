#include "platform/session/gnome/picture.h"

#include "platform/session/workspace_names.h"

#include <algorithm>

namespace tovel::gnome {

using namespace Qt::StringLiterals;

void Picture::clear()
{
    if (m_outputs.isEmpty())
        return;
    ++m_revision;
    m_screens.clear();
    m_outputs.clear();
    m_windows.clear();
    m_frontToBack.clear();
    m_active = 0;
    m_hasFixedScreens = false;
    m_byId.clear();
}

void Picture::expectOtherNumbers(bool isSameShell)
{
    m_hasOtherNumbers = true;
    for (Known &known : m_row) {
        if (!isSameShell)
            known.windows.clear();
    }
}

void Picture::draw(const Snapshot &snapshot, const QList<NamedMonitor> &monitors)
{
    ++m_revision;
    QHash<std::uint32_t, QSet<std::uint32_t>> held;
    for (const ShellWindow &window : snapshot.windows)
        held[window.workspace].insert(window.facts.id);
    QList<Known> row;
    for (const ShellWorkspace &workspace : snapshot.workspaces)
        row.append({0, held.value(workspace.id)});
    if (std::exchange(m_hasOtherNumbers, false))
        recognize(snapshot, row);
    for (qsizetype i = 0; i < row.size(); ++i) {
        std::uint64_t &id = m_ids[snapshot.workspaces[i].id];
        if (id == 0)
            id = newId(snapshot.workspaces[i].id);
        row[i].id = id;
    }
    m_row = row;
    drawScreens(snapshot, monitors);
    drawRow(snapshot);
    drawWindows(snapshot);
}

// Each of the new row takes the id of the old one with most of its windows, and those that found
// none by that, the id that was at their place, unless that is taken.
void Picture::recognize(const Snapshot &snapshot, const QList<Known> &row)
{
    m_ids.clear();
    QList<Known> left = m_row;
    QList<std::uint64_t> ids(row.size(), 0);
    for (qsizetype i = 0; i < row.size(); ++i) {
        const auto common = [&windows = row[i].windows](const Known &known) {
            return (known.windows & windows).size();
        };
        const auto best = std::ranges::max_element(left, {}, common);
        if (best == left.end() || common(*best) == 0)
            continue;
        ids[i] = std::exchange(best->id, 0);
        best->windows.clear();
    }
    for (qsizetype i = 0; i < qMin(row.size(), left.size()); ++i) {
        if (ids[i] == 0)
            ids[i] = std::exchange(left[i].id, 0);
    }
    for (qsizetype i = 0; i < row.size(); ++i) {
        if (ids[i] != 0)
            m_ids.insert(snapshot.workspaces[i].id, ids[i]);
    }
}

// The extension's number where that was never given, so that programs that started later agree.
std::uint64_t Picture::newId(std::uint32_t number)
{
    const std::uint64_t id = m_given.contains(number) ? m_highestId + 1 : number;
    m_given.insert(id);
    m_highestId = qMax(m_highestId, id);
    return id;
}

void Picture::drawScreens(const Snapshot &snapshot, const QList<NamedMonitor> &monitors)
{
    m_screens.clear();
    for (qsizetype i = 0; i < snapshot.monitors.size(); ++i) {
        const ShellMonitor &monitor = snapshot.monitors[i];
        const auto named
            = std::ranges::find(monitors, monitor.bounds.topLeft(), &NamedMonitor::place);
        SessionScreen screen{.bounds = monitor.bounds};
        if (named != monitors.end()) {
            screen.name = named->name;
            screen.builtIn = named->isBuiltIn;
        }
        const bool isUnique = std::ranges::none_of(
            m_screens, [&screen](const SessionScreen &it) { return it.name == screen.name; });
        if (screen.name.isEmpty() || !isUnique)
            screen.name = u"Monitor %1"_s.arg(i + 1);
        screen.number = screenNumber(screen.name);
        if (monitor.isPrimary)
            m_screens.prepend(screen);
        else
            m_screens.append(screen);
    }
}

std::uint32_t Picture::screenNumber(const QString &name)
{
    std::uint32_t &number = m_screenNumbers[name];
    if (number == 0)
        number = static_cast<std::uint32_t>(m_screenNumbers.size());
    return number;
}

void Picture::drawRow(const Snapshot &snapshot)
{
    SessionOutput output;
    m_hasFixedScreens = snapshot.onlyOnPrimary && m_screens.size() > 1;
    output.isLone = true;
    if (m_hasFixedScreens)
        output.screen = m_screens.first().number;
    QStringList names;
    for (const ShellWorkspace &workspace : snapshot.workspaces)
        names.append(workspace.name);
    names = chosenNames(names);
    for (qsizetype i = 0; i < m_row.size(); ++i)
        output.workspaces.append(
            {.id = m_row[i].id, .uuid = QString::number(i + 1), .name = names[i]});
    if (snapshot.shown != 0)
        output.shown = m_ids.value(snapshot.shown);
    m_outputs = {output};
}

void Picture::drawWindows(const Snapshot &snapshot)
{
    QList<std::uint64_t> all;
    for (const Known &known : m_row)
        all.append(known.id);
    m_windows.clear();
    m_byId.clear();
    for (const ShellWindow &window : snapshot.windows) {
        SessionWindow described = window.facts;
        if (window.isOnAll)
            described.workspaces = all;
        else if (window.workspace != 0)
            described.workspaces = {m_ids.value(window.workspace)};
        m_byId.insert(described.id, window);
        m_windows.append(std::move(described));
    }
    m_frontToBack = snapshot.stacking;
    m_active = snapshot.active;
}

const ShellWindow *Picture::window(std::uint32_t id) const
{
    const auto found = m_byId.constFind(id);
    return found == m_byId.cend() ? nullptr : &*found;
}

std::uint32_t Picture::workspace(std::uint64_t id) const
{
    for (const SessionOutput &output : m_outputs) {
        for (const SessionWorkspace &workspace : output.workspaces) {
            if (workspace.id == id)
                return m_ids.key(id);
        }
    }
    return 0;
}

} // namespace tovel::gnome
