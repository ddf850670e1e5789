#include "app/self_test/check_report.h"

#include "app/self_test/self_test.h"

namespace tovel {

int report(std::span<const CheckResult> results, QTextStream &out)
{
    int status = SelfTestPassed;
    for (const CheckResult &result : results) {
        out << result.name << ": " << (result.holds ? "true" : "false") << Qt::endl;
        if (!result.holds)
            status = SelfTestFailed;
    }
    return status;
}

} // namespace tovel
