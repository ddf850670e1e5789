#pragma once

#include "app/commands/answer.h"
#include "app/commands/request.h"

#include <QString>

namespace tovel {

// The answer to the request for people: lines, with a line break at the end of each; empty where
// only the problems are to be told.
QString answerText(const Request &request, const Answer &answer);

} // namespace tovel
