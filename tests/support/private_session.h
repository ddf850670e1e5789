#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <vector>

namespace tovel {

enum class Manager { Openbox, Icewm, Xfwm4, I3, KWin, Sway, Gnome };

// The manager that the environment variable TOVEL_TEST_MANAGER names: openbox, icewm, xfwm4, i3,
// kwin, sway or gnome.
Manager managerFromEnvironment();

struct SessionOptions
{
    // Those of i3 and sway come and go; with 1 they have a single output. With 0 GNOME adds and
    // removes desktops by itself.
    int desktops = 4;
    QByteArray screen = "1280x800x24";
    QString activateAction{}; // xfwm4's choice of that name; empty leaves it at its default
    bool tcp = false; // the server also listens on TCP, so that a client can hide its process
    bool permitsAll = true; // KWin tells every program of windows; GNOME's extension is enabled
    int monitors = 1; // of GNOME
    bool fixedScreens = false; // on GNOME desktops are on the primary monitor only
    bool evaluates = false; // GNOME carries out any script (org.gnome.Shell.Eval)
    bool xwayland = false; // with KWin
    bool bus = false; // with a session bus
    bool assistive = false; // with that and the bus on which assistive programs read others
};

// Whether the test writes to a program.
enum class Input { None, Open };

// What a program that ran to its end left behind.
struct Outcome
{
    int status = -1; // -1: it crashed, could not be started, or had to be killed at the deadline
    QString out{};
    QString err{};
};

// An X server with a window manager, in folders of their own; or, with a bus, KWin as a Wayland
// session, without an X server but XWayland where it is wanted, that permits everything, or sway
// or GNOME Shell with XWayland. i3 and sway have two screens; workspaces 1 to 4 belong on the first
// one, 5 and "6: far" on the other, and windows float there, but for Tovel's under sway. Every
// process that was started here has ended when this object goes, or when the test's process is
// killed. Starting fails the test by isReady().
class PrivateSession final
{
public:
    explicit PrivateSession(Manager manager, const SessionOptions &options = {});
    ~PrivateSession();

    PrivateSession(const PrivateSession &) = delete;
    PrivateSession &operator=(const PrivateSession &) = delete;

    // Waits until the manager has announced itself and its desktops.
    bool isReady();

    // ":7", and the same server over TCP.
    QByteArray display() const { return m_display; }
    QByteArray tcpDisplay() const { return "127.0.0.1" + m_display; }
    // What programs of this session run in.
    const QProcessEnvironment &environment() const { return m_environment; }
    // A desktop entry for windows of the class; before any such window is opened.
    void install(const QString &identifier, const QString &name, const QString &windowClass,
                 const QString &command = QStringLiteral("true")) const;

    // Makes this the session of the test's own process.
    void adopt() const;

    // Runs until the session ends. Standard input and both outputs lead nowhere.
    QProcess &start(const QString &program, const QStringList &arguments);
    // Runs with its outputs kept, for the test to watch and to end.
    std::unique_ptr<QProcess> launch(const QString &program, const QStringList &arguments,
                                     const QProcessEnvironment &environment,
                                     Input input = Input::None) const;
    // Runs to its end. The second form has variables put over the session's.
    Outcome run(const QString &program, const QStringList &arguments) const;
    Outcome run(const QString &program, const QStringList &arguments,
                const QProcessEnvironment &changes) const;

    // A file in the session's folder.
    void write(const QString &path, const QString &text) const;

    void startManager();
    bool isManagerRunning();
    // At once, without a chance to clean up.
    void killManager();
    // One that is paused answers nobody.
    void pauseManager(bool paused);
    void killServer();
    // A server that is paused answers nobody.
    void pauseServer(bool paused);

private:
    void startBus(bool assistive);
    void startKWin();
    bool isKWinReady();
    void startSway();
    bool isSwayReady();
    void startGnome();
    bool isGnomeReady();
    void writeGnomeConfiguration() const;
    void writeConfiguration(const SessionOptions &options) const;

    QTemporaryDir m_folder;
    QProcessEnvironment m_environment;
    QByteArray m_display;
    Manager m_manager;
    SessionOptions m_options;
    int m_desktops;
    std::vector<std::unique_ptr<QProcess>> m_processes; // ended from the last to the first
    QProcess *m_server = nullptr;
    QProcess *m_managerProcess = nullptr;
};

// Stops the process, or has it go on. One that is paused answers nobody from then on.
void setPaused(const QProcess &process, bool paused);

// Waits for the process's end and takes what it said.
Outcome outcomeOf(QProcess &process);

// Lets the event loop turn until the condition holds; false when it does not in good time.
bool eventually(const std::function<bool()> &condition, int deadline = 10000);

} // namespace tovel
