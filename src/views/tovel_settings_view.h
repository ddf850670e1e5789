#pragma once

#include <QWidget>

#include <functional>
#include <memory>

class QAction;
class QMenu;

namespace tovel {

class ModelWatch;
class PlainButton;
class ShortcutPreferences;
class TovelModel;
class TovelUpdates;

// The gear button with the menu of options and commands.
class TovelSettingsView final : public QWidget
{
    Q_OBJECT

public:
    // Borrows what it is given. The action opens the editor of the keyboard shortcut; without one
    // that command is disabled.
    TovelSettingsView(TovelModel &model, TovelUpdates &updates, ShortcutPreferences &shortcuts,
                      std::function<void()> changeShortcut, QWidget *parent = nullptr);
    ~TovelSettingsView() override;

    QMenu &menu() { return *m_menu; }

private:
    void fillMenu();
    void redraw();
    void showMenu();

    TovelModel &m_model;
    TovelUpdates &m_updates;
    ShortcutPreferences &m_shortcuts;
    std::function<void()> m_changeShortcut;
    PlainButton *m_button;
    std::unique_ptr<QMenu> m_menu;
    QAction *m_pin = nullptr;
    QAction *m_follow = nullptr;
    QMenu *m_styles = nullptr;
    QAction *m_checkForUpdates = nullptr;
    QAction *m_shortcut = nullptr;
    ModelWatch *m_watch;
};

} // namespace tovel
