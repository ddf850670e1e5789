#include "model/choices.h"

#include "model/texts.h"

namespace tovel {

namespace {

QVariantMap asVariants(const QMap<QString, QString> &texts)
{
    QVariantMap map;
    for (auto it = texts.cbegin(); it != texts.cend(); ++it)
        map.insert(it.key(), it.value());
    return map;
}

QStringList sorted(const QSet<QString> &texts)
{
    QStringList list(texts.cbegin(), texts.cend());
    list.sort();
    return list;
}

// The texts among the members: one of another kind takes nothing from the others.
QSet<QString> flock(const QVariant &value)
{
    QSet<QString> identifiers;
    const QVariantList members = array(value).value_or(QVariantList());
    for (const QVariant &member : members) {
        if (const auto identifier = text(member))
            identifiers.insert(*identifier);
    }
    return identifiers;
}

// Whether there is something in the value, once stored for this key, that choices have not.
bool holdsMore(const QString &key, const QVariant &value)
{
    if (key == ChoiceKeys::selected)
        return value.isValid() && !texts(value);
    const bool isDictionary = key == ChoiceKeys::appNames || key == ChoiceKeys::aliases;
    return isDictionary && value.isValid() && !textDictionary(value);
}

DefaultsChanges written(const Choices &choices, const QStringList &keys, const QVariantMap &stored)
{
    DefaultsChanges changes;
    for (const QString &key : keys) {
        changes.insert(key, choices.value(key));
        if (holdsMore(key, stored[key]))
            changes.insert(key + ChoiceKeys::unreadable, stored[key]);
    }
    return changes;
}

} // namespace

Choices Choices::from(const DefaultsReading &reading)
{
    using Texts = QMap<QString, QString>;
    Choices choices;
    choices.hasFlock = reading.object(ChoiceKeys::selected).has_value();
    choices.selected = flock(reading.values[ChoiceKeys::selected]);
    choices.appNames = reading.textDictionary(ChoiceKeys::appNames).value_or(Texts());
    choices.aliases = reading.textDictionary(ChoiceKeys::aliases).value_or(Texts());
    choices.follow = reading.boolean(ChoiceKeys::follow).value_or(choices.follow);
    choices.pinned = reading.boolean(ChoiceKeys::pinned).value_or(choices.pinned);
    choices.iconStyle
        = iconStyleFromRawValue(reading.text(ChoiceKeys::iconStyle).value_or(QString()))
              .value_or(choices.iconStyle);
    return choices;
}

QVariant Choices::value(const QString &key) const
{
    if (key == ChoiceKeys::selected)
        return sorted(selected);
    if (key == ChoiceKeys::appNames)
        return asVariants(appNames);
    if (key == ChoiceKeys::aliases)
        return asVariants(aliases);
    if (key == ChoiceKeys::follow)
        return follow;
    if (key == ChoiceKeys::pinned)
        return pinned;
    Q_ASSERT(key == ChoiceKeys::iconStyle);
    return rawValue(iconStyle);
}

const QString &StoredChoices::problem() const
{
    if (!m_readProblem.isEmpty())
        return m_readProblem;
    return m_storeProblem.isEmpty() ? m_notice : m_storeProblem;
}

void StoredChoices::read()
{
    const DefaultsReading reading = m_defaults.dictionaryRepresentation();
    m_readProblem
        = reading.succeeded() ? QString() : ModelTexts::choicesUnreadable(reading.failure);
    if (!reading.succeeded())
        return;
    m_areKnown = true;
    adopt(taken(reading));
}

DefaultsOutcome StoredChoices::change(const QStringList &keys, const QList<Change> &changes)
{
    Choices changed;
    const auto decide = [&](const QVariantMap &stored) {
        const bool isLost = m_stored.hasFlock && !stored.contains(ChoiceKeys::selected);
        changed = taken({stored, {}});
        for (const Change &change : changes)
            change.apply(changed);
        changed.hasFlock = changed.hasFlock || keys.contains(ChoiceKeys::selected);
        return written(changed, isLost ? ChoiceKeys::all : keys, stored);
    };
    const DefaultsOutcome outcome = m_defaults.change(decide, DefaultsAuthor::User);
    for (const Change &change : changes) {
        if (outcome.isStored())
            m_unstored.remove(change.item);
        else
            m_unstored.insert(change.item, change.apply);
    }
    if (!outcome.isStored())
        m_storeProblem = ModelTexts::choicesNotStored(outcome.failure);
    else if (m_unstored.isEmpty())
        m_storeProblem.clear();
    if (outcome.isStored()) {
        m_areKnown = true;
        m_readProblem.clear();
        m_notice = outcome.notice;
    }
    adopt(outcome.isStored() ? changed : m_stored);
    return outcome;
}

void StoredChoices::preselect(const QMap<QString, QString> &apps)
{
    const auto add = [&apps](Choices &choices) {
        for (auto app = apps.cbegin(); app != apps.cend(); ++app)
            choices.selected.insert(app.key());
        choices.appNames.insert(apps);
    };
    Choices preselected;
    const auto decide = [&](const QVariantMap &stored) {
        preselected = taken({stored, {}});
        if (preselected.hasFlock)
            return DefaultsChanges();
        add(preselected);
        preselected.hasFlock = true;
        return written(preselected, {ChoiceKeys::selected, ChoiceKeys::appNames}, stored);
    };
    // Not the user's doing: a first run has nothing that is worth replacing a damaged store.
    const DefaultsOutcome outcome = m_defaults.change(decide, DefaultsAuthor::Program);
    if (outcome.isStored()) {
        m_storeProblem.clear();
        adopt(preselected);
        return;
    }
    m_storeProblem = ModelTexts::choicesNotStored(outcome.failure);
    Choices shown = m_stored;
    add(shown);
    adopt(shown);
}

Choices StoredChoices::taken(const DefaultsReading &reading) const
{
    Choices choices = Choices::from(reading);
    // Nobody takes a flock back to none at all: its file is gone, perhaps until a backup is there.
    if (!choices.hasFlock && m_stored.hasFlock)
        return m_stored;
    if (!choices.hasFlock) {
        choices.selected = m_current.selected;
        choices.appNames = m_current.appNames;
    }
    return choices;
}

void StoredChoices::adopt(const Choices &stored)
{
    m_stored = stored;
    m_current = stored;
    for (const auto &apply : std::as_const(m_unstored))
        apply(m_current);
}

} // namespace tovel
