#pragma once

#include "app/commands/request.h"

#include <QJsonObject>
#include <QString>

namespace tovel {

// An answer for people: lines, with a line break at the end of each; empty where only the problems
// are to be told. Fields that are missing or of another kind count as empty.
QString answerText(Request::Command command, const QJsonObject &answer);

// The same as an indented JSON object that no terminal obeys.
QString answerJson(const QJsonObject &answer);

} // namespace tovel
