#pragma once

#include "platform/variants.h"

#include <QString>
#include <QVariant>

#include <optional>

namespace tovel {

// A domain of stored choices (NSUserDefaults): keys to booleans, numbers, texts, byte strings,
// arrays and dictionaries of these. The kind of a value survives being stored.
class UserDefaults
{
public:
    virtual ~UserDefaults() = default;

    // The object stored under the key, or nothing.
    virtual std::optional<QVariant> object(const QString &key) const = 0;

    // Stores the object, whole, at once. The value can be read back in this process in any case;
    // false when it could not be made to last, and errorString() then says why. A value that holds
    // a kind the store does not know is refused and changes nothing.
    virtual bool setObject(const QString &key, const QVariant &value) = 0;

    virtual bool removeObject(const QString &key) = 0;

    // The reason for the latest failure to read or write; empty when there was none.
    virtual QString errorString() const = 0;

    // Typed reads; an object of another kind counts as absent.
    std::optional<bool> boolean(const QString &key) const
    {
        return tovel::boolean(object(key).value_or(QVariant()));
    }
    std::optional<QString> text(const QString &key) const
    {
        return tovel::text(object(key).value_or(QVariant()));
    }
    std::optional<QStringList> texts(const QString &key) const
    {
        return tovel::texts(object(key).value_or(QVariant()));
    }
    std::optional<QMap<QString, QString>> textDictionary(const QString &key) const
    {
        return tovel::textDictionary(object(key).value_or(QVariant()));
    }
};

// The user defaults of this program and of others.
class UserDefaultsDomains
{
public:
    virtual ~UserDefaultsDomains() = default;

    // The program's own domain.
    virtual UserDefaults &standardUserDefaults() = 0;

    // Another domain, for reading; null when there is none. "com.apple.dock" has the boolean
    // "workspaces-auto-swoosh": whether activating an application shows a desktop with its windows.
    virtual const UserDefaults *initWithSuiteName(const QString &suite) = 0;
};

} // namespace tovel
