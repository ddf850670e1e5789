#include "app/commands/answer_json.h"

#include <QtGlobal>

using namespace tovel;

namespace {

Request requestFor(std::uint8_t number)
{
    switch (number % 5) {
    case 0:
        return StatusRequest();
    case 1:
        return AppsRequest();
    case 2:
        return FlockRequest();
    case 3:
        return RenameRequest();
    default:
        return MoveRequest();
    }
}

} // namespace

// The first byte stands for the request.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const Request request = requestFor(data[0]);
    const auto answer = answerFromJson(
        request,
        QByteArray(reinterpret_cast<const char *>(data + 1), static_cast<qsizetype>(size - 1)));
    if (!answer)
        return 0;
    // What was read can be passed on, and stays the same.
    const QString text = compactJson(*answer);
    const auto again = answerFromJson(request, text.toUtf8());
    if (!again || compactJson(*again) != text)
        qFatal("an answer does not survive being passed on");
    if (answerFromJson(request, indentedJson(*again).toUtf8()) != again)
        qFatal("an indented answer reads otherwise");
    return 0;
}
