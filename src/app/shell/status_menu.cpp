#include "app/shell/status_menu.h"

#include "model/tovel_model.h"
#include "settings/shortcut_preferences.h"
#include "settings/updates.h"
#include "views/components/menu_text.h"
#include "views/icon_choice.h"
#include "views/panel_values.h"

#include <QMenu>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

const QString indentation = QStringLiteral("    ");

void addText(QMenu &menu, const QString &text)
{
    menu.addAction(menuText(text))->setEnabled(false);
}

QAction *addCommand(QMenu &menu, const QString &text, const std::function<void()> &command)
{
    QAction *action = menu.addAction(menuText(text));
    QObject::connect(action, &QAction::triggered, &menu, command);
    return action;
}

void addSwitch(QMenu &menu, const QString &text, bool on, const std::function<void()> &toggle)
{
    QAction *action = addCommand(menu, text, toggle);
    action->setCheckable(true);
    action->setChecked(on);
}

void addDesktop(QMenu &menu, const TovelModel &model, const Desktop &desktop, bool indented,
                const StatusMenuActions &actions)
{
    const bool flockHere = model.flockDesktopID() == desktop.id;
    QAction *action = addCommand(menu, (indented ? indentation : QString()) + model.name(desktop),
                                 [move = actions.move, id = desktop.id] { move(id); });
    action->setCheckable(flockHere);
    action->setChecked(flockHere);
    action->setEnabled(!model.busy() && model.available() && model.trusted() && !flockHere);
}

void addDesktops(QMenu &menu, const TovelModel &model, const StatusMenuActions &actions)
{
    addText(menu, u"Fly to this pond"_s);
    const QStringList all = displaysOf(model.desktops());
    for (const QString &display : all) {
        if (all.size() > 1)
            addText(menu, model.displayName(display));
        for (const Desktop &desktop : model.desktops()) {
            if (desktop.display == display)
                addDesktop(menu, model, desktop, all.size() > 1, actions);
        }
    }
    if (model.desktops().isEmpty())
        addText(menu, u"No desktops found"_s);
}

} // namespace

std::unique_ptr<QMenu> makeStatusMenu(const TovelModel &model, const TovelUpdates &updates,
                                      const ShortcutPreferences &shortcuts,
                                      const StatusMenuActions &actions)
{
    auto menu = std::make_unique<QMenu>();
    addDesktops(*menu, model, actions);
    menu->addSeparator();
    addSwitch(*menu, u"Pin window"_s, model.pinned(), actions.togglePin);
    addSwitch(*menu, u"Follow windows"_s, model.follow(), actions.toggleFollow);
    addCommand(*menu, u"Refresh"_s, actions.refresh);
    addCommand(*menu, u"Accessibility Settings…"_s, actions.openAccessSettings);
    QMenu *styles = addIconChoice(*menu, actions.changeIcon);
    markIconChoice(*styles, model.iconStyle());
    addCommand(*menu, u"Check for Updates…"_s, actions.checkForUpdates)
        ->setEnabled(updates.canCheck());
    menu->addSeparator();
    addText(*menu, TovelUpdates::versionDescription());
    addCommand(*menu, u"Keyboard Shortcut… ("_s + shortcuts.shortcut().label() + u')',
               actions.editShortcut);
    addCommand(*menu, u"Quit Tovel"_s, actions.quit)->setShortcut(Qt::CTRL | Qt::Key_Q);
    return menu;
}

} // namespace tovel
