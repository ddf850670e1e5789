#include "platform/linux/linux_desktop.h"

#include "platform/linux/session_limits.h"

namespace tovel {

LinuxDesktop::LinuxDesktop(std::unique_ptr<DesktopSession> session,
                           std::chrono::milliseconds patience)
    : m_session(std::move(session))
    , m_applications(
          m_session ? std::optional<SessionApplications>(std::in_place, *m_session, m_installed)
                    : std::nullopt)
    , m_accessibility(applications())
    , m_windowServer(applications(), m_accessibility)
    , m_quartz(applications())
    , m_ownWindows(m_session.get())
    , m_userDefaults(m_session.get(), patience)
    , m_hotKeys(m_session.get())
    , m_workspace(applications(), m_installed, m_clock)
{
    if (m_session)
        m_clock.setWakeHandler([this] { m_session->invalidate(); });
}

LinuxDesktop::~LinuxDesktop() = default;

SpaceMaker *LinuxDesktop::spaceMaker()
{
    return m_session && m_session->capabilities().makesWorkspaces ? this : nullptr;
}

MadeSpace LinuxDesktop::makeSpace(const QString &name)
{
    const MadeWorkspace made = m_session->makeWorkspace(name);
    return {made.id, made.refusal};
}

QStringList LinuxDesktop::limits() const
{
    return m_session ? sessionLimits(*m_session) : QStringList();
}

} // namespace tovel
