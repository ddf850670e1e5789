#pragma once

#include "platform/clock.h"
#include "platform/linux/applications/application_launcher.h"
#include "platform/linux/applications/session_applications.h"
#include "platform/workspace.h"

#include <functional>
#include <list>

namespace tovel {

// Running applications and screens of a desktop session, and launching by desktop entries.
class LinuxWorkspace final : public Workspace
{
public:
    // Borrows them; the applications are null where there is no session.
    LinuxWorkspace(SessionApplications *applications, InstalledApplications &installed,
                   Clock &clock);
    ~LinuxWorkspace() override;

    QList<NSRunningApplicationRef> runningApplications() const override;
    NSRunningApplicationRef runningApplicationWithProcessIdentifier(
        std::int32_t pid) const override;

    std::optional<QUrl> URLForApplicationWithBundleIdentifier(
        const QString &bundleIdentifier) const override;

    std::optional<QString> localizedNameOfApplicationAtURL(const QUrl &location) const override;

    // The location is a desktop file. A launch has succeeded when the application has its first
    // window; one that takes longer than WindowDeadline, or never shows one, has succeeded then.
    void openApplicationAtURL(const QUrl &location, LaunchHandler handler) override;

    // What opens them; a session has no such settings of its own: access comes with the window
    // manager.
    void setSettingsOpener(std::function<void()> opener) { m_openSettings = std::move(opener); }
    void openAccessibilitySettings() override
    {
        if (m_openSettings)
            m_openSettings();
    }

    QList<NSScreen> screens() const override;
    [[nodiscard]] Subscription observeActiveSpaceDidChange(std::function<void()> handler) override;
    QString mainBundleIdentifier() const override;

    // In seconds.
    static constexpr double WindowDeadline = 10;

private:
    struct Launch;
    struct Observers;

    const ApplicationEntry *entryAt(const QUrl &location) const; // null for none
    void awaitWindow(std::list<Launch>::iterator launch);
    bool isRunning(const QString &bundleIdentifier) const;

    SessionApplications *m_applications;
    InstalledApplications &m_installed;
    Clock &m_clock;
    std::shared_ptr<Observers> m_observers;
    std::list<Launch> m_launches;
    ApplicationLauncher m_launcher;
    std::function<void()> m_openSettings;
};

} // namespace tovel
