#include "platform/linux/linux_user_defaults.h"

#include <QStandardPaths>

namespace tovel {

using namespace Qt::StringLiterals;

DockPreferences::DockPreferences(DesktopSession *session)
    : m_session(session)
{ }

std::optional<QVariant> DockPreferences::object(const QString &key) const
{
    if (!m_session || key != "workspaces-auto-swoosh"_L1)
        return std::nullopt;
    return m_session->activationShowsWorkspace();
}

bool DockPreferences::setObject(const QString &, const QVariant &) { return false; }

bool DockPreferences::removeObject(const QString &) { return false; }

QString DockPreferences::errorString() const
{
    return u"The preferences of the desktop session can only be read."_s;
}

LinuxUserDefaults::LinuxUserDefaults(DesktopSession *session)
    : m_standard(filePath(u"defaults.json"_s))
    , m_dock(session)
{ }

const UserDefaults *LinuxUserDefaults::initWithSuiteName(const QString &suite)
{
    return suite == "com.apple.dock"_L1 ? &m_dock : nullptr;
}

QString LinuxUserDefaults::filePath(const QString &fileName)
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + u"/org.tovel.Tovel/"_s + fileName;
}

} // namespace tovel
