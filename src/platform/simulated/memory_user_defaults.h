#pragma once

#include "platform/user_defaults.h"

#include <QStringList>

#include <map>
#include <memory>

namespace tovel {

// A domain of user defaults held in memory.
class MemoryUserDefaults final : public UserDefaults
{
public:
    DefaultsReading dictionaryRepresentation() const override;
    DefaultsOutcome change(const Decision &decide, DefaultsAuthor author) override;

    // Control: from now on the domain cannot be read, and so not changed, for the reason given;
    // empty ends it.
    void failReads(const QString &reason) { m_unreadable = reason; }
    // Control: after so many more changes nothing can be stored, for the reason given; empty ends
    // it.
    void failWrites(const QString &reason, int after = 0);
    // Control: what changes that are stored come to besides.
    void giveNotice(const QString &notice) { m_notice = notice; }
    // Control: what another program stores; nothing removes the key.
    void put(const QString &key, const std::optional<QVariant> &value);
    // Control: keys in the order in which they were stored or removed since the last call.
    QStringList takeWrites();
    const QVariantMap &values() const { return m_values; }

private:
    QVariantMap m_values;
    QStringList m_writes;
    QString m_unreadable;
    QString m_unwritable;
    QString m_notice;
    int m_writesLeft = 0; // before that shows
};

class MemoryUserDefaultsDomains final : public UserDefaultsDomains
{
public:
    MemoryUserDefaults &standardUserDefaults() override;
    const MemoryUserDefaults *initWithSuiteName(const QString &suite) override;

    // Control: the domain of that name, which exists from the first call on.
    MemoryUserDefaults &suite(const QString &name);

private:
    MemoryUserDefaults m_standard;
    std::map<QString, std::unique_ptr<MemoryUserDefaults>> m_suites;
};

} // namespace tovel
