#include "app/shell/application_menu.h"

#include "app/session_bus.h"
#include "settings/updates.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

void closeMenus()
{
    QWidget *menu = QApplication::activePopupWidget();
    while (menu && menu->close())
        menu = QApplication::activePopupWidget();
}

} // namespace

ApplicationMenu::ApplicationMenu(TovelUpdates &updates, ApplicationMenuActions actions,
                                 QObject *parent)
    : QObject(parent)
    , m_menu(std::make_unique<QMenu>(u"Tovel"_s))
{
    const auto add = [this](const QString &text, const std::function<void()> &command) {
        QAction *action = m_menu->addAction(text);
        action->setShortcutContext(Qt::ApplicationShortcut); // also while a popover has the keys
        connect(action, &QAction::triggered, this, command);
        return action;
    };
    add(u"About Tovel"_s, actions.showAbout);
    QAction *check = add(u"Check for Updates…"_s, actions.checkForUpdates);
    m_menu->addSeparator();
    add(u"Hide Tovel"_s, actions.hide)->setShortcut(Qt::CTRL | Qt::Key_H);
    add(u"Quit Tovel"_s, actions.quit)->setShortcut(Qt::CTRL | Qt::Key_Q);

    const auto follow = [check, &updates] { check->setEnabled(updates.canCheck()); };
    connect(&updates, &TovelUpdates::canCheckChanged, this, follow);
    follow();
}

ApplicationMenu::~ApplicationMenu() = default;

void ApplicationMenu::install(QWidget &window)
{
    window.addActions(m_menu->actions());
    qApp->installEventFilter(this);
    // Qt asks for a registrar by starting a bus where there is none.
    if (!sessionBus().isConnected())
        return;
    auto bar = std::make_unique<QMenuBar>(&window);
    if (bar->isNativeMenuBar())
        bar.release()->addMenu(m_menu.get());
}

bool ApplicationMenu::eventFilter(QObject *watched, QEvent *event)
{
    // An open menu keeps the keys from all shortcuts.
    if (event->type() == QEvent::KeyPress && qobject_cast<QMenu *>(watched)) {
        const QKeySequence keys(static_cast<QKeyEvent *>(event)->keyCombination());
        for (QAction *action : m_menu->actions()) {
            if (action->shortcut() == keys) {
                closeMenus();
                action->trigger();
                return true;
            }
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace tovel
