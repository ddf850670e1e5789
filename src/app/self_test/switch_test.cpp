#include "app/self_test/self_test.h"

#include "app/self_test/check_report.h"
#include "app/self_test/observations.h"
#include "model/tovel_model.h"
#include "platform/platform.h"

namespace tovel {

using namespace Qt::StringLiterals;

QCoro::Task<int> testSwitching(const SelfTestSetting &setting)
{
    TovelModel model(setting.platform);
    const std::optional<Desktop> source = firstShown(model.desktops());
    const QList<Desktop> others = othersOnDisplay(model.desktops(), source);
    if (others.isEmpty())
        co_return SelfTestSkipped;

    const std::int64_t serial = model.spaceChangeSerial();
    const bool arrived = co_await model.switchDesktop(others.last(), std::nullopt);
    const std::int64_t notifications = model.spaceChangeSerial() - serial;
    const bool restored = co_await model.switchDesktop(*source, std::nullopt);

    const CheckResult transition[] = {{u"Native destination transition"_s, arrived}};
    const CheckResult restoration[] = {{u"Original desktop restored"_s, restored}};
    report(transition, setting.out);
    setting.out << "Real workspace notifications: " << notifications << Qt::endl;
    report(restoration, setting.out);
    co_return arrived &&restored &&notifications >= 1 ? SelfTestPassed : SelfTestFailed;
}

} // namespace tovel
