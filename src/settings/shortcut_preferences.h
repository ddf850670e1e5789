#pragma once

#include "platform/user_defaults.h"
#include "settings/shortcut.h"

#include <QObject>

namespace tovel {

// The shortcut that the user chose, kept in user defaults. Registering it is others' work.
class ShortcutPreferences final : public QObject
{
    Q_OBJECT

public:
    // Reads the stored shortcut; the standard one when none is stored or it makes no sense. Stores
    // nothing. Borrows the user defaults.
    explicit ShortcutPreferences(UserDefaults &defaults, QObject *parent = nullptr);

    const TovelShortcut &shortcut() const { return m_shortcut; }

    // Reads the stored shortcut once more, if it could not be read so far and none was saved.
    void readAgain();

    // Stores the shortcut, then makes it the current one, whatever storing came to.
    DefaultsOutcome save(const TovelShortcut &shortcut);

Q_SIGNALS:
    void shortcutChanged();

private:
    void makeCurrent(const TovelShortcut &shortcut);

    UserDefaults &m_defaults;
    bool m_isKnown = false; // what was chosen last
    TovelShortcut m_shortcut = TovelShortcut::standard();
};

} // namespace tovel
