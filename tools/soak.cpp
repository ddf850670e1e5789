// Uses Tovel for long, in a private session with openbox, trayer and a bus, as its users and other
// programs do, and watches what it takes. scripts/soak runs it.
#include "process_figures.h"
#include "soaked_screen.h"
#include "support/private_session.h"
#include "support/test_client.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <optional>
#include <random>
#include <utility>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

constexpr int Patience = 30000; // milliseconds; a sanitised program is slow
constexpr int Desktops = 4;
constexpr int Applications = 6;
constexpr int MostWindows = 24;
constexpr int FewestWindows = 4;

constexpr int Pause = 100; // actions
constexpr int ManagerLife = 200; // actions
constexpr int WarmUp = 300; // actions, until which caches fill
constexpr int MostFaults = 5;

// Small differences are chance: what happens to be kept at that moment.
constexpr int FileNoise = 2;
constexpr int ThreadNoise = 2;
constexpr int ResourceNoise = 40;

bool comes(const std::function<bool()> &condition) { return eventually(condition, Patience); }

struct Figures
{
    std::map<std::string, int> files{};
    int threads = 0;
    double pss = 0; // MiB, and so is the next
    double own = 0;
    SoakedScreen::Share server{};
};

// The session, and everything that is done in it. What returns a bool waits for what must come of
// it, and is false when that does not come.
class Session
{
public:
    Session(const QString &program, std::uint32_t seed)
        : m_path(program)
        , m_random(seed)
    { }

    ~Session()
    {
        m_bus.reset();
        QDBusConnection::disconnectFromBus(u"soak"_s);
        if (m_tray) {
            m_tray->kill();
            m_tray->waitForFinished();
        }
    }

    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    bool start()
    {
        if (!m_session.isReady())
            return false;
        for (int i = 0; i < Applications; ++i) {
            const QString name = u"Soak%1"_s.arg(i);
            m_session.install(u"org.example."_s + name, name, name);
        }
        m_client = std::make_unique<TestClient>(m_session.display());
        m_screen = std::make_unique<SoakedScreen>(m_session);
        m_bus = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(
            m_session.environment().value(u"DBUS_SESSION_BUS_ADDRESS"_s), u"soak"_s));
        while (m_windows.size() < MostWindows / 2) {
            if (!openWindow())
                return false;
        }
        m_tray = m_session.launch(u"trayer"_s, {}, m_session.environment());
        m_program = m_session.launch(m_path, {}, m_session.environment());
        return comes([this] { return m_screen->isPanelShown() && m_screen->icon() && answers(); });
    }

    // Does the next thing and gives its name, with ":" and a state after it when that was in vain.
    QString act()
    {
        int sum = 0;
        for (const Choice &choice : m_choices)
            sum += choice.weight;
        int left = below(sum);
        auto choice = m_choices.cbegin();
        while (left >= choice->weight)
            left -= (choice++)->weight;
        const QString name = QString::fromLatin1(choice->name);
        if (choice->deed())
            return name;
        return name
            + (m_screen->isPanelInUse()       ? u": in vain, with the panel in use"_s
                   : m_screen->isPanelShown() ? u": in vain, with the panel behind others"_s
                                              : u": in vain, with the panel hidden"_s);
    }

    bool restartManager()
    {
        m_session.killManager();
        const bool isRight = command(u"Status"_s) >= 0;
        m_session.startManager();
        return m_session.isReady() && comes([this] {
                   return std::all_of(
                       m_windows.cbegin(), m_windows.cend(),
                       [this](std::uint32_t window) { return m_client->isManaged(window); });
               })
            && isRight;
    }

    // Leaves nothing open or shown, so that figures can be compared.
    bool settle()
    {
        m_screen->point({2, 2});
        return !m_screen->isPopupOpen() && (!m_screen->isPanelShown() || hideByEscape());
    }

    bool isRunning() const { return m_program->state() == QProcess::Running; }

    bool answers()
    {
        return ask(u"org.freedesktop.DBus.Peer"_s, u"Ping"_s).type() == QDBusMessage::ReplyMessage;
    }

    Figures figures() const
    {
        const auto pid = static_cast<pid_t>(m_program->processId());
        return {openFiles(pid), threads(pid), pssMebibytes(pid), ownMebibytes(pid),
                m_screen->share()};
    }

    // How the moves ended: the count of each exit status of tovelctl's.
    QMap<int, int> moves() const { return m_moves; }

    // Ends the program by SIGTERM.
    Outcome finish()
    {
        m_program->terminate();
        return outcomeOf(*m_program);
    }

private:
    struct Choice
    {
        int weight;
        const char *name;
        std::function<bool()> deed;
    };

    int below(qsizetype limit)
    {
        return static_cast<int>(m_random() % static_cast<std::uint32_t>(limit));
    }
    QString someApplication() { return u"Soak%1"_s.arg(below(Applications)); }
    QString someDesktop() { return QString::number(1 + below(Desktops)); }
    std::uint32_t someWindow() { return m_windows[below(m_windows.size())]; }

    // The bus

    static QDBusMessage message(const QString &interface, const QString &method,
                                const QVariantList &arguments)
    {
        QDBusMessage call = QDBusMessage::createMethodCall(
            u"org.tovel.Tovel"_s, u"/org/tovel/Tovel"_s, interface, method);
        call.setArguments(arguments);
        return call;
    }

    QDBusMessage ask(const QString &interface, const QString &method,
                     const QVariantList &arguments = {})
    {
        return m_bus->call(message(interface, method, arguments), QDBus::Block, Patience);
    }

    // The status in the answer; -1 without one.
    static int statusOf(const QDBusMessage &answer)
    {
        if (answer.type() != QDBusMessage::ReplyMessage)
            return -1;
        const QByteArray text = answer.arguments().value(0).toString().toUtf8();
        return QJsonDocument::fromJson(text).object()[u"status"_s].toInt(-1);
    }

    int command(const QString &method, const QVariantList &arguments = {})
    {
        return statusOf(ask(u"org.tovel.Tovel1"_s, method, arguments));
    }

    bool move(const std::function<bool()> &meanwhile = [] { return true; })
    {
        QVariantMap options;
        if (const int follow = below(3))
            options[u"follow"_s] = follow == 1;
        const QDBusPendingCall call = m_bus->asyncCall(
            message(u"org.tovel.Tovel1"_s, u"Move"_s, {someDesktop(), options}), Patience);
        const bool isRight = meanwhile();
        if (!comes([&] { return call.isFinished(); }))
            return false;
        const int status = statusOf(call.reply());
        ++m_moves[status];
        return status >= 0 && isRight;
    }

    // Windows of others

    bool openWindow()
    {
        if (m_windows.size() == MostWindows)
            return closeWindow();
        const QString application = someApplication();
        const std::uint32_t window
            = m_client->open({.application = application,
                              .title = u"%1, page %2"_s.arg(application).arg(below(1000)),
                              .desktop = static_cast<std::uint32_t>(below(Desktops))});
        m_windows.append(window);
        return comes([&] { return m_client->isManaged(window); });
    }

    bool closeWindow()
    {
        if (m_windows.size() == FewestWindows)
            return openWindow();
        const std::uint32_t window = m_windows.takeAt(below(m_windows.size()));
        m_client->close(window);
        return comes([&] { return !m_client->isManaged(window); });
    }

    bool changeWindow()
    {
        const std::uint32_t window = someWindow();
        const int desktop = below(Desktops + 2);
        if (desktop == Desktops)
            m_client->minimize(window);
        else
            m_client->askForDesktop(
                window, desktop < Desktops ? static_cast<std::uint32_t>(desktop) : allDesktops);
        return true;
    }

    bool coverScreen()
    {
        const std::uint32_t window = someWindow();
        m_client->addState(window, "_NET_WM_STATE_FULLSCREEN");
        const bool isRight = move();
        m_client->close(window); // which covers the tray
        m_windows.removeOne(window);
        return openWindow() && isRight;
    }

    bool showDesktop()
    {
        const auto desktop = static_cast<std::uint32_t>(below(Desktops));
        m_client->showDesktop(desktop);
        return comes(
            [&] { return m_client->number(m_client->root(), "_NET_CURRENT_DESKTOP") == desktop; });
    }

    bool makeNoise()
    {
        const std::uint32_t window = someWindow();
        m_client->setProperty(window, "_NET_WM_NAME", "UTF8_STRING", 8, QByteArray(30000, '\xc3'));
        m_client->setProperty(window, "_NET_WM_PID", "STRING", 8, "none");
        m_client->setProperty(window, "_NET_WM_STATE", "ATOM", 32, words({1U << 30, 0, 7}));
        m_client->flicker(5);
        return openWindow(); // for which the manager lists its windows anew
    }

    // The panel and the icon

    bool isInUseSoon() const
    {
        return comes([this] { return m_screen->isPanelInUse(); });
    }

    bool isHiddenSoon() const
    {
        return comes([this] { return !m_screen->isPanelShown(); });
    }

    bool showPanel()
    {
        if (!m_screen->isPanelInUse())
            ask(u"org.freedesktop.Application"_s, u"Activate"_s, {QVariantMap()});
        return isInUseSoon();
    }

    bool toggle(const std::function<void()> &how)
    {
        // The manager may still be giving the keyboard to another window.
        bool hides = m_screen->isPanelInUse();
        comes([&] {
            const bool before = std::exchange(hides, m_screen->isPanelInUse());
            return before == hides;
        });
        how();
        return hides ? isHiddenSoon() : isInUseSoon();
    }

    bool toggleByKey()
    {
        return toggle([this] { m_screen->press(u"ctrl+alt+super+t"_s); });
    }

    bool toggleByBus()
    {
        return toggle([this] {
            ask(u"org.freedesktop.Application"_s, u"ActivateAction"_s,
                {u"toggle"_s, QVariantList(), QVariantMap()});
        });
    }

    bool toggleByIcon()
    {
        return toggle([this] { m_screen->click(m_screen->icon().value_or(QPoint()), 1); });
    }

    bool hideByEscape()
    {
        if (!showPanel())
            return false;
        m_screen->press(u"Escape"_s);
        return isHiddenSoon();
    }

    bool hideByClosing()
    {
        if (!showPanel())
            return false;
        m_session.run(u"wmctrl"_s, {u"-F"_s, u"-c"_s, u"Tovel"_s});
        return isHiddenSoon();
    }

    bool openAndClose(const std::optional<QPoint> &place, int button = 1)
    {
        if (!place)
            return false;
        // A window that takes the keyboard at this moment closes what has just opened.
        const auto opens = [&] {
            m_screen->click(*place, button);
            return eventually([this] { return m_screen->isPopupOpen(); }, Patience / 4);
        };
        const bool opened = opens() || opens();
        m_screen->press(u"Escape"_s);
        return comes([this] { return !m_screen->isPopupOpen(); }) && opened;
    }

    bool openInPanel(int fromRight, int fromTop, int button = 1)
    {
        return showPanel() && openAndClose(m_screen->inPanel(fromRight, fromTop), button);
    }

    bool startAgain() { return m_session.run(m_path, {}).status == 0 && isInUseSoon(); }

    bool restartTray()
    {
        m_tray->kill();
        m_tray->waitForFinished();
        const bool isRight = comes([this] { return !m_screen->icon(); }) && toggleByKey();
        m_tray = m_session.launch(u"trayer"_s, {}, m_session.environment());
        return comes([this] { return m_screen->icon().has_value(); }) && isRight;
    }

    const QList<Choice> m_choices{
        {12, "refresh", [this] { return command(u"Status"_s) >= 0; }},
        {3, "applications", [this] { return command(u"Apps"_s) >= 0; }},
        {8, "add to the flock",
         [this] { return command(u"AddToFlock"_s, {QStringList(someApplication())}) >= 0; }},
        {3, "remove from the flock",
         [this] { return command(u"RemoveFromFlock"_s, {QStringList(someApplication())}) >= 0; }},
        {5, "rename",
         [this] {
             const QString name = below(4) == 0 ? QString() : u"Pond %1"_s.arg(below(1000));
             return command(u"Rename"_s, {someDesktop(), name}) >= 0;
         }},
        {9, "move", [this] { return move(); }},
        {3, "stopped move",
         [this] {
             return move([this] {
                 return ask(u"org.tovel.Tovel1"_s, u"StopMove"_s).type()
                     == QDBusMessage::ReplyMessage;
             });
         }},
        {4, "move while windows change",
         [this] { return move([this] { return closeWindow() && openWindow(); }); }},
        {9, "new window", [this] { return openWindow(); }},
        {7, "closed window", [this] { return closeWindow(); }},
        {4, "changed window", [this] { return changeWindow(); }},
        {1, "full-screen window", [this] { return coverScreen(); }},
        {3, "another desktop", [this] { return showDesktop(); }},
        {3, "noise", [this] { return makeNoise(); }},
        {1, "second start", [this] { return startAgain(); }},
        {7, "hot key", [this] { return toggleByKey(); }},
        {4, "toggle on the bus", [this] { return toggleByBus(); }},
        {5, "click on the icon", [this] { return toggleByIcon(); }},
        {3, "Escape", [this] { return hideByEscape(); }},
        {3, "close", [this] { return hideByClosing(); }},
        {5, "menu of the icon", [this] { return openAndClose(m_screen->icon(), 3); }},
        {3, "menu of the gear", [this] { return openInPanel(43, 26); }},
        {3, "list to add from", [this] { return openInPanel(43, 84); }},
        {3, "context menu of a desktop", [this] { return openInPanel(660, 665, 3); }},
        {1, "restart of the tray", [this] { return restartTray(); }},
    };

    QString m_path;
    std::mt19937 m_random;
    PrivateSession m_session{Manager::Openbox, {.bus = true}};
    std::unique_ptr<TestClient> m_client;
    std::unique_ptr<SoakedScreen> m_screen;
    std::unique_ptr<QDBusConnection> m_bus;
    std::unique_ptr<QProcess> m_tray;
    std::unique_ptr<QProcess> m_program;
    QList<std::uint32_t> m_windows;
    QMap<int, int> m_moves;
};

void print(int actions, qint64 milliseconds, const Figures &figures)
{
    std::printf("%7d %6lld %7d %7.1f %7.1f %9d %10d ", actions, milliseconds / 1000,
                figures.threads, figures.pss, figures.own, figures.server.resources,
                figures.server.pixmapKibibytes);
    for (const auto &[kind, count] : figures.files)
        std::printf(" %s %d", kind.c_str(), count);
    std::printf("\n");
    std::fflush(stdout);
}

// Counts faults, and tells each at once.
class Faults
{
public:
    void note(const QString &text)
    {
        ++m_count;
        std::printf("FAULT: %s\n", qPrintable(text));
        std::fflush(stdout);
    }

    int count() const { return m_count; }

private:
    int m_count = 0;
};

void noteGrowth(Faults &faults, const Figures &before, const Figures &after, double mebibytes)
{
    for (const auto &[kind, count] : after.files) {
        const auto earlier = before.files.find(kind);
        if (count > (earlier == before.files.end() ? 0 : earlier->second) + FileNoise)
            faults.note(u"more and more open files: "_s + QString::fromStdString(kind));
    }
    if (after.threads > before.threads + ThreadNoise)
        faults.note(u"more and more threads"_s);
    if (after.server.resources > before.server.resources + ResourceNoise)
        faults.note(u"more and more resources of the X server"_s);
    if (mebibytes > 0 && after.own > before.own + mebibytes)
        faults.note(u"its own memory grew by %1 MiB"_s.arg(after.own - before.own, 0, 'f', 1));
}

// Gives the count of faults.
int soak(Session &session, int actions, double mebibytes)
{
    QElapsedTimer time;
    time.start();
    Faults faults;
    QString done;
    std::optional<Figures> early;
    Figures late;
    std::printf("actions      s threads PSS/MiB own/MiB resources pixmap/KiB  open files\n");
    for (int i = 1; i <= actions && session.isRunning() && faults.count() < MostFaults; ++i) {
        const QString before = std::exchange(done, session.act());
        if (done.contains(u':'))
            faults.note(u"action %1, after %2, %3"_s.arg(i).arg(before, done));
        if (i % ManagerLife == 0 && !session.restartManager())
            faults.note(u"action %1: it is lost with the manager"_s.arg(i));
        if (i % Pause != 0)
            continue;
        if (!session.answers() || !session.settle())
            faults.note(u"action %1: it does not answer or come to rest"_s.arg(i));
        late = session.figures();
        print(i, time.elapsed(), late);
        if (i >= WarmUp && !early)
            early = late;
    }
    if (early)
        noteGrowth(faults, *early, late, mebibytes);
    if (!session.isRunning())
        faults.note(u"the program has ended"_s);
    const Outcome outcome = session.finish();
    if (outcome.status != 0)
        faults.note(u"it ends with status %1"_s.arg(outcome.status));
    if (!outcome.out.isEmpty() || !outcome.err.isEmpty())
        faults.note(u"it says\n"_s + outcome.out + outcome.err);
    return faults.count();
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption actions(u"actions"_s, u"how many"_s, u"N"_s, u"2000"_s);
    const QCommandLineOption seed(u"seed"_s, u"of an earlier run, to repeat it"_s, u"N"_s);
    const QCommandLineOption limit(u"growth"_s, u"of its own memory that is still right"_s,
                                   u"MIB"_s);
    parser.addOptions({actions, seed, limit});
    parser.addPositionalArgument(u"program"_s, u"the tovel to use"_s);
    parser.addHelpOption();
    parser.process(application);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);

    const std::uint32_t number
        = parser.isSet(seed) ? parser.value(seed).toUInt() : QRandomGenerator::global()->generate();
    std::printf("seed %u\n", number);
    Session session(parser.positionalArguments().constFirst(), number);
    if (!session.start()) {
        std::printf("the session or the program does not start\n");
        return 1;
    }
    const int faults = soak(session, parser.value(actions).toInt(), parser.value(limit).toDouble());
    std::printf("moves by exit status:");
    const QMap<int, int> moves = session.moves();
    for (auto move = moves.cbegin(); move != moves.cend(); ++move)
        std::printf("  %d: %d", move.key(), move.value());
    std::printf("\nfaults: %d\n", faults);
    return faults == 0 ? 0 : 1;
}
