#include "app/tovel/panel.h"

#include "app/console.h"
#include "app/interrupt.h"
#include "app/panel/appearance_follower.h"
#include "app/panel/tovel_window.h"
#include "app/platform_choice.h"
#include "app/shell/app_delegate.h"
#include "app/updates/update_dialogs.h"
#include "platform/user_defaults.h"
#include "settings/bundle.h"
#include "updater/appcast_updater.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QTextStream>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int UsageError = 2;
constexpr int NoDisplay = 3;
constexpr char pluginVariable[] = "QT_QPA_PLATFORM";

} // namespace

void prepareDisplay(const char *plugins)
{
    // X11 comes first also within a Wayland session: only such windows can be moved.
    qputenv(pluginVariable, QByteArray(plugins) + ";offscreen");
    QLoggingCategory::setFilterRules(u"qt.qpa.xcb.warning=false\nqt.qpa.plugin=false"_s);
    QGuiApplication::setDesktopFileName(u"org.tovel.Tovel"_s);
}

int runPanel(int &argc, char **argv, QTextStream &err)
{
    const bool userChose = !qEnvironmentVariableIsEmpty(pluginVariable);
    if (!userChose)
        prepareDisplay("xcb;wayland");
    QApplication::setStyle(u"fusion"_s);
    const QApplication application(argc, argv);
    if (!userChose && QGuiApplication::platformName() == "offscreen"_L1) {
        err << "tovel: there is no display to show the panel on" << Qt::endl;
        return NoDisplay;
    }

    const std::unique_ptr<PlatformChoice> choice = choosePlatform();
    if (!choice) {
        err << "tovel: " << printable(unknownPlatformText()) << Qt::endl;
        return UsageError;
    }
    if (!choice->missingSession().isEmpty())
        err << "tovel: " << printable(choice->missingSession()) << Qt::endl;
    Platform &platform = choice->platform();
    const PlatformInstallation installation(platform);
    QApplication::setQuitOnLastWindowClosed(false);
    const AppearanceFollower appearance;
    const AppDelegate *shown = nullptr;
    UpdateDialogs updateDialogs(&QDesktopServices::openUrl, [&shown] {
        return shown && shown->isPanelVisible() ? shown->panel().windowHandle() : nullptr;
    });
    AppDelegate delegate(platform,
                         appcastUpdaterFactory(updaterConfiguration(mainBundle()), platform.clock(),
                                               platform.userDefaults().standardUserDefaults(),
                                               updateDialogs));
    shown = &delegate;
    choice->setVisibleWindowTest([&delegate] { return delegate.isPanelVisible(); });
    delegate.applicationDidFinishLaunching();
    const Interrupt interrupt([](int) { QCoreApplication::quit(); });
    return QApplication::exec();
}

} // namespace tovel
