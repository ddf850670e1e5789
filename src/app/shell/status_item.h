#pragma once

#include <QSystemTrayIcon>

#include <functional>
#include <memory>

class QMenu;

namespace tovel {

// The icon in the tray. A left click toggles the panel; a right click, or one with Control held,
// opens the menu, which is made afresh each time and dropped when it closes.
class StatusItem final : public QObject
{
    Q_OBJECT

public:
    struct Actions
    {
        std::function<void()> toggle;
        std::function<std::unique_ptr<QMenu>()> makeMenu;
    };

    explicit StatusItem(Actions actions, QObject *parent = nullptr);
    ~StatusItem() override;

    void setToolTip(const QString &text) { m_icon.setToolTip(text); }

private:
    void clicked(QSystemTrayIcon::ActivationReason reason);
    void openMenu();

    Actions m_actions;
    QSystemTrayIcon m_icon;
    std::unique_ptr<QMenu> m_menu;
};

} // namespace tovel
