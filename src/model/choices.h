#pragma once

#include "platform/user_defaults.h"
#include "settings/icon_style.h"

#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

namespace tovel {

// Keys of the user defaults.
namespace ChoiceKeys {
inline const QString selected = QStringLiteral("selected");
inline const QString appNames = QStringLiteral("appNames");
inline const QString aliases = QStringLiteral("aliases");
inline const QString follow = QStringLiteral("follow");
inline const QString pinned = QStringLiteral("pinned");
inline const QString iconStyle = QStringLiteral("iconStyle");
inline const QString unreadable = QStringLiteral(".unreadable"); // see Choices
inline const QStringList all{selected, appNames, aliases, follow, pinned, iconStyle};
} // namespace ChoiceKeys

// What the user has chosen. A value that is missing or of another kind counts as the default, a
// member of the flock that is no text does not count. A list or a dictionary that was not taken as
// it was is kept, when it is written over, under the key with ".unreadable" at its end.
struct Choices
{
    bool hasFlock = false; // whether anything at all stands for a flock, be it an empty one
    QSet<QString> selected{}; // bundle identifiers
    QMap<QString, QString> appNames{}; // by bundle identifier, also of those that were chosen once
    QMap<QString, QString> aliases{}; // names of desktops by Desktop::key()
    bool follow = true;
    bool pinned = false;
    TovelIconStyle iconStyle = TovelIconStyle::dark;

    static Choices from(const DefaultsReading &reading);
    QVariant value(const QString &key) const;
};

// The user's choices over the user defaults: what is stored, which other programs change, too, and
// on top of it what this process could not store. A change is one transaction on what is stored
// then. One that fails holds for this process alone and is not tried again by itself.
class StoredChoices final
{
public:
    // The item tells what the change is about, such as one application of the flock: a later change
    // of the same item takes the place of this one.
    struct Change
    {
        QString item{};
        std::function<void(Choices &)> apply{};
    };

    // Reads nothing yet. Borrows the user defaults.
    explicit StoredChoices(UserDefaults &defaults)
        : m_defaults(defaults)
    { }

    const Choices &current() const { return m_current; }

    // What keeps the choices from being read or stored, for the user, or what else became of the
    // latest change that was stored; empty when there is nothing to tell.
    const QString &problem() const;

    // Takes up what is stored. The choices stay as they are when that cannot be read, or when a
    // flock was stored before and none is any more.
    void read();

    // Whether what is stored could ever be read. Until then the choices are the defaults.
    bool areKnown() const { return m_areKnown; }

    // Whether what is stored could be read, and no flock is, nor was.
    bool lacksFlock() const { return m_readProblem.isEmpty() && !m_stored.hasFlock; }

    // Stores the changes, all or none, by writing these keys whole, and every key where the stored
    // choices have gone since they were read.
    DefaultsOutcome change(const QStringList &keys, const QList<Change> &changes);

    // Adds the applications, names by bundle identifier, to the flock and stores it, be it empty;
    // nothing when a flock is stored meanwhile.
    void preselect(const QMap<QString, QString> &apps);

private:
    Choices taken(const DefaultsReading &reading) const;
    void adopt(const Choices &stored);

    UserDefaults &m_defaults;
    Choices m_stored; // as last read or stored
    bool m_areKnown = false;
    QMap<QString, std::function<void(Choices &)>> m_unstored; // by item
    Choices m_current;
    QString m_readProblem;
    QString m_storeProblem;
    QString m_notice;
};

} // namespace tovel
