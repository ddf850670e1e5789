#include "app/commands/answer.h"

namespace tovel {

Answer refusal(RefusalCause cause, const QString &error)
{
    const bool isLost = cause == RefusalCause::NoAnswer;
    return {isLost ? AnswerStatus::Incomplete : AnswerStatus::NothingTried,
            {error},
            Refusal{cause, error}};
}

} // namespace tovel
