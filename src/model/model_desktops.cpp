#include "model/readings.h"
#include "model/texts.h"
#include "model/tovel_model.h"
#include "platform/accessibility.h"
#include "platform/quartz.h"
#include "platform/space_maker.h"
#include "platform/variants.h"

#include <algorithm>

namespace tovel {

namespace {

struct Screen
{
    std::uint32_t number = 0; // 0 for none
    std::optional<QString> uuid;
};

QList<Screen> readScreens(Platform &platform)
{
    QList<Screen> screens;
    for (const NSScreen &screen : platform.workspace().screens()) {
        Screen result;
        if (screen.NSScreenNumber) {
            result.number = *screen.NSScreenNumber;
            result.uuid = platform.quartz().CGDisplayCreateUUIDFromDisplayID(result.number);
        }
        screens.append(result);
    }
    return screens;
}

std::uint32_t screenOf(const QString &display, const QList<Screen> &screens, bool onlyDisplay)
{
    const auto match = std::find_if(screens.cbegin(), screens.cend(),
                                    [&](const Screen &screen) { return screen.uuid == display; });
    if (match != screens.cend())
        return match->number;
    // A lone display may go by a name that is no screen's UUID.
    return onlyDisplay && !screens.isEmpty() ? screens.first().number : 0;
}

std::optional<Desktop> firstOn(const QString &display, const QList<Desktop> &desktops)
{
    for (const Desktop &desktop : desktops) {
        if (desktop.display == display)
            return desktop;
    }
    return std::nullopt;
}

} // namespace

QList<Desktop> TovelModel::readDesktops() const
{
    const QList<ManagedDisplay> displays = readDisplays();
    if (displays.isEmpty())
        return {};
    const QList<Screen> screens = readScreens(m_platform);

    QList<Desktop> desktops;
    for (const ManagedDisplay &display : displays) {
        const QString identifier = display.identifier.value_or(QStringLiteral("Main"));
        const std::uint32_t displayID = screenOf(identifier, screens, displays.size() == 1);
        const auto spaces = display.spaces.value_or(QList<QVariantMap>());
        for (qsizetype position = 0; position < spaces.size(); ++position) {
            const QVariantMap &space = spaces.at(position);
            const auto id = spaceID(space);
            if (!id || signedNumber(space.value(QStringLiteral("type"))) != 0)
                continue;
            Desktop desktop;
            desktop.id = *id;
            desktop.uuid = text(space.value(QStringLiteral("uuid"))).value_or(QString::number(*id));
            desktop.sessionName = text(space.value(QStringLiteral("name"))).value_or(QString());
            desktop.display = identifier;
            desktop.displayID = displayID;
            desktop.index = desktops.size() + 1;
            desktop.missionIndex = position;
            desktop.current = display.currentSpace == id;
            desktops.append(desktop);
        }
    }
    return desktops;
}

void TovelModel::refreshDesktopList()
{
    if (m_busy)
        return;
    publish(m_trusted, m_platform.accessibility().AXIsProcessTrusted(), Property::trusted);
    publish(m_desktops, readDesktops(), Property::desktops);
}

NewDesktop TovelModel::makeDesktop(const QString &name)
{
    SpaceMaker *maker = m_platform.spaceMaker();
    if (m_busy || !maker)
        return {std::nullopt, ModelTexts::makesNoDesktops()};
    const MadeSpace made = maker->makeSpace(name);
    refreshDesktopList();
    for (const Desktop &desktop : std::as_const(m_desktops)) {
        if (desktop.id == made.id)
            return {desktop, {}};
    }
    return {std::nullopt, made.refusal};
}

QString TovelModel::name(const Desktop &desktop) const
{
    const QString alias = m_aliases.value(desktop.key()).trimmed();
    if (!alias.isEmpty())
        return alias;
    return desktop.sessionName.isEmpty() ? ModelTexts::desktopNumber(desktop.index)
                                         : desktop.sessionName;
}

QString TovelModel::displayName(const QString &display) const
{
    const auto desktop = firstOn(display, m_desktops);
    if (!desktop)
        return ModelTexts::unknownDisplay();
    for (const NSScreen &screen : m_platform.workspace().screens()) {
        if (screen.NSScreenNumber == desktop->displayID)
            return screen.localizedName;
    }
    return ModelTexts::unknownDisplay();
}

bool TovelModel::displayIsBuiltIn(const QString &display) const
{
    const auto desktop = firstOn(display, m_desktops);
    return desktop && m_platform.quartz().CGDisplayIsBuiltin(desktop->displayID);
}

} // namespace tovel
