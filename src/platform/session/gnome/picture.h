#pragma once

#include "platform/session/gnome/snapshot.h"
#include "platform/session/session_records.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

#include <cstdint>

namespace tovel::gnome {

// A screen as GNOME knows it beyond the extension.
struct NamedMonitor
{
    QPointF place; // of its corner, as in the snapshot
    QString name; // its connector
    bool isBuiltIn = false;

    bool operator==(const NamedMonitor &) const = default;
};

// The session in the contract's words. A workspace keeps its id when the extension comes back with
// numbers of its own: it is known again by the windows that it holds, else by its place.
class Picture final
{
public:
    void draw(const Snapshot &snapshot, const QList<NamedMonitor> &monitors);
    // Nothing is left but the ids.
    void clear();
    // What is drawn next has other numbers of workspaces, and those of its windows are another
    // Shell's unless the same one runs on.
    void expectOtherNumbers(bool isSameShell);

    // Changes whenever something below does.
    std::uint64_t revision() const { return m_revision; }

    const QList<SessionScreen> &screens() const { return m_screens; }
    const QList<SessionOutput> &outputs() const { return m_outputs; }
    const QList<SessionWindow> &windows() const { return m_windows; }
    const QList<std::uint32_t> &frontToBack() const { return m_frontToBack; }
    std::uint32_t activeWindow() const { return m_active; }
    // Whether windows on other screens than the primary one are on all workspaces.
    bool hasFixedScreens() const { return m_hasFixedScreens; }

    // Null for a window that is not there.
    const ShellWindow *window(std::uint32_t id) const;
    // The extension's number; 0 for a workspace that is not there.
    std::uint32_t workspace(std::uint64_t id) const;

private:
    // A workspace as it was last seen.
    struct Known
    {
        std::uint64_t id = 0;
        QSet<std::uint32_t> windows{};
    };

    void recognize(const Snapshot &snapshot, const QList<Known> &row);
    std::uint64_t newId(std::uint32_t number);
    void drawScreens(const Snapshot &snapshot, const QList<NamedMonitor> &monitors);
    void drawRow(const Snapshot &snapshot);
    void drawWindows(const Snapshot &snapshot);
    std::uint32_t screenNumber(const QString &name);

    std::uint64_t m_revision = 1;
    bool m_hasOtherNumbers = false;
    QHash<std::uint32_t, std::uint64_t> m_ids; // by the extension's numbers
    QSet<std::uint64_t> m_given;
    std::uint64_t m_highestId = 0;
    QList<Known> m_row;
    QHash<QString, std::uint32_t> m_screenNumbers;
    QList<SessionScreen> m_screens;
    QList<SessionOutput> m_outputs;
    QList<SessionWindow> m_windows;
    QList<std::uint32_t> m_frontToBack;
    std::uint32_t m_active = 0;
    bool m_hasFixedScreens = false;
    QHash<std::uint32_t, ShellWindow> m_byId;
};

} // namespace tovel::gnome
