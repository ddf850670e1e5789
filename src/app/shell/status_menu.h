#pragma once

#include "settings/icon_style.h"

#include <cstdint>
#include <functional>
#include <memory>

class QMenu;

namespace tovel {

class ShortcutPreferences;
class TovelModel;
class TovelUpdates;

// What the commands of the status item's menu do.
struct StatusMenuActions
{
    std::function<void(std::uint64_t desktop)> move;
    std::function<void()> togglePin;
    std::function<void()> toggleFollow;
    std::function<void()> refresh;
    std::function<void()> openAccessSettings;
    std::function<void(TovelIconStyle)> changeIcon;
    std::function<void()> checkForUpdates;
    std::function<void()> editShortcut;
    std::function<void()> quit;
};

// The menu of the status item, from the state of this moment; it does not change afterwards.
std::unique_ptr<QMenu> makeStatusMenu(const TovelModel &model, const TovelUpdates &updates,
                                      const ShortcutPreferences &shortcuts,
                                      const StatusMenuActions &actions);

} // namespace tovel
