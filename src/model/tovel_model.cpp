#include "model/tovel_model.h"

#include "platform/accessibility.h"
#include "platform/application.h"
#include "platform/clock.h"
#include "platform/user_defaults.h"

namespace tovel {

namespace {

constexpr double refreshInterval = 3.0;

} // namespace

TovelModel::TovelModel(Platform &platform, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
    , m_choices(platform.userDefaults().standardUserDefaults())
    , m_trusted(platform.accessibility().AXIsProcessTrusted())
{
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
    m_spaceChanges
        = platform.workspace().observeActiveSpaceDidChange([this] { ++m_spaceChangeSerial; });
    refresh();
    m_visibility = platform.application().observeVisibleWindow([this] { stayFresh(); });
    stayFresh();
}

TovelModel::~TovelModel() = default;

void TovelModel::showChoices()
{
    const Choices now = m_choices.current();
    publish(m_selected, now.selected, Property::selected);
    publish(m_aliases, now.aliases, Property::aliases);
    publish(m_follow, now.follow, Property::follow);
    publish(m_choicesProblem, m_choices.problem(), Property::choicesProblem);
    const bool isOtherIcon = m_iconStyle != now.iconStyle;
    publish(m_iconStyle, now.iconStyle, Property::iconStyle);
    if (isOtherIcon && m_onIconChanged)
        m_onIconChanged(m_iconStyle);
    const bool isOtherPin = m_pinned != now.pinned;
    publish(m_pinned, now.pinned, Property::pinned);
    if (isOtherPin && m_onPinChanged)
        m_onPinChanged(m_pinned);
}

void TovelModel::stayFresh()
{
    m_timer.reset();
    if (m_platform.application().hasVisibleWindow()) {
        m_timer = m_platform.clock().startTimer(refreshInterval, true, [this] {
            if (!m_busy)
                refresh();
        });
    }
}

DefaultsOutcome TovelModel::setFollow(bool follow)
{
    const DefaultsOutcome outcome = m_choices.change(
        {ChoiceKeys::follow},
        {{ChoiceKeys::follow, [follow](Choices &choices) { choices.follow = follow; }}});
    showChoices();
    return outcome;
}

DefaultsOutcome TovelModel::setIconStyle(TovelIconStyle style)
{
    const bool isSame = style == m_iconStyle;
    const DefaultsOutcome outcome = m_choices.change(
        {ChoiceKeys::iconStyle},
        {{ChoiceKeys::iconStyle, [style](Choices &choices) { choices.iconStyle = style; }}});
    showChoices();
    if (isSame && m_onIconChanged)
        m_onIconChanged(style);
    return outcome;
}

DefaultsOutcome TovelModel::setPinned(bool pinned)
{
    const bool isSame = pinned == m_pinned;
    const DefaultsOutcome outcome = m_choices.change(
        {ChoiceKeys::pinned},
        {{ChoiceKeys::pinned, [pinned](Choices &choices) { choices.pinned = pinned; }}});
    showChoices();
    if (isSame && m_onPinChanged)
        m_onPinChanged(pinned);
    return outcome;
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

DefaultsOutcome TovelModel::rename(const Desktop &desktop, const QString &newName)
{
    const QString key = desktop.key();
    const DefaultsOutcome outcome
        = m_choices.change({ChoiceKeys::aliases},
                           {{ChoiceKeys::aliases + u'/' + key, [key, newName](Choices &choices) {
                                 choices.aliases.insert(key, newName);
                             }}});
    showChoices();
    return outcome;
}

} // namespace tovel
