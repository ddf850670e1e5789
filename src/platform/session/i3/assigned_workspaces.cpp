#include "platform/session/i3/assigned_workspaces.h"

#include "platform/session/i3/readings.h"

#include <algorithm>

namespace tovel::i3 {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MaximumConfiguration = 1 << 20;
constexpr qsizetype MaximumVariables = 1000;

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

struct Variable
{
    QString name;
    QString value;
};

// The longest name that fits counts: $ws10 is not $ws1 and a nought.
QString withVariables(QString text, const QList<Variable> &variables)
{
    for (qsizetype at = text.indexOf(u'$'); at >= 0; at = text.indexOf(u'$', at)) {
        const Variable *best = nullptr;
        for (const Variable &variable : variables) {
            if (QStringView(text).sliced(at).startsWith(variable.name)
                && (!best || variable.name.size() > best->name.size()))
                best = &variable;
        }
        if (best)
            text.replace(at, best->name.size(), best->value);
        at += best ? best->value.size() : 1;
    }
    return text;
}

} // namespace

QList<AssignedWorkspace> assignedWorkspaces(const QString &configuration)
{
    QList<AssignedWorkspace> assigned;
    QList<Variable> variables;
    QString text = configuration.left(MaximumConfiguration);
    text.replace(u"\\\n"_s, u" "_s);
    for (const QStringView line : QStringView(text).split(u'\n')) {
        const QStringView trimmed = line.trimmed();
        if (trimmed.startsWith(u"set ") && variables.size() < MaximumVariables) {
            const QStringList words = wordsOf(trimmed);
            if (words.size() < 3 || !words[1].startsWith(u'$'))
                continue;
            variables.removeIf([&words](const Variable &it) { return it.name == words[1]; });
            variables.append({words[1], withVariables(words.mid(2).join(u' '), variables)});
        } else if (trimmed.startsWith(u"workspace ") && assigned.size() < MaximumWorkspaces) {
            QStringList words = wordsOf(trimmed);
            // The name may be several words.
            const qsizetype output = words.lastIndexOf(u"output"_s);
            if (output < 2 || output + 1 == words.size())
                continue;
            for (QString &word : words)
                word = withVariables(word, variables);
            const QString name = words.mid(1, output - 1).join(u' ');
            const bool isKnown = std::ranges::any_of(
                assigned, [&name](const AssignedWorkspace &it) { return it.name == name; });
            if (!name.isEmpty() && !isKnown)
                assigned.append({name, words.mid(output + 1)});
        }
    }
    return assigned;
}

} // namespace tovel::i3
