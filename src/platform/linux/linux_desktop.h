#pragma once

#include "platform/application.h"
#include "platform/linux/applications/installed_applications.h"
#include "platform/linux/applications/session_applications.h"
#include "platform/linux/boottime_clock.h"
#include "platform/linux/linux_accessibility.h"
#include "platform/linux/linux_hot_keys.h"
#include "platform/linux/linux_own_windows.h"
#include "platform/linux/linux_quartz.h"
#include "platform/linux/linux_user_defaults.h"
#include "platform/linux/linux_window_server.h"
#include "platform/linux/linux_workspace.h"
#include "platform/platform.h"
#include "platform/space_maker.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace tovel {

// The platform over a running Linux session. Without a session every operation has its neutral
// result, but for the user defaults, the clock, and finding and launching applications. To be made
// after the QCoreApplication; one at a time.
class LinuxDesktop final : public Platform, private SpaceMaker
{
public:
    // The session may be null. The patience is that of user defaults which wait for other
    // processes.
    explicit LinuxDesktop(std::unique_ptr<DesktopSession> session,
                          std::chrono::milliseconds patience = std::chrono::milliseconds(200));
    ~LinuxDesktop() override;

    DynamicLoader &loader() override { return m_windowServer; }
    Accessibility &accessibility() override { return m_accessibility; }
    Quartz &quartz() override { return m_quartz; }
    Workspace &workspace() override { return m_workspace; }
    UserDefaultsDomains &userDefaults() override { return m_userDefaults; }
    Clock &clock() override { return m_clock; }
    HotKeys &hotKeys() override { return m_hotKeys; }
    Application &application() override { return m_application; }
    OwnWindows &ownWindows() override { return m_ownWindows; }
    SpaceMaker *spaceMaker() override;

    bool hasSession() const { return m_session != nullptr; }

    // What the session calls itself; empty where there is none, or it does not say.
    QString sessionName() const { return m_session ? m_session->name() : QString(); }

    // What a user of this session has to know that it cannot do; a sentence each.
    QStringList limits() const;

    // Does what can be done at once for the session to be controllable, and waits for so long at
    // most until that takes effect. Whether it is still to do so in a moment.
    bool requestAccess(std::chrono::milliseconds patience)
    {
        return m_session && m_session->requestAccess(patience);
    }

    // Does Workspace::openAccessibilitySettings; nothing without one.
    void setSettingsOpener(std::function<void()> opener)
    {
        m_workspace.setSettingsOpener(std::move(opener));
    }

private:
    MadeSpace makeSpace(const QString &name) override;
    SessionApplications *applications() { return m_applications ? &*m_applications : nullptr; }

    std::unique_ptr<DesktopSession> m_session;
    InstalledApplications m_installed;
    std::optional<SessionApplications> m_applications;
    BoottimeClock m_clock;
    LinuxAccessibility m_accessibility;
    LinuxWindowServer m_windowServer;
    LinuxQuartz m_quartz;
    LinuxOwnWindows m_ownWindows;
    LinuxUserDefaults m_userDefaults;
    LinuxHotKeys m_hotKeys;
    LinuxWorkspace m_workspace;
    Application m_application;
};

} // namespace tovel
