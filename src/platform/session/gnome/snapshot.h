#pragma once

#include "platform/session/session_records.h"

#include <QByteArray>
#include <QList>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <optional>

// What Tovel's extension of GNOME Shell tells of the session (gnome/org.tovel.Shell1.xml).
namespace tovel::gnome {

struct ShellWindow
{
    std::uint32_t workspace = 0; // 0: it is on all, or on one that is not there
    bool isOnAll = false;
    std::uint32_t x11Window = 0; // 0: it is none of X11
    SessionWindow facts{}; // without workspaces

    bool operator==(const ShellWindow &) const = default;
};

struct ShellWorkspace
{
    std::uint32_t id = 0;
    QString name{}; // empty where nobody chose one

    bool operator==(const ShellWorkspace &) const = default;
};

struct ShellMonitor
{
    QRectF bounds;
    bool isPrimary = false;

    bool operator==(const ShellMonitor &) const = default;
};

// Ids are unique and never 0; whatever names a window or a workspace names one that is there, or is
// 0 (absent in the order of the windows).
struct Snapshot
{
    std::uint32_t active = 0;
    bool onlyOnPrimary = false;
    std::uint32_t shown = 0;
    QList<ShellWorkspace> workspaces{};
    QList<ShellMonitor> monitors{};
    QList<ShellWindow> windows{}; // oldest first
    QList<std::uint32_t> stacking{}; // front to back

    bool operator==(const Snapshot &) const = default;
};

// More than anybody has; what is beyond is left out.
inline constexpr qsizetype MaximumSnapshotLength = 32 << 20; // bytes
inline constexpr qsizetype MaximumWindows = 8192;
inline constexpr qsizetype MaximumWorkspaces = 256;
inline constexpr qsizetype MaximumMonitors = 64;

// A member that is missing, of another kind or out of range counts as not said; a window, workspace
// or monitor that cannot be named is left out. Nothing where the text is no JSON object with
// workspaces, or too long.
std::optional<Snapshot> readSnapshot(const QByteArray &json);

} // namespace tovel::gnome
