#include "app/commands/answers.h"

#include <QJsonArray>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

const Desktop *desktopWithID(const TovelModel &model, std::uint64_t id)
{
    for (const Desktop &desktop : model.desktops()) {
        if (desktop.id == id)
            return &desktop;
    }
    return nullptr;
}

// One for each display, in the order of their first desktops.
QJsonArray displayArray(const TovelModel &model)
{
    QStringList seen;
    QJsonArray array;
    for (const Desktop &desktop : model.desktops()) {
        if (seen.contains(desktop.display))
            continue;
        seen.append(desktop.display);
        array.append(QJsonObject{{u"id"_s, desktop.display},
                                 {u"name"_s, model.displayName(desktop.display)},
                                 {u"builtIn"_s, model.displayIsBuiltIn(desktop.display)}});
    }
    return array;
}

QJsonObject appObject(const TovelModel &model, const RunningApp &app)
{
    return {{u"id"_s, app.id},
            {u"name"_s, app.name},
            {u"running"_s, app.running != nullptr},
            {u"inFlock"_s, model.selected().contains(app.id)}};
}

QJsonArray flockArray(const TovelModel &model)
{
    QJsonArray array;
    for (const RunningApp &app : model.apps()) {
        if (model.selected().contains(app.id))
            array.append(appObject(model, app));
    }
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

} // namespace

QJsonObject concluded(QJsonObject answer, int status, const QStringList &problems)
{
    answer.insert(u"schema"_s, SchemaVersion);
    answer.insert(u"status"_s, status);
    answer.insert(u"problems"_s, QJsonArray::fromStringList(problems));
    return answer;
}

QJsonObject refusal(const QString &reason)
{
    return concluded({{u"error"_s, reason}}, AnswerStatus::NothingTried, {reason});
}

QJsonObject desktopObject(const TovelModel &model, const Desktop &desktop)
{
    return {{u"number"_s, qint64(desktop.index)},
            {u"name"_s, model.name(desktop)},
            {u"display"_s, desktop.display},
            {u"shown"_s, desktop.current},
            {u"flockWindows"_s, model.distribution().value(desktop.id)}};
}

QJsonObject statusAnswer(const TovelModel &model, const QStringList &limits)
{
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
    return {{u"trusted"_s, model.trusted()},
            {u"available"_s, model.available()},
            {u"follow"_s, model.follow()},
            {u"displays"_s, displayArray(model)},
            {u"desktops"_s, desktops},
            {u"flock"_s, flockArray(model)},
            {u"flockDesktop"_s, flockDesktop},
            {u"windows"_s, windows},
            {u"limits"_s, QJsonArray::fromStringList(limits)}};
}

QJsonObject appsAnswer(const TovelModel &model)
{
    QJsonArray apps;
    for (const RunningApp &app : model.apps())
        apps.append(appObject(model, app));
    return {{u"apps"_s, apps}};
}

QJsonObject flockAnswer(const TovelModel &model) { return {{u"flock"_s, flockArray(model)}}; }

} // namespace tovel
