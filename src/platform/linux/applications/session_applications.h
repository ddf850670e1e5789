#pragma once

#include "platform/linux/applications/application_index.h"
#include "platform/linux/applications/installed_applications.h"
#include "platform/session/desktop_session.h"
#include "platform/workspace.h"

#include <QHash>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace tovel {

class SessionApplications;

// An application that has windows in the session. Ends, for its holders, with its last window.
class SessionApplication final : public NSRunningApplication
{
public:
    SessionApplication(SessionApplications &owner, std::int32_t platformProcess,
                       ApplicationIdentity identity, std::optional<QDateTime> launchDate);

    std::int32_t processIdentifier() const override { return m_platformProcess; }
    std::optional<QString> bundleIdentifier() const override;
    std::optional<QString> localizedName() const override;
    std::optional<NSImage> icon() const override;
    NSApplicationActivationPolicy activationPolicy() const override { return m_policy; }
    // Sessions hide windows, not applications.
    bool isHidden() const override { return false; }
    bool isTerminated() const override;
    std::optional<QDateTime> launchDate() const override { return m_launchDate; }
    bool activateWithOptions(std::uint32_t options) override;

    // Oldest first.
    const QList<std::uint32_t> &windows() const { return m_windows; }

    // The window that the next activation brings forward; 0 for the frontmost.
    void setMainWindow(std::uint32_t window) { m_mainWindow = window; }

private:
    friend class SessionApplications;

    SessionApplications *m_owner;
    std::int32_t m_platformProcess;
    ApplicationIdentity m_identity;
    std::optional<QDateTime> m_launchDate;
    NSApplicationActivationPolicy m_policy = NSApplicationActivationPolicy::Accessory;
    QList<std::uint32_t> m_windows;
    std::uint32_t m_mainWindow = 0;
};

using SessionApplicationRef = std::shared_ptr<SessionApplication>;

// Which applications the session's windows belong to. Every read is as true as the session's own.
class SessionApplications final
{
public:
    // Borrows both.
    SessionApplications(DesktopSession &session, InstalledApplications &installed);
    ~SessionApplications();

    DesktopSession &session() { return m_session; }

    // In the order in which they got their first windows.
    const QList<SessionApplicationRef> &running();

    // Null when there is none.
    SessionApplicationRef withProcess(std::int32_t platformProcess);
    SessionApplicationRef ownerOf(std::uint32_t window);

    // Null for a window that is not there (any more). Holds until the next read of the session.
    const SessionWindow *window(std::uint32_t window);

    // The frontmost of the application's windows that may be brought forward; 0 when it has none.
    std::uint32_t frontmostWindow(const SessionApplication &application);

private:
    // What makes two windows the same running application: the process (told apart from later
    // ones of the same number by its start) and what it is.
    struct Key
    {
        std::int32_t process = 0;
        std::uint64_t startTicks = 0;
        QString bundleIdentifier;

        bool operator==(const Key &) const = default;
    };

    // What was found out about a window, and what from.
    struct Owner
    {
        SessionWindow evidence;
        Key key;
        ApplicationIdentity identity;
        QDateTime launchDate; // null when unknown
    };

    struct Entry
    {
        Key key;
        SessionApplicationRef application;
    };

    void update();
    void identifyWindows();
    // Each is read once and kept for the next window.
    struct Processes
    {
        QHash<std::int32_t, ProcessStart> starts;
        QHash<std::int32_t, ProcessClues> clues;
    };
    Owner identify(const SessionWindow &window, Processes &processes);
    const Owner &rootOwner(std::uint32_t window) const;
    std::int32_t platformProcessFor(const Key &key);
    template <typename Entries>
    static auto find(Entries &entries, const Key &key);

    DesktopSession &m_session;
    InstalledApplications &m_installed;
    std::uint64_t m_revision = 0;
    QHash<std::uint32_t, Owner> m_owners;
    QHash<std::uint32_t, SessionWindow> m_windows;
    QList<std::uint32_t> m_order;
    std::vector<Entry> m_applications;
    QList<SessionApplicationRef> m_running;
    QHash<std::int32_t, SessionApplicationRef> m_byProcess; // the same
    QHash<std::uint32_t, SessionApplicationRef> m_byWindow;
    std::int32_t m_nextInventedProcess;
};

} // namespace tovel
