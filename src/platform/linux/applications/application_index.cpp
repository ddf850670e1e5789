#include "platform/linux/applications/application_index.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t ambiguous = std::numeric_limits<std::size_t>::max();

bool isNamedLikeItsClass(const ApplicationEntry &entry)
{
    return entry.bundleIdentifier.compare(entry.startupWMClass, Qt::CaseInsensitive) == 0;
}

// Nothing unless the identifier is a reverse-DNS name, whose last component is a name by itself.
QString lastComponent(const QString &identifier)
{
    if (identifier.count(u'.') < 2)
        return {};
    return identifier.mid(identifier.lastIndexOf(u'.') + 1).toCaseFolded();
}

// The identifier in what may be an identifier, a desktop file's name, or its path.
QString identifierFromName(QString name)
{
    if (name.startsWith(u'/')) {
        const QString folder = u"/applications/"_s;
        const qsizetype start = name.lastIndexOf(folder);
        name = start >= 0 ? name.mid(start + folder.size()).replace(u'/', u'-')
                          : name.mid(name.lastIndexOf(u'/') + 1);
    }
    if (name.endsWith(u".desktop"))
        name.chop(8);
    return name;
}

ApplicationIdentity identityOf(const ApplicationEntry &entry)
{
    return {entry.bundleIdentifier, entry.name, entry.icon, true};
}

} // namespace

ApplicationIndex::ApplicationIndex(std::vector<ApplicationEntry> entries)
    : m_entries(std::move(entries))
{
    std::stable_sort(m_entries.begin(), m_entries.end(), [](const auto &left, const auto &right) {
        return std::pair(!left.visible, !isNamedLikeItsClass(left))
            < std::pair(!right.visible, !isNamedLikeItsClass(right));
    });

    const auto claim = [](Positions &positions, const QString &key, std::size_t position) {
        if (!key.isEmpty() && !positions.contains(key))
            positions.insert(key, position);
    };
    const auto claimAlone = [this](Positions &positions, const QString &key, std::size_t position) {
        if (key.isEmpty())
            return;
        const auto other = positions.find(key);
        if (other == positions.end())
            positions.insert(key, position);
        else if (*other != ambiguous && m_entries[*other].visible == m_entries[position].visible)
            *other = ambiguous;
    };

    for (std::size_t position = 0; position < m_entries.size(); ++position) {
        const ApplicationEntry &entry = m_entries[position];
        claim(m_identifiers, entry.bundleIdentifier, position);
        claim(m_foldedIdentifiers, entry.bundleIdentifier.toCaseFolded(), position);
        claim(m_windowClasses, entry.startupWMClass, position);
        claim(m_foldedWindowClasses, entry.startupWMClass.toCaseFolded(), position);
        claim(m_paths, entry.path, position);
        claimAlone(m_lastComponents, lastComponent(entry.bundleIdentifier), position);
        if (entry.visible)
            claimAlone(m_executables, entry.executable, position);
    }
}

const ApplicationEntry *ApplicationIndex::at(const Positions &positions, const QString &key) const
{
    if (key.isEmpty())
        return nullptr;
    const auto position = positions.constFind(key);
    if (position == positions.cend() || *position == ambiguous)
        return nullptr;
    return &m_entries[*position];
}

const ApplicationEntry *ApplicationIndex::find(const QString &bundleIdentifier) const
{
    return at(m_identifiers, bundleIdentifier);
}

const ApplicationEntry *ApplicationIndex::byStartupWMClass(const QString &windowClass) const
{
    if (const auto *entry = at(m_windowClasses, windowClass))
        return entry;
    return at(m_foldedWindowClasses, windowClass.toCaseFolded());
}

const ApplicationEntry *ApplicationIndex::byDesktopFileName(const QString &name) const
{
    if (const auto *entry = at(m_paths, name))
        return entry;
    const QString identifier = identifierFromName(name);
    if (const auto *entry = find(identifier))
        return entry;
    const QString folded = identifier.toCaseFolded();
    if (const auto *entry = at(m_foldedIdentifiers, folded))
        return entry;
    return at(m_lastComponents, folded);
}

const ApplicationEntry *ApplicationIndex::byExecutable(const QString &baseName) const
{
    return at(m_executables, baseName);
}

const ApplicationEntry *ApplicationIndex::byWindowClass(const QString &text) const
{
    const auto *entry = byStartupWMClass(text);
    if (!entry || entry->visible)
        return entry;
    // An entry that nobody sees, such as a handler of links, gives way to the visible one that
    // the same text names.
    const auto *named = byDesktopFileName(text);
    return named && named->visible ? named : entry;
}

const ApplicationEntry *ApplicationIndex::matchTexts(const WindowClues &clues) const
{
    const QString appId = cleanClue(clues.appId);
    const QString instance = cleanClue(clues.instance);
    const QString className = cleanClue(clues.className);
    // A text that an entry claims to the letter outweighs one that differs in case.
    const bool onlyClassIsExact = at(m_windowClasses, className) && !at(m_windowClasses, instance);
    for (const QString &text :
         {appId, onlyClassIsExact ? className : instance, className, instance}) {
        if (const auto *entry = byWindowClass(text))
            return entry;
    }
    for (const QString &name : {appId, instance, className}) {
        if (const auto *entry = byDesktopFileName(name))
            return entry;
    }
    return nullptr;
}

const ApplicationEntry *ApplicationIndex::match(const WindowClues &clues) const
{
    if (const auto *entry = matchTexts(clues))
        return entry;
    const ProcessClues &process = clues.process;
    for (const QString &name : {process.sandboxId, cleanClue(clues.gtkApplicationId),
                                cleanClue(clues.kdeDesktopFile), process.launchedDesktopFile}) {
        if (const auto *entry = byDesktopFileName(name))
            return entry;
    }
    if (runsOtherPrograms(process.executable))
        return nullptr;
    if (const auto *entry = byExecutable(process.executable))
        return entry;
    const auto *entry = find(process.executable);
    return entry && entry->visible ? entry : nullptr;
}

std::optional<ApplicationIdentity> ApplicationIndex::identifyByTexts(const WindowClues &clues) const
{
    const auto *entry = matchTexts(clues);
    return entry ? std::optional(identityOf(*entry)) : std::nullopt;
}

ApplicationIdentity ApplicationIndex::identify(const WindowClues &clues) const
{
    if (const auto *entry = match(clues))
        return identityOf(*entry);
    QString name = cleanClue(clues.className).trimmed();
    if (name.isEmpty())
        name = cleanClue(clues.appId).trimmed();
    if (name.isEmpty())
        name = clues.process.executable.trimmed();
    if (name.isEmpty())
        name = u"unidentified"_s;
    return {name, name, QString(), false};
}

} // namespace tovel
