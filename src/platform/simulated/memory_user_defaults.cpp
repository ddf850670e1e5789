#include "platform/simulated/memory_user_defaults.h"

#include <QMetaType>

#include <algorithm>
#include <utility>

namespace tovel {

namespace {

bool isStorable(const QVariant &value);

bool isMember(const QVariant &value) { return !value.isValid() || isStorable(value); }

bool isStorable(const QVariant &value)
{
    if (isNumber(value) || boolean(value) || text(value))
        return true;
    if (value.typeId() == QMetaType::QByteArray)
        return true;
    if (const auto list = array(value))
        return std::ranges::all_of(*list, isMember);
    if (const auto map = dictionary(value))
        return std::ranges::all_of(*map, isMember);
    return false;
}

} // namespace

DefaultsReading MemoryUserDefaults::dictionaryRepresentation() const
{
    return m_unreadable.isEmpty() ? DefaultsReading{m_values, {}}
                                  : DefaultsReading{{}, m_unreadable};
}

DefaultsOutcome MemoryUserDefaults::change(const Decision &decide, DefaultsAuthor)
{
    if (!m_unreadable.isEmpty())
        return {m_unreadable};
    const DefaultsChanges changes = decide(m_values);
    for (const auto &value : changes) {
        if (value && !isStorable(*value))
            return {QStringLiteral("A value of this kind cannot be stored.")};
    }
    if (!m_unwritable.isEmpty() && m_writesLeft-- <= 0)
        return {m_unwritable};
    for (auto it = changes.cbegin(); it != changes.cend(); ++it) {
        put(it.key(), it.value());
        m_writes.append(it.key());
    }
    return {{}, m_notice};
}

void MemoryUserDefaults::failWrites(const QString &reason, int after)
{
    m_unwritable = reason;
    m_writesLeft = after;
}

void MemoryUserDefaults::put(const QString &key, const std::optional<QVariant> &value)
{
    if (value)
        m_values.insert(key, *value);
    else
        m_values.remove(key);
}

QStringList MemoryUserDefaults::takeWrites() { return std::exchange(m_writes, {}); }

MemoryUserDefaults &MemoryUserDefaultsDomains::standardUserDefaults() { return m_standard; }

const MemoryUserDefaults *MemoryUserDefaultsDomains::initWithSuiteName(const QString &suite)
{
    const auto found = m_suites.find(suite);
    return found == m_suites.end() ? nullptr : found->second.get();
}

MemoryUserDefaults &MemoryUserDefaultsDomains::suite(const QString &name)
{
    auto &domain = m_suites[name];
    if (!domain)
        domain = std::make_unique<MemoryUserDefaults>();
    return *domain;
}

} // namespace tovel
