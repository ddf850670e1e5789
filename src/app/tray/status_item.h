#pragma once

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class QDBusConnection;
class QMenu;
class QPoint;
class QSystemTrayIcon;

namespace tovel {

class BusMenu;
class ShellIndicator;
class StatusNotifierItem;
class StatusNotifierRegistration;

// The icon in the tray. A left click toggles the panel; a right click, or one with Control held,
// opens the menu, which is made afresh each time and dropped when it closes. Trays on the bus show
// the menu themselves at a right click.
//
// There is one icon, whichever trays come and go: a StatusNotifierItem while a tray takes it, else
// what GNOME Shell's extension shows for it, else an icon in the X session's tray (freedesktop.org
// System Tray Protocol).
class StatusItem final : public QObject
{
    Q_OBJECT

public:
    struct Actions
    {
        std::function<void()> toggle;
        std::function<std::unique_ptr<QMenu>()> makeMenu;
    };

    // On a bus that is not connected, only the X session's tray is used.
    StatusItem(Actions actions, const QDBusConnection &bus, QObject *parent = nullptr);
    ~StatusItem() override;

    void setToolTip(const QString &text);

    // What the menu would show may have changed; some trays keep a copy of it.
    void noteMenuChange();

    // Whether there is a tray now that has the icon.
    bool isShown() const;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // Whether a tray on the bus has the icon, or GNOME Shell's extension.
    bool isOnBus() const;
    void choose();
    void makeTrayIcon();
    void updateImages();
    void clicked(const QPoint &point);
    void openMenu(const QPoint &point);

    Actions m_actions;
    QString m_toolTip;
    std::unique_ptr<StatusNotifierItem> m_item; // none without a bus
    std::unique_ptr<BusMenu> m_busMenu; // the same
    std::unique_ptr<StatusNotifierRegistration> m_registration; // the same
    std::unique_ptr<ShellIndicator> m_shellIndicator; // the same
    std::unique_ptr<QSystemTrayIcon> m_trayIcon; // none before there was need of it
    QPointer<QMenu> m_menu; // while it is open
};

} // namespace tovel
