#pragma once

#include "app/shell/dialogs_on_all_spaces.h"
#include "app/shell/global_shortcut.h"
#include "app/shell/held_keys.h"
#include "model/tovel_model.h"
#include "platform/updater.h"
#include "settings/icon_style.h"
#include "settings/shortcut_preferences.h"
#include "settings/updates.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <QCoroTask>

#include <cstdint>
#include <memory>
#include <optional>

class QDialog;
class QMenu;

namespace tovel {

class ApplicationMenu;
class Note;
class Platform;
class StatusItem;
class TovelWindow;

// The interactive program: owns what lives as long as it does, wires the model's callbacks to the
// panel and the icon, and shows and hides the panel.
class AppDelegate final : public QObject
{
    Q_OBJECT

public:
    // The platform must be the installed one and outlive the delegate.
    AppDelegate(Platform &platform, SPUStandardUpdaterControllerFactory makeUpdater);
    ~AppDelegate() override;

    enum class Launch {
        Shown,
        Hidden // unless nothing would bring the panel up
    };

    // Makes everything, in order, and shows the panel. To be called once; what follows assumes it.
    void applicationDidFinishLaunching(Launch launch = Launch::Shown);

    // Whether starting the program once more reaches this process; false to begin with. A hidden
    // panel that nothing brings back, this, a key or an icon in a tray, ends the program; one that
    // loses the last of them is shown.
    void setReachableByStarting(bool reachable);

    // Looks at everything afresh and brings the panel to the front, and the dialogs that were
    // hidden with it.
    void show();

    // Hides the panel and all dialogs. Nothing while one of them has to be answered first.
    void hide();

    // Shows the panel unless it has the keyboard; then hides it.
    void toggle();

    // What the panel tells while it asks for access; to be set before the launch.
    void setAccessAdvice(std::function<QString()> advice) { m_accessAdvice = std::move(advice); }

    // Tells what stands in the way of moving windows, or that nothing does, before the panel.
    void tellAccess(const QString &text);

    // Records a new shortcut; returns when the editor has closed. Nothing while it is open.
    void editShortcut();

    bool isPanelVisible() const;
    TovelModel &model() { return *m_model; }
    TovelWindow &panel() const { return *m_panel; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makePanel();
    void applyAppIcon();
    // Brings what is shown to the front, dialogs above the panel. Shows nothing that is hidden.
    void activateIgnoringOtherApps();
    void rememberAccess();
    void takeUpShortcut();
    void requestAccessOnce();
    void installHotKey();
    void registerAnew();
    void registerStoredShortcut();
    void tellShortcutFailure(const QString &text);
    void makeStatusItem();
    void showShortcut();
    void makeApplicationMenu();
    void showAbout();
    bool isReachable() const;
    void panelWasHidden();
    void tellWaysBack();
    std::unique_ptr<QMenu> makeMenu();
    void moveFromMenu(std::uint64_t desktop);
    QCoro::Task<> moveAndReport(Desktop desktop);

    Platform &m_platform;
    ShortcutPreferences m_shortcuts;
    TovelUpdates m_updates;
    std::unique_ptr<TovelModel> m_model;
    std::optional<TovelIconStyle> m_shownIcon; // that the windows have
    std::unique_ptr<TovelWindow> m_panel; // its views borrow all of the above
    std::unique_ptr<StatusItem> m_status;
    DialogsOnAllSpaces m_dialogs;
    HeldKeys m_heldKeys;
    GlobalShortcut m_hotKey;
    std::unique_ptr<ApplicationMenu> m_applicationMenu;
    std::function<QString()> m_accessAdvice;
    QPointer<QDialog> m_about; // the panel's
    QPointer<QDialog> m_accessNote; // the same
    std::unique_ptr<Note> m_note;
    QList<QPointer<QDialog>> m_hiddenDialogs;
    bool m_tellsShortcut = false; // whether the model's issues are about the shortcut
    bool m_editing = false;
    bool m_reachableByStarting = false;
    bool m_quitting = false;
};

} // namespace tovel
