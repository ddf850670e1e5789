#pragma once

#include "platform/updater.h"
#include "updater/update_choice.h"

#include <functional>

namespace tovel {

// What the user sees of a check: one thing at a time, each replacing the one before. Its answer
// comes once, when the user is done with it, never from within the call that shows it, and not
// when it was replaced or dismissed.
class UpdateUserDriver
{
public:
    virtual ~UpdateUserDriver() = default;

    // A check is under way, until something else is shown.
    virtual void showChecking(std::function<void()> cancel) = 0;

    // The item is newer than the program.
    virtual void showUpdateFound(const ProgramVersion &current, const SUAppcastItem &item,
                                 std::function<void()> closed)
        = 0;

    virtual void showUpToDate(const ProgramVersion &current, std::function<void()> closed) = 0;

    // The check did not come to an end; the reason is one or more sentences.
    virtual void showFailure(const QString &reason, std::function<void()> closed) = 0;

    // Takes away what is shown, if anything.
    virtual void dismiss() = 0;
};

} // namespace tovel
