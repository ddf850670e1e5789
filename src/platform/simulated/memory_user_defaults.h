#pragma once

#include "platform/user_defaults.h"

#include <QMap>
#include <QStringList>

#include <map>
#include <memory>

namespace tovel {

// A domain of user defaults held in memory.
class MemoryUserDefaults final : public UserDefaults
{
public:
    std::optional<QVariant> object(const QString &key) const override;
    bool setObject(const QString &key, const QVariant &value) override;
    bool removeObject(const QString &key) override;
    QString errorString() const override;

    // Control: from now on nothing that is stored lasts, for the reason given; empty ends it.
    // As the contract says, what is stored can still be read back.
    void failWrites(const QString &reason);
    // Control: keys in the order in which they were stored or removed since the last call.
    QStringList takeWrites();
    const QMap<QString, QVariant> &values() const { return m_values; }

private:
    bool finishWrite(const QString &key);

    QMap<QString, QVariant> m_values;
    QStringList m_writes;
    QString m_failure;
    QString m_error;
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
