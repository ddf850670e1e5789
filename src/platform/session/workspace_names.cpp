#include "platform/session/workspace_names.h"

#include <QSet>

#include <algorithm>
#include <optional>

namespace tovel {

namespace {

bool isNumber(const QString &text)
{
    return std::ranges::all_of(text, [](QChar character) { return character.isDigit(); });
}

// The word of "word number"; nothing for any other text.
std::optional<QString> wordBefore(const QString &name, qsizetype number)
{
    const QStringList parts = name.split(u' ');
    if (parts.size() != 2 || parts.last() != QString::number(number))
        return std::nullopt;
    return parts.first();
}

} // namespace

QStringList chosenNames(const QStringList &names)
{
    QSet<QString> words;
    QStringList chosen;
    QList<bool> isCounted;
    for (const QString &name : names) {
        chosen.append(name.simplified());
        const auto word = wordBefore(chosen.last(), chosen.size());
        isCounted.append(word.has_value());
        if (word)
            words.insert(*word);
        if (isNumber(chosen.last()))
            chosen.last().clear();
    }
    for (qsizetype i = 0; words.size() == 1 && i < chosen.size(); ++i) {
        if (isCounted.at(i))
            chosen[i].clear();
    }
    return chosen;
}

} // namespace tovel
