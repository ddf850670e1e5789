#include "app/commands/lookup.h"

#include "platform/workspace.h"

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

// The records whose text is the word; exact matches shadow those that differ in case.
template <typename Record, typename Text>
QList<Record> matches(const QList<Record> &records, const QString &word, Text text)
{
    for (const auto sensitivity : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
        QList<Record> found;
        std::copy_if(
            records.cbegin(), records.cend(), std::back_inserter(found),
            [&](const Record &record) { return text(record).compare(word, sensitivity) == 0; });
        if (!found.isEmpty())
            return found;
    }
    return {};
}

template <typename Record, typename Text>
QString ambiguous(const QString &word, const QList<Record> &records, Text text)
{
    QStringList texts;
    for (const Record &record : records)
        texts.append(text(record));
    return u"“%1” is ambiguous: %2"_s.arg(word, texts.join(u", "_s));
}

} // namespace

Found<Desktop> findDesktop(const TovelModel &model, const QString &word)
{
    const QList<Desktop> &desktops = model.desktops();
    const auto number = [](const Desktop &desktop) { return QString::number(desktop.index); };
    const auto name = [&model](const Desktop &desktop) { return model.name(desktop); };
    QList<Desktop> found = matches(desktops, word, number);
    if (found.isEmpty())
        found = matches(desktops, word, name);
    if (found.isEmpty())
        return {std::nullopt, u"there is no desktop “%1”"_s.arg(word)};
    if (found.size() > 1)
        return {std::nullopt, ambiguous(word, found, number)};
    return {found.first(), {}};
}

Found<RunningApp> findApplication(const TovelModel &model, const QString &word)
{
    const auto id = [](const RunningApp &app) { return app.id; };
    const auto name = [](const RunningApp &app) { return app.name; };
    QList<RunningApp> found = matches(model.apps(), word, id);
    if (found.isEmpty())
        found = matches(model.apps(), word, name);
    if (found.size() > 1)
        return {std::nullopt, ambiguous(word, found, id)};
    if (!found.isEmpty())
        return {found.first(), {}};

    const Workspace &workspace = currentPlatform().workspace();
    if (const auto location = workspace.URLForApplicationWithBundleIdentifier(word)) {
        RunningApp app;
        app.id = word;
        app.name = workspace.localizedNameOfApplicationAtURL(*location).value_or(word);
        return {app, {}};
    }
    return {std::nullopt, u"there is no application “%1”"_s.arg(word)};
}

} // namespace tovel
