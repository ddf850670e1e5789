#pragma once

#include "platform/updater.h"
#include "settings/shortcut_preferences.h"
#include "settings/updates.h"

#include <QObject>

#include <memory>

namespace tovel {

class Platform;
class TovelModel;
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

    // Makes everything, in order, and shows the panel. To be called once; what follows assumes it.
    void applicationDidFinishLaunching();

    // Looks at everything afresh and brings the panel to the front.
    void show();

    // Shows the panel unless it has the keyboard; then hides it.
    void toggle();

    bool isPanelVisible() const;
    TovelModel &model() { return *m_model; }
    TovelWindow &panel() { return *m_panel; }

private:
    void makePanel();
    void applyAppIcon();
    void activate();
    void rememberAccess();
    void requestAccessOnce();

    Platform &m_platform;
    ShortcutPreferences m_shortcuts;
    TovelUpdates m_updates;
    std::unique_ptr<TovelModel> m_model;
    std::unique_ptr<TovelWindow> m_panel; // its views borrow all of the above
};

} // namespace tovel
