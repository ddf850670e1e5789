#include "platform/linux/linux_user_defaults.h"

#include <QStandardPaths>

namespace tovel {

using namespace Qt::StringLiterals;

DockPreferences::DockPreferences(DesktopSession *session)
    : m_session(session)
{ }

DefaultsReading DockPreferences::dictionaryRepresentation() const
{
    if (!m_session)
        return {};
    return {{{u"workspaces-auto-swoosh"_s, m_session->capabilities().activationShowsWorkspace}},
            {}};
}

DefaultsOutcome DockPreferences::change(const Decision &, DefaultsAuthor)
{
    return {u"The preferences of the desktop session can only be read."_s};
}

LinuxUserDefaults::LinuxUserDefaults(DesktopSession *session, std::chrono::milliseconds patience)
    : m_standard(domain(u"defaults"_s, patience))
    , m_dock(session)
{ }

const UserDefaults *LinuxUserDefaults::initWithSuiteName(const QString &suite)
{
    return suite == "com.apple.dock"_L1 ? &m_dock : nullptr;
}

SqliteUserDefaults LinuxUserDefaults::domain(const QString &name,
                                             std::chrono::milliseconds patience)
{
    const QString path = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + u"/org.tovel.Tovel/"_s + name;
    return SqliteUserDefaults(path + u".sqlite"_s, path + u".json"_s, {.patience = patience});
}

} // namespace tovel
