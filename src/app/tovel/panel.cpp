#include "app/tovel/panel.h"

#include "app/console.h"
#include "app/interrupt.h"
#include "app/panel/appearance_follower.h"
#include "app/panel/tovel_style.h"
#include "app/panel/tovel_window.h"
#include "app/platform_choice.h"
#include "app/service/application_adaptor.h"
#include "app/service/bus_presence.h"
#include "app/service/command_adaptor.h"
#include "app/session_bus.h"
#include "app/updates/update_dialogs.h"
#include "platform/user_defaults.h"
#include "settings/bundle.h"
#include "updater/appcast_updater.h"
#include "views/components/hover_release.h"
#include "views/components/window_system.h"
#include "views/text_style.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QLoggingCategory>
#include <QOpenGLContext>
#include <QTextStream>
#include <QTimer>

namespace tovel {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int Failed = 1;
constexpr int UsageError = 2;
constexpr int NoDisplay = 3;
constexpr char pluginVariable[] = "QT_QPA_PLATFORM";
constexpr char reconnectVariable[] = "QT_WAYLAND_RECONNECT";
constexpr char buffersVariable[] = "QT_WAYLAND_CLIENT_BUFFER_INTEGRATION";

// Where a Tovel runs already, shows that one's panel: Taken when it did. That one may be ending.
Claim claimOrJoin(BusPresence &presence, AppDelegate::Launch launch)
{
    Claim claim = presence.claim();
    for (int attempt = 0; attempt < 2 && claim == Claim::Taken; ++attempt) {
        if (launch == AppDelegate::Launch::Hidden || presence.activateOther())
            return Claim::Taken;
        claim = presence.claim();
    }
    return claim == Claim::Taken ? Claim::Unanswered : claim;
}

// What was set for this program is not for those that it starts.
void forgetDisplay()
{
    // Qt asks for the buffers when they are first wanted, and not again.
    if (isOnWayland())
        QOpenGLContext().create();
    for (const char *variable : {pluginVariable, reconnectVariable, buffersVariable})
        qunsetenv(variable);
}

} // namespace

void prepareDisplay(const QByteArray &plugins)
{
    qputenv(pluginVariable, plugins + ";offscreen");
    // From Qt 6.5 on: windows of Wayland outlive their compositor.
    qputenv(reconnectVariable, "1");
    // All is drawn by the processor. Qt would load OpenGL's drivers for the first window.
    qputenv(buffersVariable, "none");
    QLoggingCategory::setFilterRules(
        u"qt.qpa.xcb.warning=false\nqt.qpa.wayland.warning=false\nqt.qpa.plugin=false"_s);
}

int runPanel(int &argc, char **argv, AppDelegate::Launch launch, QTextStream &err)
{
    const bool userChose = !qEnvironmentVariableIsEmpty(pluginVariable);
    if (!userChose)
        prepareDisplay(toolkitPlugins());
    // A Wayland window's application id, too.
    QGuiApplication::setDesktopFileName(u"org.tovel.Tovel"_s);
    QApplication::setStyle(new TovelStyle);
    auto noBusStart = std::make_unique<NoBusStart>();
    const QApplication application(argc, argv);
    noBusStart.reset();
    QApplication::setFont(textFont(TextStyle::body));
    if (!userChose)
        forgetDisplay();
    std::optional<HoverRelease> hoverRelease;
    if (isOnWayland())
        hoverRelease.emplace();
    if (!userChose && QGuiApplication::platformName() == "offscreen"_L1) {
        err << "tovel: there is no display to show the panel on" << Qt::endl;
        return NoDisplay;
    }

    // Before others can know of the program, and wait for its end.
    const Interrupt interrupt([](int) { QCoreApplication::quit(); }, Interrupt::Deadline::End);
    BusPresence presence(isUsersSession() ? sessionBus() : QDBusConnection(QString()));
    const Claim claim = claimOrJoin(presence, launch);
    if (claim == Claim::Taken)
        return 0;
    if (claim == Claim::Unanswered) {
        err << "tovel: Tovel runs already, but does not answer" << Qt::endl;
        return Failed;
    }

    const std::unique_ptr<PlatformChoice> choice = choosePlatform(Stay::Session);
    if (!choice) {
        err << "tovel: " << printable(unknownPlatformText()) << Qt::endl;
        return UsageError;
    }
    if (!choice->missingSession().isEmpty())
        err << "tovel: " << printable(choice->missingSession()) << Qt::endl;
    Platform &platform = choice->platform();
    const PlatformInstallation installation(platform);
    QApplication::setQuitOnLastWindowClosed(false);
    const AppearanceFollower appearance(sessionBus());
    const AppDelegate *shown = nullptr;
    UpdateDialogs updateDialogs(&QDesktopServices::openUrl, [&shown] {
        return shown && shown->isPanelVisible() ? shown->panel().windowHandle() : nullptr;
    });
    AppDelegate delegate(platform,
                         appcastUpdaterFactory(updaterConfiguration(mainBundle()), platform.clock(),
                                               platform.userDefaults().standardUserDefaults(),
                                               updateDialogs));
    shown = &delegate;
    delegate.setReachableByStarting(claim == Claim::Ours);
    QObject::connect(&presence, &BusPresence::busLost, &delegate,
                     [&delegate] { delegate.setReachableByStarting(false); });
    delegate.setAccessAdvice([&choice] { return choice->accessAdvice(); });
    delegate.applicationDidFinishLaunching(launch);
    QDeadlineTimer patience;
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, &delegate, [&] {
        const AccessText access = accessText(*choice);
        if (!access.isGranted && !patience.hasExpired())
            return;
        answer.stop();
        delegate.tellAccess(access.text);
    });
    // From now on, when the user asks; the launch's own request is answered by the panel.
    choice->setSettingsOpener([&] {
        patience.setRemainingTime(choice->requestAccess(0ms) ? AccessPatience : 0ms);
        answer.start(20ms);
    });
    presence.application().serve(
        {.show = [&delegate] { delegate.show(); }, .toggle = [&delegate] { delegate.toggle(); }});
    presence.commands().serve(delegate.model(), [&choice] {
        return Surroundings{choice->missingSession(), choice->limits(), choice->sessionName()};
    });
    return QApplication::exec();
}

} // namespace tovel
