#pragma once

#include "model/tovel_model.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace tovel {

// Version of the answers' schema. Fields may be added to it; what there is keeps its meaning.
inline constexpr int SchemaVersion = 1;

// How a request ended, in the field "status" of each answer.
namespace AnswerStatus {
inline constexpr int Done = 0;
inline constexpr int Incomplete = 1;
inline constexpr int NothingTried = 3;
} // namespace AnswerStatus

// The JSON objects of the manual page tovelctl(1).
QJsonObject statusAnswer(const TovelModel &model, const QStringList &limits);
QJsonObject appsAnswer(const TovelModel &model);
QJsonObject flockAnswer(const TovelModel &model);
QJsonObject desktopObject(const TovelModel &model, const Desktop &desktop);

// Completes an answer by schema, status and the problems to tell, a sentence each.
QJsonObject concluded(QJsonObject answer, int status, const QStringList &problems = {});
// The whole answer where nothing was tried.
QJsonObject refusal(const QString &reason);

} // namespace tovel
