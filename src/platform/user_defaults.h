#pragma once

#include "platform/variants.h"

#include <QMap>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>

namespace tovel {

// All values of a domain at one moment, or why they cannot be read. A domain in which nothing is
// stored was read, and has no values.
struct DefaultsReading
{
    QVariantMap values{}; // none when they cannot be read
    QString failure{}; // a sentence; empty when the values were read

    bool succeeded() const { return failure.isEmpty(); }

    // What is stored under the key. A null one, or a null member, is of a kind that this program
    // does not know.
    std::optional<QVariant> object(const QString &key) const
    {
        const auto found = values.constFind(key);
        return found == values.cend() ? std::nullopt : std::optional<QVariant>(*found);
    }

    // Typed reads; an object of another kind counts as absent.
    std::optional<bool> boolean(const QString &key) const { return tovel::boolean(values[key]); }
    std::optional<QString> text(const QString &key) const { return tovel::text(values[key]); }
    std::optional<double> realNumber(const QString &key) const
    {
        return tovel::realNumber(values[key]);
    }
    std::optional<QStringList> texts(const QString &key) const { return tovel::texts(values[key]); }
    std::optional<QMap<QString, QString>> textDictionary(const QString &key) const
    {
        return tovel::textDictionary(values[key]);
    }
};

// What storing came to.
struct DefaultsOutcome
{
    QString failure{}; // a sentence that says why it was not stored; empty when it was
    QString notice{}; // a sentence on what became of a damaged store that this took the place of

    bool isStored() const { return failure.isEmpty(); }
};

// Values by key; one without a value is removed.
using DefaultsChanges = QMap<QString, std::optional<QVariant>>;

// On whose behalf something is stored. Only what the user wants may take the place of a store that
// is damaged for good.
enum class DefaultsAuthor { Program, User };

// A domain of stored choices (NSUserDefaults): keys to booleans, numbers, texts, byte strings,
// arrays and dictionaries of these. The kind of a value survives being stored. Other processes may
// use the domain at the same time; each sees what the others have stored.
class UserDefaults
{
public:
    // What to store, by what is stored then.
    using Decision = std::function<DefaultsChanges(const QVariantMap &stored)>;

    virtual ~UserDefaults() = default;

    virtual DefaultsReading dictionaryRepresentation() const = 0;

    // Reads and stores in one transaction: nobody else stores anything in between, and either all
    // of the changes are stored, at once, or none of them, now or later. Also none when the domain
    // cannot be read, or a value holds a kind that the store does not know. The decision has no
    // effects of its own: it may be asked more than once, and its last answer counts.
    [[nodiscard]] virtual DefaultsOutcome change(const Decision &decide, DefaultsAuthor author) = 0;

    [[nodiscard]] DefaultsOutcome setObject(const QString &key, const QVariant &value,
                                            DefaultsAuthor author = DefaultsAuthor::Program)
    {
        return change([&](const QVariantMap &) { return DefaultsChanges{{key, value}}; }, author);
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
