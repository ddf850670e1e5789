#include "model/migration_rules.h"

#include "model/texts.h"

namespace tovel::MigrationRules {

std::optional<QString> skipReason([[maybe_unused]] bool minimized, bool fullscreen,
                                  const QList<std::uint64_t> &spaces,
                                  const QSet<std::uint64_t> &userSpaces)
{
    if (fullscreen)
        return ModelTexts::fullScreen();
    if (spaces.size() > 1)
        return ModelTexts::onMultipleDesktops();
    if (spaces.isEmpty())
        return ModelTexts::desktopUnavailable();
    if (userSpaces.contains(spaces.first()))
        return std::nullopt;
    return ModelTexts::notOnRegularDesktop();
}

QMap<std::uint64_t, int> distribution(const QList<TravelWindow> &windows)
{
    QMap<std::uint64_t, int> counts;
    for (const TravelWindow &window : windows) {
        for (const std::uint64_t space : window.spaces)
            ++counts[space];
    }
    return counts;
}

std::optional<std::uint64_t> flockDesktop(const QList<TravelWindow> &windows)
{
    const auto counts = distribution(windows);
    if (counts.size() != 1)
        return std::nullopt;
    return counts.firstKey();
}

} // namespace tovel::MigrationRules
