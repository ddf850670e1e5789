#include "app/tovelctl/text.h"

#include "app/console.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

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

QString text(const QJsonValue &value) { return printable(value.toString()); }

QString flockText(const QJsonValue &flock)
{
    QList<QStringList> rows;
    for (const QJsonValue app : flock.toArray()) {
        rows.append({text(app[u"name"_s]), text(app[u"id"_s]),
                     app[u"running"_s].toBool() ? u"running"_s : u"not running"_s});
    }
    return u"Flock\n"_s
        + (rows.isEmpty() ? u"  nobody yet; see tovelctl flock add\n"_s : table(rows));
}

QString desktopRows(const QJsonArray &desktops, const QJsonValue &display)
{
    QList<QStringList> rows;
    for (const QJsonValue desktop : desktops) {
        if (desktop[u"display"_s] != display)
            continue;
        const int count = desktop[u"flockWindows"_s].toInt();
        rows.append({QString::number(desktop[u"number"_s].toInt()), text(desktop[u"name"_s]),
                     desktop[u"shown"_s].toBool() ? u"shown"_s : QString(),
                     count > 0 ? counted(count, u"flock window"_s) : QString()});
    }
    return table(rows);
}

QString windowRows(const QJsonArray &windows, const QJsonArray &desktops)
{
    QList<QStringList> rows;
    for (const QJsonValue window : windows) {
        QString place = text(window[u"reason"_s]);
        for (const QJsonValue desktop : desktops) {
            if (place.isEmpty() && desktop[u"number"_s] == window[u"desktops"_s][0])
                place = text(desktop[u"name"_s]);
        }
        QString title = text(window[u"title"_s]);
        if (title.size() > 40)
            title = title.left(39) + u'…';
        rows.append({text(window[u"appName"_s]), title, place});
    }
    return rows.isEmpty() ? u"  none\n"_s : table(rows);
}

QString statusText(const QJsonObject &status)
{
    if (!status.contains(u"trusted"_s))
        return {};
    const auto is = [&status](const QString &field) { return status[field].toBool(); };
    QString result;
    for (const QJsonValue limit : status[u"limits"_s].toArray())
        result += text(limit) + u'\n';
    result += u"Access to windows: "_s + (is(u"trusted"_s) ? u"allowed\n"_s : u"not allowed\n"_s);
    result += u"Moving windows:    "_s + (is(u"available"_s) ? u"available\n"_s : u"missing\n"_s);
    const bool hasSession = !status.contains(u"error"_s);
    if (hasSession) {
        result += u"After a move:      "_s
            + (is(u"follow"_s) ? u"follow to the desktop\n"_s : u"stay here\n"_s);
    }
    const QJsonArray desktops = status[u"desktops"_s].toArray();
    if (desktops.isEmpty())
        result += u"\nNo desktops found\n"_s;
    if (!hasSession)
        return result;
    for (const QJsonValue display : status[u"displays"_s].toArray()) {
        result += u"\nDisplay %1 (%2)\n"_s.arg(text(display[u"id"_s]), text(display[u"name"_s]));
        result += desktopRows(desktops, display[u"id"_s]);
    }
    return result + u'\n' + flockText(status[u"flock"_s]) + u"\nWindows of the flock\n"_s
        + windowRows(status[u"windows"_s].toArray(), desktops);
}

QString appsText(const QJsonValue &apps)
{
    QList<QStringList> rows;
    for (const QJsonValue app : apps.toArray()) {
        rows.append({app[u"inFlock"_s].toBool() ? u"in the flock"_s : QString(),
                     text(app[u"name"_s]), text(app[u"id"_s]),
                     app[u"running"_s].toBool() ? QString() : u"not running"_s});
    }
    return rows.isEmpty() ? u"No applications found\n"_s : table(rows);
}

} // namespace

QString answerText(Request::Command command, const QJsonObject &answer)
{
    if (command == Request::Command::Status)
        return statusText(answer);
    if (answer.contains(u"error"_s))
        return {};
    switch (command) {
    case Request::Command::Apps:
        return appsText(answer[u"apps"_s]);
    case Request::Command::FlockAdd:
    case Request::Command::FlockRemove:
        return flockText(answer[u"flock"_s]);
    case Request::Command::Rename: {
        const QJsonValue desktop = answer[u"desktop"_s];
        return u"Desktop %1 is now “%2”.\n"_s.arg(desktop[u"number"_s].toInt())
            .arg(text(desktop[u"name"_s]));
    }
    case Request::Command::Move:
        return text(answer[u"summary"_s]) + u'\n';
    case Request::Command::Status:
        break;
    }
    Q_UNREACHABLE();
}

QString answerJson(const QJsonObject &answer)
{
    // JSON leaves the controls of ISO 6429 as they are; terminals may obey them.
    const QString json = QString::fromUtf8(QJsonDocument(answer).toJson(QJsonDocument::Indented));
    QString result;
    for (const QChar character : json) {
        const bool isControl = character >= QChar(0x7F) && character <= QChar(0x9F);
        result += isControl ? u"\\u%1"_s.arg(character.unicode(), 4, 16, QChar(u'0'))
                            : QString(character);
    }
    return result;
}

} // namespace tovel
