#pragma once

#include "platform/session/desktop_session.h"
#include "platform/session/x11/connection.h"

#include <QHash>
#include <QSet>

#include <cstdint>
#include <optional>
#include <vector>

namespace tovel::x11 {

// What the root window says of the manager and its desktops (EWMH).
struct RootState
{
    bool hasManager = false; // _NET_SUPPORTING_WM_CHECK names a window that is there
    QString managerName;
    QSet<Atom> supported;
    std::uint32_t desktopCount = 0;
    // Changes when desktops went away or changed places: which of them did is not told, and numbers
    // from before may now be those of other desktops.
    std::uint32_t desktopGeneration = 0;
    QStringList desktopNames; // as they stand; there may be fewer, or more, than desktops
    std::uint32_t currentDesktop = 0;
    bool hasCurrentDesktop = false;
    std::uint32_t activeWindow = 0;
    bool hasMoreDesktops = false; // than MaximumDesktops
    bool hasMoreClients = false; // than MaximumClients

    bool operator==(const RootState &) const = default;
};

// More than any manager offers and anybody opens; counts above are cut to them.
inline constexpr std::uint32_t MaximumDesktops = 256;
inline constexpr std::uint32_t MaximumClients = 8192;

// The value of _NET_WM_DESKTOP that means every desktop.
inline constexpr std::uint32_t AllDesktops = 0xFFFFFFFF;

// Whether the desktops' names tell that desktops have changed places: the same names, in another
// order.
bool wereDesktopsReordered(const QStringList &before, const QStringList &now);

// Whether a count of desktops that was set so often between two readings tells that some went.
bool wereDesktopsRemoved(std::uint32_t before, std::uint32_t now, int changes);

struct MirroredWindow
{
    SessionWindow window; // without its workspaces, which depend on the count of desktops
    std::optional<std::uint32_t> desktop;
    std::vector<Atom> types; // _NET_WM_WINDOW_TYPE
    std::optional<std::int32_t> claimedProcess; // _NET_WM_PID
    std::int32_t serverProcess = 0; // X-Resource
    bool isLocalMachine = false;
    bool exists = false;
};

// A picture of the root window's and every client window's properties, kept true by events: it
// asks the server only for what has changed. Costs one wait when nothing has, and a few more for
// any number of changes.
class WindowMirror final
{
public:
    explicit WindowMirror(Connection &connection);

    // Makes the picture true as of now.
    void update();

    // Takes note of the events that have arrived, without asking the server for anything. True when
    // the root window's state may have changed.
    bool collectEvents();

    // Changes with the picture.
    std::uint64_t revision() const { return m_revision; }

    const RootState &root() const { return m_rootState; }

    // In the manager's mapping order, oldest first; windows that are gone left out.
    const std::vector<Window> &clients() const { return m_clients; }

    // Bottom to top; the mapping order where the manager does not tell.
    const std::vector<Window> &stacking() const { return m_stacking; }

    // Null for a window that is no client or is gone.
    const MirroredWindow *window(Window id) const;

    const std::vector<Monitor> &monitors() const { return m_monitors; }

private:
    void refreshRoot();
    void followClientList();
    void refreshClients();
    void listWindows();
    bool isDirty() const;
    void apply(MirroredWindow &window, Atom atom, const Property &property);

    Connection &m_connection;
    QString m_hostName;
    std::uint64_t m_revision = 1;
    RootState m_rootState;
    Window m_checkWindow = 0;
    std::vector<Window> m_listedClients;
    std::vector<Window> m_listedStacking;
    std::vector<Window> m_order; // the listed clients without repetitions
    std::vector<Window> m_clients;
    std::vector<Window> m_stacking;
    QHash<Window, MirroredWindow> m_windows;
    std::vector<Monitor> m_monitors;

    int m_countChanges = 0; // of desktops, told by events since it was read
    bool m_isKept = true; // until the server is gone
    bool m_rootDirty = true;
    bool m_clientsDirty = true;
    bool m_clientsChanged = true; // the list itself, not only what became of its windows
    bool m_monitorsDirty = true;
    QHash<Window, QSet<Atom>> m_dirtyProperties;
    QSet<Window> m_dirtyFacts;
};

} // namespace tovel::x11
