#include "platform/session/i3/new_names.h"

#include "platform/session/i3/commands.h"
#include "texts/one_line.h"

#include <QSet>

namespace tovel::i3 {

using namespace Qt::StringLiterals;

std::optional<std::uint64_t> leadingNumber(const QString &name)
{
    qsizetype length = 0;
    while (length < name.size() && length < 9 && name[length] >= u'0' && name[length] <= u'9')
        ++length;
    return length == 0 ? std::nullopt : std::optional(name.left(length).toULongLong());
}

QString lowestFreeNumber(const QStringList &names)
{
    QSet<std::uint64_t> taken;
    for (const QString &name : names)
        taken.insert(leadingNumber(name).value_or(0));
    std::uint64_t number = 1;
    while (taken.contains(number))
        ++number;
    return QString::number(number);
}

QString problemOfNewName(Compositor compositor, const QString &name, const QStringList &others)
{
    if (name.size() > MaximumNameLength)
        return u"the name of a desktop has at most %1 characters here"_s.arg(MaximumNameLength);
    if (others.size() >= MaximumWorkspaces)
        return u"there are %1 desktops already"_s.arg(others.size());
    for (const QString &other : others) {
        if (other.compare(name, Qt::CaseInsensitive) == 0)
            return u"there is a desktop “%1” already"_s.arg(oneLine(other));
    }
    if (!quotedWorkspace(compositor, name)) {
        return u"%1 takes no command with the name “%2”"_s.arg(
            compositor == Compositor::Sway ? u"sway"_s : u"i3"_s, oneLine(name));
    }
    return {};
}

} // namespace tovel::i3
