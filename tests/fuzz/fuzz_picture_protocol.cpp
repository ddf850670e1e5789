#include "fuzz.h"
#include "pictures/picture_protocol.h"

using namespace tovel;

void fuzz(QByteArrayView bytes)
{
    const auto request = receiveRequest(bytes);
    if (request.message) {
        // What was received can be sent, and is received the same.
        const auto sent = encodeRequest(*request.message);
        if (!sent || receiveRequest(*sent).message != request.message)
            qFatal("a request does not survive being sent");
    }
    const auto answer = receiveAnswer(bytes);
    if (answer.message && encodeAnswer(*answer.message) != bytes.first(answer.length))
        qFatal("an answer does not survive being sent");
    if ((request.message && request.damaged) || (answer.message && answer.damaged)
        || request.length > bytes.size() || answer.length > bytes.size())
        qFatal("a message that is none");
}
