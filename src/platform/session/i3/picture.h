#pragma once

#include "platform/session/i3/assigned_workspaces.h"
#include "platform/session/i3/readings.h"
#include "platform/session/session_records.h"

#include <QHash>
#include <QList>

#include <cstdint>
#include <optional>

namespace tovel::i3 {

// What a picture is made of.
struct Sources
{
    Compositor compositor = Compositor::I3;
    Tree tree{};
    QList<AssignedWorkspace> assigned{};
    // Under X11: the same windows, oldest first, and the primary screen, as X11 knows them.
    QList<SessionWindow> x11Windows{};
    QString primary{};
};

// The session in the contract's words. A workspace is what its name says, whichever container
// stands for it: its id is given to no other, and it has the same one when it comes back.
class Picture final
{
public:
    void draw(const Sources &sources);
    // Nothing is left but the ids.
    void clear();

    // Changes whenever something below does.
    std::uint64_t revision() const { return m_revision; }

    const QList<SessionScreen> &screens() const { return m_screens; }
    const QList<SessionOutput> &outputs() const { return m_outputs; }
    const QList<SessionWindow> &windows() const { return m_windows; }
    const QList<std::uint32_t> &frontToBack() const { return m_frontToBack; }
    std::uint32_t activeWindow() const { return m_active; }

    // Null for a window that is not there.
    const TreeWindow *window(std::uint32_t id) const;
    // The name; nothing for a workspace that is not there, and could not be had by its name.
    std::optional<QString> workspace(std::uint64_t id) const;
    // 0 for one that is not there.
    std::uint64_t workspaceNamed(const QString &name) const;
    const QStringList &outputsByFocus() const { return m_outputsByFocus; }
    bool hasScratchpad() const { return m_hasScratchpad; }

private:
    struct Row
    {
        QString output;
        QStringList workspaces;
    };

    std::uint64_t idOf(const QString &workspace);
    std::uint32_t screenNumber(const QString &output);
    SessionWindow sessionWindow(const TreeWindow &window, std::uint32_t id,
                                const QHash<std::uint32_t, SessionWindow> &byX11,
                                const QList<Row> &rows);

    std::uint64_t m_revision = 1;
    QHash<QString, std::uint64_t> m_workspaceIds;
    QHash<QString, std::uint32_t> m_screenNumbers;
    QList<SessionScreen> m_screens;
    QList<SessionOutput> m_outputs;
    QList<SessionWindow> m_windows;
    QList<std::uint32_t> m_frontToBack;
    std::uint32_t m_active = 0;
    QHash<std::uint32_t, TreeWindow> m_byId;
    QHash<std::uint32_t, std::uint32_t> m_idsByX11; // those of windows of X11
    QStringList m_outputsByFocus;
    bool m_hasScratchpad = false;
};

} // namespace tovel::i3
