#pragma once

#include <QObject>

#include <functional>
#include <memory>

class QMenu;
class QWidget;

namespace tovel {

class TovelUpdates;

// What the commands of the application menu do.
struct ApplicationMenuActions
{
    std::function<void()> showAbout;
    std::function<void()> checkForUpdates;
    std::function<void()> hide;
    std::function<void()> quit;
};

// The menu of the program itself, "Tovel". Its keys act in every window of the program, also while
// a menu or a popover is open, but not while a dialog has to be answered first.
class ApplicationMenu final : public QObject
{
    Q_OBJECT

public:
    // Borrows the updates, whose canCheck() the menu follows.
    ApplicationMenu(TovelUpdates &updates, ApplicationMenuActions actions,
                    QObject *parent = nullptr);
    ~ApplicationMenu() override;

    // The same menu for as long as this lives, to be opened wherever the user asks for it.
    QMenu &menu() { return *m_menu; }

    // Makes the keys act while the window is shown. In a session that shows the menus of windows
    // itself (it has a com.canonical.AppMenu.Registrar on its bus) the menu appears there, too; the
    // window never gets a bar of its own. To be called once, for a window that outlives this.
    void install(QWidget &window);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    std::unique_ptr<QMenu> m_menu;
};

} // namespace tovel
