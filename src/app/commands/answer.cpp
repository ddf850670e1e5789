#include "app/commands/answer.h"

namespace tovel {

Answer refusal(RefusalCause cause, const QString &error)
{
    const bool wasTried = cause == RefusalCause::NoAnswer || cause == RefusalCause::NotStored;
    return {wasTried ? AnswerStatus::Incomplete : AnswerStatus::NothingTried,
            {error},
            Refusal{cause, error}};
}

} // namespace tovel
