#include "settings/shortcut_preferences.h"

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView Key("globalShortcut");

} // namespace

ShortcutPreferences::ShortcutPreferences(UserDefaults &defaults, QObject *parent)
    : QObject(parent)
    , m_defaults(defaults)
{
    readAgain();
}

void ShortcutPreferences::readAgain()
{
    if (m_isKnown)
        return;
    const DefaultsReading stored = m_defaults.dictionaryRepresentation();
    m_isKnown = stored.succeeded();
    const QVariant value = stored.object(Key).value_or(QVariant());
    if (value.typeId() == QMetaType::QByteArray)
        makeCurrent(decodeShortcut(value.toByteArray()).value_or(TovelShortcut::standard()));
}

DefaultsOutcome ShortcutPreferences::save(const TovelShortcut &shortcut)
{
    m_isKnown = true;
    const DefaultsOutcome outcome
        = m_defaults.setObject(Key, encodeShortcut(shortcut), DefaultsAuthor::User);
    makeCurrent(shortcut);
    return outcome;
}

void ShortcutPreferences::makeCurrent(const TovelShortcut &shortcut)
{
    if (std::exchange(m_shortcut, shortcut) != shortcut)
        Q_EMIT shortcutChanged();
}

} // namespace tovel
