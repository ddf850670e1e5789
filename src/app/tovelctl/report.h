#pragma once

#include "model/tovel_model.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace tovel {

// Version of the JSON objects' schema. Fields may be added to it; what there is keeps its meaning.
inline constexpr int SchemaVersion = 1;

// The JSON objects of the manual page.
QJsonObject statusObject(const TovelModel &model, const QStringList &limits);
QJsonObject appsObject(const TovelModel &model);
QJsonObject flockObject(const TovelModel &model);
QJsonObject desktopObject(const TovelModel &model, const Desktop &desktop);
QJsonObject withSchema(QJsonObject object);

// The same for people: lines, with a line break at the end of each.
QString statusText(const TovelModel &model, const QStringList &limits);
QString appsText(const TovelModel &model);
QString flockText(const TovelModel &model);

} // namespace tovel
