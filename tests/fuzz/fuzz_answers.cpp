#include "app/commands/answer_json.h"
#include "fuzz.h"

using namespace tovel;

// The first byte stands for the request.
void fuzz(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return;
    const Request requests[]
        = {StatusRequest(), AppsRequest(), FlockRequest(), RenameRequest(), MoveRequest()};
    const Request &request = requests[static_cast<std::uint8_t>(bytes[0]) % std::size(requests)];
    const auto answer = answerFromJson(request, bytes.sliced(1).toByteArray());
    if (!answer)
        return;
    // What was read can be passed on, and stays the same.
    const QString text = compactJson(*answer);
    const auto again = answerFromJson(request, text.toUtf8());
    if (!again || compactJson(*again) != text)
        qFatal("an answer does not survive being passed on");
    if (answerFromJson(request, indentedJson(*again).toUtf8()) != again)
        qFatal("an indented answer reads otherwise");
}
