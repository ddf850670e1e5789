#include "platform/simulated/demo_world.h"

#include "platform/simulated/simulated_desktop.h"

#include <QTimeZone>

namespace tovel {

namespace {

constexpr int fullScreenSpace = 4;
constexpr std::uint64_t allDesktops[] = {1, 2, 3, 4, 5, 6, 7};

// Process, identifier, name, name of its picture (null for an application without one).
struct DemoApplication
{
    std::int32_t pid;
    const char16_t *identifier;
    const char16_t *name;
    const char16_t *icon;
};

constexpr DemoApplication applications[] = {
    {501, u"org.example.Files", u"Files", u"files"},
    {502, u"org.example.Browser", u"Web Browser", u"browser"},
    {503, u"org.example.Mail", u"Mail", u"mail"},
    {504, u"org.example.Messages", u"Messages", u"messages"},
    {505, u"org.example.Terminal", u"Terminal", u"terminal"},
    {506, u"org.example.Editor", u"Text Editor", u"editor"},
    {507, u"org.example.Calendar", u"Calendar", u"calendar"},
    {508, u"org.example.Music", u"Music", u"music"},
    {509, u"org.example.Videos", u"Videos", u"videos"},
    {510, u"org.example.Photos", u"Photos", u"photos"},
    {511, u"org.example.Notes", u"Notes", u"notes"},
    {512, u"org.example.Monitor", u"System Monitor", u"monitor"},
    {513, u"org.example.Boxes", u"Boxes", nullptr},
};

QString text(const char16_t *literal) { return QString::fromUtf16(literal); }

void addDisplays(SimulatedDesktop &desktop)
{
    const auto space = [](std::uint64_t id, int type = 0) {
        return SimSpace{id, type, QStringLiteral("space-%1").arg(id)};
    };
    desktop.addDisplay(
        {.identifier = QStringLiteral("6A1E0A52-35C4-4A0B-9C11-0D5A4B0C7E01"),
         .number = 1,
         .builtIn = true,
         .bounds = QRectF(0, 0, 1920, 1200),
         .name = QStringLiteral("Built-in Display"),
         .spaces = {space(1), space(2), space(20, fullScreenSpace), space(3), space(4)},
         .currentSpace = 1});
    desktop.addDisplay({.identifier = QStringLiteral("B7D0C3F4-8E1D-4C52-A0E6-5F1C2E9D3A02"),
                        .number = 2,
                        .bounds = QRectF(1920, 0, 2560, 1440),
                        .name = QStringLiteral("Desk Monitor"),
                        .spaces = {space(5), space(6), space(21, fullScreenSpace), space(7)},
                        .currentSpace = 5});
}

SimApplication running(const DemoApplication &demo, const QString &iconFolder)
{
    std::optional<NSImage> icon;
    if (demo.icon)
        icon = NSImage{iconFolder + QStringLiteral("/%1.svg").arg(text(demo.icon))};
    return {.pid = demo.pid,
            .bundleIdentifier = text(demo.identifier),
            .name = text(demo.name),
            .icon = icon,
            .launchDate = QDateTime::fromSecsSinceEpoch(1700000000 + demo.pid, QTimeZone::utc()),
            .activationDelay = 0.3};
}

SimInstalledApplication installed(const SimApplication &application)
{
    return {.bundleIdentifier = *application.bundleIdentifier,
            .location
            = QUrl(QStringLiteral("file:///applications/") + *application.bundleIdentifier),
            .launchDelay = 0.8,
            .application = application};
}

void addApplications(SimulatedDesktop &desktop, const QString &iconFolder)
{
    for (const DemoApplication &demo : applications) {
        desktop.addApplication(running(demo, iconFolder));
        auto copy = running(demo, iconFolder);
        copy.pid = 0; // takes a free one when it starts again
        desktop.world().installed.append(installed(copy));
    }
    desktop.application(512).hidden = true;

    // A second instance, one without a menu bar, and two that do not run.
    SimApplication second = desktop.application(505);
    second.pid = 605;
    desktop.addApplication(second);
    SimApplication agent
        = running({606, u"org.example.Clipboard", u"Clipboard", u"clipboard"}, iconFolder);
    agent.policy = NSApplicationActivationPolicy::Accessory;
    desktop.addApplication(agent);
    auto calculator = installed(
        running({0, u"org.example.Calculator", u"Calculator", u"calculator"}, iconFolder));
    calculator.windows = {{.title = QStringLiteral("Calculator"),
                           .spaces = {1},
                           .frame = QRectF(700, 400, 320, 420),
                           .moveDelay = 0.2}};
    desktop.world().installed.append(calculator);
    auto maps = installed(running({0, u"org.example.Maps", u"Maps", u"maps"}, iconFolder));
    maps.launchFailure = QStringLiteral("The application is damaged.");
    desktop.world().installed.append(maps);
}

void addMovableWindows(SimulatedDesktop &desktop)
{
    struct Row
    {
        std::uint32_t number;
        std::int32_t pid;
        const char16_t *title;
        std::uint64_t space;
    };
    constexpr Row rows[] = {
        {101, 501, u"Documents", 1},  {102, 501, u"Downloads", 3}, {103, 502, u"Start Page", 1},
        {104, 502, u"Timetable", 2},  {105, 502, u"Recipes", 5},   {106, 503, u"Inbox", 2},
        {107, 504, u"Messages", 4},   {108, 505, u"~", 1},         {109, 605, u"build", 6},
        {110, 506, u"letter.txt", 3}, {111, 506, u"list.txt", 7},  {112, 507, u"October", 5},
        {113, 510, u"Summer", 6},     {114, 511, u"Ideas", 2},
    };
    int nth = 0;
    for (const Row &row : rows) {
        const bool onSecond = row.space >= 5;
        desktop.addWindow(
            {.number = row.number,
             .pid = row.pid,
             .title = text(row.title),
             .spaces = {row.space},
             .frame = QRectF((onSecond ? 2000 : 80) + 40 * nth, 60 + 30 * nth, 900, 600),
             .moveDelay = 0.2 + 0.05 * (nth % 6)});
        ++nth;
    }
    desktop.window(106).minimized = true;
    // Accessibility finds this one through its element id alone, and that one not at all.
    desktop.window(104).listed = false;
    desktop.window(104).remoteElement = 37;
    desktop.window(109).listed = false;
}

// One window for each reason to stay behind, and what is no window of the user's.
void addOtherWindows(SimulatedDesktop &desktop)
{
    desktop.addWindow({.number = 201,
                       .pid = 509,
                       .title = QStringLiteral("Holiday"),
                       .fullScreen = true,
                       .spaces = {20},
                       .frame = QRectF(0, 0, 1920, 1200)});
    desktop.addWindow(
        {.number = 202,
         .pid = 508,
         .title = QStringLiteral("Now Playing"),
         .spaces = QList<std::uint64_t>(std::begin(allDesktops), std::end(allDesktops))});
    desktop.addWindow(
        {.number = 203, .pid = 512, .title = QStringLiteral("Processes"), .orderedIn = false});
    desktop.addWindow({.number = 204,
                       .pid = 510,
                       .title = QStringLiteral("Import"),
                       .subrole = QStringLiteral("AXDialog"),
                       .spaces = {21}});
    // Agrees to move, and stays.
    desktop.addWindow({.number = 205,
                       .pid = 513,
                       .title = QStringLiteral("Old System"),
                       .spaces = {3},
                       .move = SimMove::Never});
    desktop.addWindow({.number = 206,
                       .pid = 503,
                       .subrole = QStringLiteral("AXFloatingWindow"),
                       .spaces = {2},
                       .layer = 3});
    desktop.addWindow({.number = 207, .pid = 506, .orderedIn = false});
}

} // namespace

void populateDemo(SimulatedDesktop &desktop, const QString &iconFolder)
{
    desktop.setRecording(false);
    addDisplays(desktop);
    addApplications(desktop, iconFolder);
    addMovableWindows(desktop);
    addOtherWindows(desktop);
    desktop.world().cursor = QPointF(960, 600);
    desktop.world().stepDelay = 0.25;
}

} // namespace tovel
