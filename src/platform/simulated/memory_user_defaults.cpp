#include "platform/simulated/memory_user_defaults.h"

#include <QMetaType>

#include <algorithm>
#include <utility>

namespace tovel {

namespace {

bool isStorable(const QVariant &value)
{
    if (isNumber(value) || boolean(value) || text(value))
        return true;
    if (value.typeId() == QMetaType::QByteArray)
        return true;
    if (const auto list = array(value))
        return std::ranges::all_of(*list, isStorable);
    if (const auto map = dictionary(value))
        return std::ranges::all_of(*map, isStorable);
    return false;
}

} // namespace

std::optional<QVariant> MemoryUserDefaults::object(const QString &key) const
{
    const auto found = m_values.constFind(key);
    return found == m_values.constEnd() ? std::nullopt : std::optional<QVariant>(*found);
}

bool MemoryUserDefaults::setObject(const QString &key, const QVariant &value)
{
    if (!isStorable(value)) {
        m_error = QStringLiteral("A value of this kind cannot be stored.");
        return false;
    }
    m_values.insert(key, value);
    return finishWrite(key);
}

bool MemoryUserDefaults::removeObject(const QString &key)
{
    m_values.remove(key);
    return finishWrite(key);
}

QString MemoryUserDefaults::errorString() const { return m_error; }

void MemoryUserDefaults::failWrites(const QString &reason) { m_failure = reason; }

QStringList MemoryUserDefaults::takeWrites() { return std::exchange(m_writes, {}); }

bool MemoryUserDefaults::finishWrite(const QString &key)
{
    m_writes.append(key);
    m_error = m_failure;
    return m_failure.isEmpty();
}

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
