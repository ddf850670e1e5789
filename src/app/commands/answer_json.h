#pragma once

#include "app/commands/answer.h"
#include "app/commands/request.h"

#include <QByteArray>
#include <QString>

#include <optional>

// Answers as the JSON objects of the manual page tovelctl(1).
namespace tovel {

// On one line, for programs.
QString compactJson(const Answer &answer);

// Indented, and nothing that a terminal obeys.
QString indentedJson(const Answer &answer);

// Reads another program's answer to the request. Nothing when it is not JSON, or a field is missing
// or of another kind; fields that are not known are passed over. An answer of an earlier version
// may lack what was added since.
std::optional<Answer> answerFromJson(const Request &request, const QByteArray &json);

} // namespace tovel
