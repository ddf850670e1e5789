#pragma once

#include "platform/linux/desktop_session.h"
#include "platform/linux/json_user_defaults.h"
#include "platform/user_defaults.h"

namespace tovel {

// What the session says of desktop switching, as the preference that asks for it.
class DockPreferences final : public UserDefaults
{
public:
    // Borrows; null where there is no session.
    explicit DockPreferences(DesktopSession *session);

    std::optional<QVariant> object(const QString &key) const override;
    bool setObject(const QString &key, const QVariant &value) override;
    bool removeObject(const QString &key) override;
    QString errorString() const override;

private:
    DesktopSession *m_session;
};

// The program's own domain in a file of its folder of the user's configuration
// (freedesktop.org base directories), and the preference of the session beside it.
class LinuxUserDefaults final : public UserDefaultsDomains
{
public:
    explicit LinuxUserDefaults(DesktopSession *session);

    UserDefaults &standardUserDefaults() override { return m_standard; }
    const UserDefaults *initWithSuiteName(const QString &suite) override;

    // A file of that name in the program's folder.
    static QString filePath(const QString &fileName);

private:
    JsonUserDefaults m_standard;
    DockPreferences m_dock;
};

} // namespace tovel
