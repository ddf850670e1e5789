#include "app/tovelctl/text.h"

#include "app/console.h"

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

const QString unknownText = u"  unknown\n"_s;

// The text where there is nobody in it.
QString flockText(const QList<AppInfo> &flock,
                  const QString &nobody = u"  nobody yet; see tovelctl flock add\n"_s)
{
    QList<QStringList> rows;
    for (const AppInfo &app : flock) {
        rows.append({printable(app.name), printable(app.id),
                     app.running ? u"running"_s : u"not running"_s});
    }
    return u"Flock\n"_s + (rows.isEmpty() ? nobody : table(rows));
}

QString desktopRows(const QList<DesktopInfo> &desktops, const QString &display)
{
    QList<QStringList> rows;
    for (const DesktopInfo &desktop : desktops) {
        if (desktop.display != display)
            continue;
        const int count = desktop.flockWindows;
        rows.append({QString::number(desktop.number), printable(desktop.name),
                     desktop.shown ? u"shown"_s : QString(),
                     count > 0 ? counted(count, u"flock window"_s) : QString()});
    }
    return table(rows);
}

QString windowRows(const StatusContent &status)
{
    QList<QStringList> rows;
    for (const WindowInfo &window : status.windows) {
        QString place = window.reason.value_or(QString());
        for (const DesktopInfo &desktop : status.desktops) {
            if (place.isEmpty() && window.desktops.startsWith(desktop.number))
                place = desktop.name;
        }
        QString title = printable(window.title);
        if (title.size() > 40)
            title = title.left(39) + u'…';
        rows.append({printable(window.appName), title, printable(place)});
    }
    if (rows.isEmpty())
        return status.choicesKnown ? u"  none\n"_s : unknownText;
    return table(rows);
}

QString followText(const StatusContent &status)
{
    if (!status.choicesKnown)
        return unknownText;
    return status.follow ? u"  follow to the desktop\n"_s : u"  stay here\n"_s;
}

QString accessText(bool trusted, bool available)
{
    return u"Access to windows: "_s + (trusted ? u"allowed\n"_s : u"not allowed\n"_s)
        + u"Moving windows:    "_s + (available ? u"available\n"_s : u"missing\n"_s);
}

const QString noDesktops = u"\nNo desktops found\n"_s;

QString contentText(const Request &request, const Refusal &refusal)
{
    const bool isStatus = std::holds_alternative<StatusRequest>(request);
    if (!isStatus || refusal.cause != RefusalCause::NoSession)
        return {};
    return accessText(false, false) + noDesktops;
}

QString contentText(const Request &, const StatusContent &status)
{
    QString result;
    for (const QString &limit : status.limits)
        result += printable(limit) + u'\n';
    if (!status.session.isEmpty())
        result += u"Session:           "_s + printable(status.session) + u'\n';
    result += accessText(status.trusted, status.available) + u"After a move:    "_s
        + followText(status);
    if (status.desktops.isEmpty())
        result += noDesktops;
    for (const DisplayInfo &display : status.displays) {
        result += u"\nDisplay %1 (%2)\n"_s.arg(printable(display.id), printable(display.name))
            + desktopRows(status.desktops, display.id);
    }
    result += u'\n'
        + (status.choicesKnown ? flockText(status.flock) : flockText(status.flock, unknownText));
    return result + u"\nWindows of the flock\n"_s + windowRows(status);
}

QString contentText(const Request &, const AppsContent &content)
{
    QList<QStringList> rows;
    for (const AppInfo &app : content.apps) {
        rows.append({app.inFlock ? u"in the flock"_s : QString(), printable(app.name),
                     printable(app.id), app.running ? QString() : u"not running"_s});
    }
    return rows.isEmpty() ? u"No applications found\n"_s : table(rows);
}

QString contentText(const Request &, const FlockContent &content)
{
    return flockText(content.flock);
}

QString contentText(const Request &, const RenameContent &content)
{
    return u"Desktop %1 is now “%2”.\n"_s.arg(content.desktop.number)
        .arg(printable(content.desktop.name));
}

QString contentText(const Request &, const MoveContent &move)
{
    return printable(move.summary) + u'\n';
}

} // namespace

QString answerText(const Request &request, const Answer &answer)
{
    return std::visit([&](const auto &content) { return contentText(request, content); },
                      answer.content);
}

} // namespace tovel
