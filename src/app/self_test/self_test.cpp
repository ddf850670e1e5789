#include "app/self_test/self_test.h"

#include "app/self_test/fixture_windows.h"

namespace tovel {

using namespace Qt::StringLiterals;

std::optional<SelfTestMode> selfTestMode(const QStringList &arguments)
{
    struct Row
    {
        QLatin1StringView flag;
        SelfTestMode mode;
    };
    static constexpr Row rows[] = {
        {"--diagnose"_L1, SelfTestMode::Diagnose},
        {"--switch-test"_L1, SelfTestMode::SwitchTest},
        {"--fixture"_L1, SelfTestMode::Fixture},
        {"--cross-process-test"_L1, SelfTestMode::CrossProcessTest},
        {"--integration-test"_L1, SelfTestMode::IntegrationTest},
        {"--self-test"_L1, SelfTestMode::SelfTest},
    };
    for (const Row &row : rows) {
        if (arguments.contains(row.flag))
            return row.mode;
    }
    return std::nullopt;
}

bool asksForMinimized(const QStringList &arguments) { return arguments.contains("--minimized"_L1); }

QCoro::Task<> showFixture(const SelfTestSetting &setting, FixtureWindows &windows)
{
    const QString title = u"Tovel test fixture %1"_s;
    const FixturePair pair
        = co_await openFixturePair(setting.platform, windows, title.arg(1), title.arg(2));
    setting.out << pair.first << ',' << pair.second << Qt::endl;
}

} // namespace tovel
