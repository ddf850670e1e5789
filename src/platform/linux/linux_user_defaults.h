#pragma once

#include "platform/linux/defaults/sqlite_user_defaults.h"
#include "platform/session/desktop_session.h"
#include "platform/user_defaults.h"

#include <chrono>

namespace tovel {

// What the session says of desktop switching, as the preference that asks for it.
class DockPreferences final : public UserDefaults
{
public:
    // Borrows; null where there is no session.
    explicit DockPreferences(DesktopSession *session);

    DefaultsReading dictionaryRepresentation() const override;
    DefaultsOutcome change(const Decision &decide, DefaultsAuthor author) override;

private:
    DesktopSession *m_session;
};

// The program's own domain in a file of its folder of the user's configuration
// (freedesktop.org base directories), and the preference of the session beside it.
class LinuxUserDefaults final : public UserDefaultsDomains
{
public:
    // The patience is that of a call which waits for other processes.
    LinuxUserDefaults(DesktopSession *session, std::chrono::milliseconds patience);

    UserDefaults &standardUserDefaults() override { return m_standard; }
    const UserDefaults *initWithSuiteName(const QString &suite) override;

    // A domain of that name in the program's folder.
    static SqliteUserDefaults domain(const QString &name, std::chrono::milliseconds patience);

private:
    SqliteUserDefaults m_standard;
    DockPreferences m_dock;
};

} // namespace tovel
