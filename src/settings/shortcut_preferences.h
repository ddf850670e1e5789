#pragma once

#include "settings/shortcut.h"

#include <QObject>

namespace tovel {

class UserDefaults;

// The shortcut that the user chose, kept in user defaults. Registering it is others' work.
class ShortcutPreferences final : public QObject
{
    Q_OBJECT

public:
    // Reads the stored shortcut; the standard one when none is stored that can be read. Writes
    // nothing. Borrows the user defaults.
    explicit ShortcutPreferences(UserDefaults &defaults, QObject *parent = nullptr);

    const TovelShortcut &shortcut() const { return m_shortcut; }

    // Stores the shortcut, then makes it the current one, in any case. False when it could not be
    // made to last; the user defaults then tell why.
    bool save(const TovelShortcut &shortcut);

Q_SIGNALS:
    void shortcutChanged();

private:
    UserDefaults &m_defaults;
    TovelShortcut m_shortcut;
};

} // namespace tovel
