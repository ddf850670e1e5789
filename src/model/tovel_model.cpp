#include "model/tovel_model.h"

#include "platform/accessibility.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "platform/user_defaults.h"

namespace tovel {

namespace {

constexpr double refreshInterval = 3.0;

const QString selectedKey = QStringLiteral("selected");
const QString appNamesKey = QStringLiteral("appNames");
const QString aliasesKey = QStringLiteral("aliases");
const QString followKey = QStringLiteral("follow");
const QString pinnedKey = QStringLiteral("pinned");
const QString iconStyleKey = QStringLiteral("iconStyle");

QVariantMap asVariants(const QMap<QString, QString> &texts)
{
    QVariantMap map;
    for (auto it = texts.cbegin(); it != texts.cend(); ++it)
        map.insert(it.key(), it.value());
    return map;
}

} // namespace

TovelModel::TovelModel(Platform &platform, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
    , m_defaults(platform.userDefaults().standardUserDefaults())
    , m_trusted(platform.accessibility().AXIsProcessTrusted())
{
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
    loadChoices();
    m_spaceChanges
        = platform.workspace().observeActiveSpaceDidChange([this] { ++m_spaceChangeSerial; });
    refresh();
    m_timer = platform.clock().startTimer(refreshInterval, true, [this] { tick(); });
}

TovelModel::~TovelModel() = default;

void TovelModel::loadChoices()
{
    const QStringList flock = m_defaults.texts(selectedKey).value_or(QStringList());
    m_selected = QSet<QString>(flock.cbegin(), flock.cend());
    m_knownNames = m_defaults.textDictionary(appNamesKey).value_or(QMap<QString, QString>());
    m_aliases = m_defaults.textDictionary(aliasesKey).value_or(QMap<QString, QString>());
    m_follow = m_defaults.boolean(followKey).value_or(true);
    m_pinned = m_defaults.boolean(pinnedKey).value_or(false);
    m_iconStyle = iconStyleFromRawValue(m_defaults.text(iconStyleKey).value_or(QString()))
                      .value_or(TovelIconStyle::dark);
}

void TovelModel::takeUpChoices()
{
    const QStringList flock = m_defaults.texts(selectedKey).value_or(QStringList());
    publish(m_selected, QSet<QString>(flock.cbegin(), flock.cend()), Property::selected);
    m_knownNames = m_defaults.textDictionary(appNamesKey).value_or(QMap<QString, QString>());
    publish(m_aliases, m_defaults.textDictionary(aliasesKey).value_or(QMap<QString, QString>()),
            Property::aliases);
}

bool TovelModel::flockIsStored() const { return m_defaults.object(selectedKey).has_value(); }

void TovelModel::storeFlock()
{
    QStringList flock(m_selected.cbegin(), m_selected.cend());
    flock.sort();
    m_defaults.setObject(selectedKey, flock);
    m_defaults.setObject(appNamesKey, asVariants(m_knownNames));
}

void TovelModel::tick()
{
    if (!m_busy && m_platform.application().hasVisibleWindow())
        refresh();
}

void TovelModel::setFollow(bool follow)
{
    publish(m_follow, follow, Property::follow);
    m_defaults.setObject(followKey, follow);
}

void TovelModel::setIconStyle(TovelIconStyle style)
{
    publish(m_iconStyle, style, Property::iconStyle);
    m_defaults.setObject(iconStyleKey, rawValue(style));
    if (m_onIconChanged)
        m_onIconChanged(style);
}

void TovelModel::setPinned(bool pinned)
{
    publish(m_pinned, pinned, Property::pinned);
    m_defaults.setObject(pinnedKey, pinned);
    if (m_onPinChanged)
        m_onPinChanged(pinned);
}

void TovelModel::setMessage(const QString &message)
{
    publish(m_message, message, Property::message);
}

void TovelModel::setIssues(const QStringList &issues)
{
    publish(m_issues, issues, Property::issues);
}

void TovelModel::onIconChanged(std::function<void(TovelIconStyle)> callback)
{
    m_onIconChanged = std::move(callback);
}

void TovelModel::onPinChanged(std::function<void(bool)> callback)
{
    m_onPinChanged = std::move(callback);
}

void TovelModel::onMigrationFinished(std::function<void()> callback)
{
    m_onMigrationFinished = std::move(callback);
}

void TovelModel::rename(const Desktop &desktop, const QString &newName)
{
    takeUpChoices();
    auto aliases = m_aliases;
    aliases.insert(desktop.key(), newName);
    publish(m_aliases, aliases, Property::aliases);
    m_defaults.setObject(aliasesKey, asVariants(m_aliases));
}

} // namespace tovel
