#include "settings/shortcut_preferences.h"

#include "platform/user_defaults.h"

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView Key("globalShortcut");

TovelShortcut stored(const UserDefaults &defaults)
{
    const QVariant value = defaults.object(Key).value_or(QVariant());
    if (value.typeId() != QMetaType::QByteArray)
        return TovelShortcut::standard();
    return decodeShortcut(value.toByteArray()).value_or(TovelShortcut::standard());
}

} // namespace

ShortcutPreferences::ShortcutPreferences(UserDefaults &defaults, QObject *parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_shortcut(stored(defaults))
{ }

bool ShortcutPreferences::save(const TovelShortcut &shortcut)
{
    const bool lasts = m_defaults.setObject(Key, encodeShortcut(shortcut));
    if (std::exchange(m_shortcut, shortcut) != shortcut)
        Q_EMIT shortcutChanged();
    return lasts;
}

} // namespace tovel
