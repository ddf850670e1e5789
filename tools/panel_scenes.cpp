// Shows the panel in one of the states that a user may see it in, on a simulated desktop, and
// writes a picture of it. A tool for looking at; scripts/screenshots runs it for every state.

#include "app/panel/appearance_palette.h"
#include "app/panel/tovel_style.h"
#include "app/panel/tovel_window.h"
#include "app/shell/app_delegate.h"
#include "model/tovel_model.h"
#include "platform/simulated/demo_world.h"
#include "platform/simulated/simulated_desktop.h"
#include "settings/bundle.h"
#include "views/components/app_icon.h"
#include "views/text_style.h"

#include <QApplication>
#include <QCursor>
#include <QFileInfo>
#include <QMenu>
#include <QScreen>
#include <QTest>
#include <QTextStream>

#include <functional>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 24; // around the panel
constexpr int settlingTime = 300; // milliseconds
const QString firstDisplay = QStringLiteral("6A1E0A52-35C4-4A0B-9C11-0D5A4B0C7E01");

// Never can check.
class NoUpdater final : public SPUStandardUpdaterController, private SPUUpdater
{
public:
    SPUUpdater &updater() override { return *this; }
    void startUpdater() override { }
    void checkForUpdates() override { }

private:
    bool canCheckForUpdates() const override { return false; }
    std::unique_ptr<KeyValueObservation> observeCanCheckForUpdates(
        std::function<void()> handler) override
    {
        handler();
        return std::make_unique<KeyValueObservation>();
    }
};

// The panel on its desktop, and hands to use it with.
class Stage
{
public:
    Stage()
        : m_installation(desktop.platform())
    {
        const auto icon = mainBundle().pathForResource(u"demo/files"_s, u"svg"_s);
        populateDemo(desktop, icon ? QFileInfo(*icon).absolutePath() : QString());
        choose({u"Browser"_s, u"Mail"_s, u"Terminal"_s, u"Editor"_s, u"Photos"_s, u"Music"_s});
    }

    void choose(const QStringList &applications)
    {
        QStringList identifiers;
        for (const QString &application : applications)
            identifiers.append(u"org.example."_s + application);
        desktop.userDefaults().standardUserDefaults().put(u"selected"_s, identifiers);
    }

    void keepDesktops(qsizetype count)
    {
        auto &displays = desktop.world().displays;
        displays.resize(1);
        SimDisplay &display = displays.front();
        display.spaces.removeIf([](const SimSpace &space) { return space.type != 0; });
        while (display.spaces.size() < count)
            display.spaces.append(SimSpace{.id = 100 + std::uint64_t(display.spaces.size())});
        display.spaces.resize(count);
    }

    // Every window that can be moved.
    void putAllOn(std::uint64_t space)
    {
        for (SimWindow &window : desktop.world().windows) {
            if (window.spaces.size() == 1 && window.layer == 0 && !window.fullScreen)
                window.spaces = {space};
        }
    }

    void open()
    {
        QCursor::setPos(0, 0);
        delegate = std::make_unique<AppDelegate>(
            desktop.platform(), [](bool, SPUUpdaterDelegate *, SPUStandardUserDriverDelegate *) {
                return std::make_unique<NoUpdater>();
            });
        delegate->setAccessAdvice([this] { return advice; });
        delegate->applicationDidFinishLaunching();
        if (!QTest::qWaitForWindowExposed(&delegate->panel()))
            qFatal("The panel does not come up");
        settle();
    }

    void settle()
    {
        QTest::qWait(settlingTime);
        if (!QTest::qWaitFor([] { return !areAppIconsOnTheirWay(); }))
            qFatal("The icons do not come");
    }

    QWidget *control(const QString &name)
    {
        for (QWidget *widget : QApplication::allWidgets()) {
            if (widget->isVisible() && widget->accessibleName() == name)
                return widget;
        }
        qFatal("There is no “%s”", qPrintable(name));
    }

    void click(const QString &name)
    {
        QTest::mouseClick(control(name), Qt::LeftButton);
        settle();
    }

    QImage picture()
    {
        QRect area = delegate->panel().frameGeometry();
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible())
                area |= widget->frameGeometry();
        }
        const QScreen *screen = delegate->panel().screen();
        area = area.adjusted(-margin, -margin, margin, margin) & screen->geometry();
        const qreal ratio = screen->devicePixelRatio();
        return const_cast<QScreen *>(screen)->grabWindow(0).toImage().copy(
            QRect(area.topLeft() * ratio, area.size() * ratio));
    }

    const QString advice
        = u"No window manager that can move windows between desktops is running. Start one that "
          "follows the Extended Window Manager Hints; Tovel then goes on by itself."_s;
    SimulatedDesktop desktop;
    std::unique_ptr<AppDelegate> delegate;

private:
    PlatformInstallation m_installation;
};

struct Scene
{
    QString name;
    std::function<void(Stage &)> prepare; // the desktop, before the panel opens
    std::function<void(Stage &)> act = [](Stage &) {};
};

void showSkipped(Stage &stage)
{
    for (QWidget *widget : QApplication::allWidgets()) {
        if (widget->isVisible() && widget->toolTip().startsWith(u"Show which windows"_s))
            QTest::mouseClick(widget, Qt::LeftButton);
    }
    stage.settle();
}

void resizeTo(Stage &stage, QSize size)
{
    stage.delegate->panel().resize(size);
    stage.settle();
}

QList<Scene> scenes()
{
    const auto asItIs = [](Stage &) {};
    const auto longNames = [](Stage &stage) {
        stage.desktop.application(502).name
            = u"A Web Browser With a Name That Nobody Would Ever Have Thought Of Twice"_s;
        stage.desktop.application(503).name
            = u"Donaudampfschifffahrtsgesellschaftskapitänsmützenverwaltung"_s;
        stage.desktop.display(firstDisplay).name
            = u"A Display Whose Maker Was Very Proud of Its Model Name"_s;
        stage.desktop.userDefaults().standardUserDefaults().put(
            u"aliases"_s,
            QVariantMap{
                {firstDisplay + u"/space-1"_s, u"Everything for the tax return of last year"_s}});
    };
    const auto twentySkipped = [](Stage &stage) {
        for (std::uint32_t i = 0; i < 18; ++i) {
            stage.desktop.addWindow({.number = 300 + i,
                                     .pid = 503,
                                     .title = u"Letter"_s,
                                     .fullScreen = i % 2 == 0,
                                     .spaces = {i % 2 == 0 ? 20U : 21U}});
        }
    };
    const auto hoverCard = [](Stage &stage) {
        QTest::mouseMove(stage.control(u"Mail"_s));
        stage.settle();
    };
    return {
        {u"panel"_s, [](Stage &stage) { stage.putAllOn(2); }},
        {u"split-flock"_s, asItIs},
        {u"no-flock"_s, [](Stage &stage) { stage.choose({}); }},
        {u"no-desktops"_s,
         [](Stage &stage) {
             stage.desktop.replaceReply("SLSCopyManagedDisplaySpaces", QVariantList());
         }},
        {u"one-desktop"_s, [](Stage &stage) { stage.keepDesktops(1); }},
        {u"six-desktops"_s, [](Stage &stage) { stage.keepDesktops(6); }},
        {u"forty-desktops"_s, [](Stage &stage) { stage.keepDesktops(40); },
         [](Stage &stage) {
             resizeTo(stage, {940, 500});
         }},
        {u"second-display"_s, asItIs,
         [](Stage &stage) { stage.click(u"Show desktops on Desk Monitor"_s); }},
        {u"busy"_s, asItIs, [](Stage &stage) { stage.click(u"Move apps to Desktop 3"_s); }},
        {u"busy-together"_s, [](Stage &stage) { stage.putAllOn(2); },
         [](Stage &stage) { stage.click(u"Move apps to Desktop 3"_s); }},
        {u"no-access"_s, [](Stage &stage) { stage.desktop.world().trusted = false; },
         [](Stage &stage) {
             stage.delegate->tellAccess(stage.advice);
             stage.settle();
         }},
        {u"three-issues"_s, asItIs,
         [](Stage &stage) {
             stage.delegate->model().setIssues({u"Mail: Inbox did not arrive."_s,
                                                u"Maps could not be opened. It is damaged."_s,
                                                u"Notes could not be found."_s});
             stage.settle();
         }},
        {u"one-skipped"_s,
         [](Stage &stage) {
             stage.choose({u"Mail"_s, u"Videos"_s});
         },
         showSkipped},
        {u"twenty-skipped"_s, twentySkipped, showSkipped},
        {u"add-popover"_s, asItIs, [](Stage &stage) { stage.click(u"Add app"_s); }},
        {u"add-popover-search"_s, asItIs,
         [](Stage &stage) {
             stage.click(u"Add app"_s);
             QTest::keyClicks(QApplication::focusWidget(), u"no"_s);
             QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
             stage.settle();
         }},
        {u"gear-menu"_s, asItIs, [](Stage &stage) { stage.click(u"Tovel settings"_s); }},
        {u"icon-menu"_s, asItIs,
         [](Stage &stage) {
             stage.click(u"Tovel settings"_s);
             for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Up, Qt::Key_Up, Qt::Key_Right})
                 QTest::keyClick(QApplication::activePopupWidget(), key);
             stage.settle();
         }},
        {u"rename-alert"_s, asItIs,
         [](Stage &stage) {
             QWidget *tile = stage.control(u"Move apps to Desktop 2"_s);
             QContextMenuEvent event(QContextMenuEvent::Mouse, tile->rect().center(),
                                     tile->mapToGlobal(tile->rect().center()));
             QApplication::sendEvent(tile, &event);
             QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Down);
             QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Return);
             stage.settle();
         }},
        {u"closed-application"_s,
         [](Stage &stage) {
             stage.choose({u"Mail"_s, u"Calculator"_s, u"Boxes"_s});
             stage.desktop.userDefaults().standardUserDefaults().put(
                 u"appNames"_s, QVariantMap{{u"org.example.Calculator"_s, u"Calculator"_s}});
         }},
        {u"long-names"_s, longNames},
        {u"smallest"_s, longNames,
         [](Stage &stage) {
             resizeTo(stage, {1, 1});
         }},
        {u"wide"_s, asItIs,
         [](Stage &stage) {
             resizeTo(stage, {1240, 700});
         }},
        {u"keyboard-focus"_s, asItIs,
         [](Stage &stage) {
             stage.control(u"Move apps to Desktop 2"_s)->setFocus(Qt::TabFocusReason);
             stage.settle();
         }},
        {u"hovered-card"_s, asItIs, hoverCard},
    };
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication::setStyle(new TovelStyle);
    const QApplication application(argc, argv);
    QApplication::setFont(textFont(TextStyle::body));
    const QStringList arguments = QApplication::arguments();
    if (arguments.value(1) == "--list"_L1) {
        for (const Scene &scene : scenes())
            QTextStream(stdout) << scene.name << Qt::endl;
        return 0;
    }
    QApplication::setPalette(appearancePalette(arguments.value(3) == "dark"_L1));
    for (const Scene &scene : scenes()) {
        if (scene.name != arguments.value(1))
            continue;
        Stage stage;
        scene.prepare(stage);
        stage.open();
        scene.act(stage);
        return stage.picture().save(arguments.value(2)) ? 0 : 1;
    }
    QTextStream(stderr) << "panel_scenes SCENE FILE [dark]" << Qt::endl;
    return 2;
}
