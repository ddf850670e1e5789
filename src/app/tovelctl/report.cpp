#include "app/tovelctl/report.h"

#include "app/console.h"

#include <QJsonArray>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

// The displays in the order of their first desktops.
QStringList displays(const TovelModel &model)
{
    QStringList displays;
    for (const Desktop &desktop : model.desktops()) {
        if (!displays.contains(desktop.display))
            displays.append(desktop.display);
    }
    return displays;
}

QList<RunningApp> flock(const TovelModel &model)
{
    QList<RunningApp> flock;
    std::copy_if(model.apps().cbegin(), model.apps().cend(), std::back_inserter(flock),
                 [&](const RunningApp &app) { return model.selected().contains(app.id); });
    return flock;
}

const Desktop *desktopWithID(const TovelModel &model, std::uint64_t id)
{
    for (const Desktop &desktop : model.desktops()) {
        if (desktop.id == id)
            return &desktop;
    }
    return nullptr;
}

QJsonObject appObject(const TovelModel &model, const RunningApp &app)
{
    return {{u"id"_s, app.id},
            {u"name"_s, app.name},
            {u"running"_s, app.running != nullptr},
            {u"inFlock"_s, model.selected().contains(app.id)}};
}

QJsonArray appArray(const TovelModel &model, const QList<RunningApp> &apps)
{
    QJsonArray array;
    for (const RunningApp &app : apps)
        array.append(appObject(model, app));
    return array;
}

QJsonObject windowObject(const TovelModel &model, const TravelWindow &window)
{
    QJsonArray desktops;
    for (const std::uint64_t space : window.spaces) {
        if (const Desktop *desktop = desktopWithID(model, space))
            desktops.append(qint64(desktop->index));
    }
    return {{u"id"_s, qint64(window.id)},
            {u"app"_s, window.appID},
            {u"appName"_s, window.appName},
            {u"title"_s, window.title},
            {u"desktops"_s, desktops},
            {u"reason"_s,
             window.skipReason ? QJsonValue(*window.skipReason) : QJsonValue(QJsonValue::Null)}};
}

QString counted(int count, const QString &noun)
{
    return u"%1 %2%3"_s.arg(count).arg(noun, count == 1 ? QString() : u"s"_s);
}

QString padded(const QString &text, qsizetype width)
{
    return text + QString(qMax<qsizetype>(0, width - text.size()), u' ');
}

// Rows as aligned columns, indented; the last column is not padded.
QString table(const QList<QStringList> &rows)
{
    constexpr qsizetype widest = 40;
    QList<qsizetype> widths;
    for (const QStringList &row : rows) {
        for (qsizetype i = 0; i < row.size(); ++i) {
            if (i == widths.size())
                widths.append(0);
            widths[i] = std::min(widest, std::max(widths[i], row[i].size()));
        }
    }
    QString text;
    for (const QStringList &row : rows) {
        QString line = u"  "_s;
        for (qsizetype i = 0; i + 1 < row.size(); ++i)
            line += padded(row[i], widths[i]) + u"  "_s;
        line += row.last();
        while (line.endsWith(u' '))
            line.chop(1);
        text += line + u'\n';
    }
    return text;
}

QString flockRows(const TovelModel &model)
{
    QList<QStringList> rows;
    for (const RunningApp &app : flock(model)) {
        rows.append({printable(app.name), printable(app.id),
                     app.running ? u"running"_s : u"not running"_s});
    }
    return rows.isEmpty() ? u"  nobody yet; see tovelctl flock add\n"_s : table(rows);
}

QString desktopRows(const TovelModel &model, const QString &display)
{
    const auto counts = model.distribution();
    QList<QStringList> rows;
    for (const Desktop &desktop : model.desktops()) {
        if (desktop.display != display)
            continue;
        const int count = counts.value(desktop.id);
        rows.append({QString::number(desktop.index), printable(model.name(desktop)),
                     desktop.current ? u"shown"_s : QString(),
                     count > 0 ? counted(count, u"flock window"_s) : QString()});
    }
    return table(rows);
}

QString windowRows(const TovelModel &model)
{
    QList<QStringList> rows;
    for (const TravelWindow &window : model.windows()) {
        QString place = window.skipReason.value_or(QString());
        if (place.isEmpty()) {
            if (const Desktop *desktop = desktopWithID(model, window.spaces.value(0)))
                place = model.name(*desktop);
        }
        QString title = printable(window.title);
        if (title.size() > 40)
            title = title.left(39) + u'…';
        rows.append({printable(window.appName), title, printable(place)});
    }
    return rows.isEmpty() ? u"  none\n"_s : table(rows);
}

} // namespace

QJsonObject withSchema(QJsonObject object)
{
    object.insert(u"schema"_s, SchemaVersion);
    return object;
}

QJsonObject desktopObject(const TovelModel &model, const Desktop &desktop)
{
    return {{u"number"_s, qint64(desktop.index)},
            {u"name"_s, model.name(desktop)},
            {u"display"_s, desktop.display},
            {u"shown"_s, desktop.current},
            {u"flockWindows"_s, model.distribution().value(desktop.id)}};
}

QJsonObject statusObject(const TovelModel &model, const QStringList &limits)
{
    QJsonArray displayArray;
    for (const QString &display : displays(model)) {
        displayArray.append(QJsonObject{{u"id"_s, display},
                                        {u"name"_s, model.displayName(display)},
                                        {u"builtIn"_s, model.displayIsBuiltIn(display)}});
    }
    QJsonArray desktops;
    for (const Desktop &desktop : model.desktops())
        desktops.append(desktopObject(model, desktop));
    QJsonArray windows;
    for (const TravelWindow &window : model.windows())
        windows.append(windowObject(model, window));
    QJsonValue flockDesktop(QJsonValue::Null);
    if (const auto id = model.flockDesktopID()) {
        if (const Desktop *desktop = desktopWithID(model, *id))
            flockDesktop = qint64(desktop->index);
    }
    return withSchema({{u"trusted"_s, model.trusted()},
                       {u"available"_s, model.available()},
                       {u"follow"_s, model.follow()},
                       {u"displays"_s, displayArray},
                       {u"desktops"_s, desktops},
                       {u"flock"_s, appArray(model, flock(model))},
                       {u"flockDesktop"_s, flockDesktop},
                       {u"windows"_s, windows},
                       {u"limits"_s, QJsonArray::fromStringList(limits)}});
}

QJsonObject appsObject(const TovelModel &model)
{
    return withSchema({{u"apps"_s, appArray(model, model.apps())}});
}

QJsonObject flockObject(const TovelModel &model)
{
    return withSchema({{u"flock"_s, appArray(model, flock(model))}});
}

QString statusText(const TovelModel &model, const QStringList &limits)
{
    QString text;
    for (const QString &limit : limits)
        text += limit + u'\n';
    text += u"Access to windows: "_s + (model.trusted() ? u"allowed\n"_s : u"not allowed\n"_s);
    text += u"Moving windows:    "_s + (model.available() ? u"available\n"_s : u"missing\n"_s);
    text += u"After a move:      "_s
        + (model.follow() ? u"follow to the desktop\n"_s : u"stay here\n"_s);
    const QStringList all = displays(model);
    if (all.isEmpty())
        text += u"\nNo desktops found\n"_s;
    for (const QString &display : all) {
        text += u"\nDisplay %1 (%2)\n"_s.arg(printable(display),
                                             printable(model.displayName(display)));
        text += desktopRows(model, display);
    }
    text += u"\nFlock\n"_s + flockRows(model);
    text += u"\nWindows of the flock\n"_s + windowRows(model);
    return text;
}

QString appsText(const TovelModel &model)
{
    QList<QStringList> rows;
    for (const RunningApp &app : model.apps()) {
        rows.append({model.selected().contains(app.id) ? u"in the flock"_s : QString(),
                     printable(app.name), printable(app.id),
                     app.running ? QString() : u"not running"_s});
    }
    return rows.isEmpty() ? u"No applications found\n"_s : table(rows);
}

QString flockText(const TovelModel &model) { return u"Flock\n"_s + flockRows(model); }

} // namespace tovel
