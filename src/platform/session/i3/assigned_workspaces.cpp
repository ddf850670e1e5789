#include "platform/session/i3/assigned_workspaces.h"

#include "platform/session/i3/readings.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>

namespace tovel::i3 {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MaximumConfiguration = 1 << 20;
constexpr std::size_t MaximumVariables = 1000;
constexpr qsizetype MaximumText = 1024; // of a value, with the values of the variables in it

// The words of a line, those in quotes as one.
QStringList wordsOf(QStringView line)
{
    QStringList words;
    QString word;
    QChar quote;
    bool isWord = false;
    for (const QChar character : line) {
        if (!quote.isNull() ? character == quote : character == u'"' || character == u'\'') {
            quote = quote.isNull() ? character : QChar();
            isWord = true;
        } else if (quote.isNull() && character.isSpace()) {
            if (isWord)
                words.append(word);
            word.clear();
            isWord = false;
        } else {
            word += character;
            isWord = true;
        }
    }
    if (isWord)
        words.append(word);
    return words;
}

using Variables = std::map<QString, QString, std::less<>>;

// The longest name that fits counts: $ws10 is not $ws1 and a nought.
Variables::const_iterator variableAt(QStringView text, const Variables &variables)
{
    for (;;) {
        const auto next = variables.upper_bound(text);
        if (next == variables.begin())
            return variables.end();
        const auto last = std::prev(next);
        if (text.startsWith(last->first))
            return last;
        // Any other that fits is what both begin with, or shorter.
        text = text.first(std::ranges::mismatch(text, last->first).in1 - text.begin());
    }
}

// Cut where it grows too long.
QString withVariables(QStringView text, const Variables &variables)
{
    QString result;
    while (!text.isEmpty() && result.size() < MaximumText) {
        const auto variable = text[0] == u'$' ? variableAt(text, variables) : variables.end();
        const bool isVariable = variable != variables.end();
        result += isVariable ? QStringView(variable->second) : text.first(1);
        text = text.sliced(isVariable ? variable->first.size() : 1);
    }
    return result.left(MaximumText);
}

} // namespace

QList<AssignedWorkspace> assignedWorkspaces(const QString &configuration)
{
    QList<AssignedWorkspace> assigned;
    Variables variables;
    QString text = configuration.left(MaximumConfiguration);
    text.replace(u"\\\n"_s, u" "_s);
    for (const QStringView line : QStringView(text).split(u'\n')) {
        const QStringView trimmed = line.trimmed();
        if (trimmed.startsWith(u"set ") && variables.size() < MaximumVariables) {
            const QStringList words = wordsOf(trimmed);
            if (words.size() < 3 || !words[1].startsWith(u'$'))
                continue;
            variables[words[1]] = withVariables(words.mid(2).join(u' '), variables);
        } else if (trimmed.startsWith(u"workspace ") && assigned.size() < MaximumWorkspaces) {
            const QStringList words = wordsOf(trimmed);
            // The name may be several words.
            const qsizetype output = words.lastIndexOf(u"output"_s);
            if (output < 2 || output + 1 == words.size())
                continue;
            const QString name = withVariables(words.mid(1, output - 1).join(u' '), variables);
            QStringList outputs = words.mid(output + 1, MaximumOutputs);
            for (QString &it : outputs)
                it = withVariables(it, variables);
            const bool isKnown = std::ranges::any_of(
                assigned, [&name](const AssignedWorkspace &it) { return it.name == name; });
            if (!name.isEmpty() && !isKnown)
                assigned.append({name, outputs});
        }
    }
    return assigned;
}

} // namespace tovel::i3
